#include "emulator/line/linetap.h"

#include "language/language.h"

namespace emulator {

namespace {

/// Poll interval of the stop flag.
constexpr std::chrono::milliseconds pollInterval{50};
/// Bytes of the camera are lost, as on a real line, when the tool takes none for this long.
constexpr Time longestHold = std::chrono::seconds(1);

} // namespace

LineTap::LineTap(ByteLine& tool, ByteLine& camera, trace::Recorder recorder)
    : m_toolLine(tool), m_cameraLine(camera), m_recorder(std::move(recorder)) {
    m_fromTool = std::thread([this] { carry(trace::Side::tool, m_toolLine, m_cameraLine); });
    m_fromCamera = std::thread([this] { carry(trace::Side::camera, m_cameraLine, m_toolLine); });
}

void LineTap::stop() {
    if (std::exchange(m_stopped, true))
        return;
    m_stopping = true;
    m_fromTool.join();
    m_fromCamera.join();
    try {
        m_recorder.finish();
        if (!m_failure.empty())
            m_recorder.note(now(), m_note);
    } catch (const std::exception& error) {
        fail(error.what(), error.what());
    }
}

std::string LineTap::failure() const {
    const std::lock_guard lock(m_mutex);
    return m_failure;
}

void LineTap::fail(const std::string& sentence, const std::string& note) {
    const std::lock_guard lock(m_mutex);
    if (m_failure.empty()) {
        m_failure = sentence;
        m_note = note;
    }
    m_stopping = true;
}

void LineTap::failGone(const ByteLine& line) {
    constexpr const char* text = "the line is gone: %1";
    fail(language::sentence(text, {line.name()}), language::filled(text, {line.name()}));
}

void LineTap::carry(trace::Side from, ByteLine& source, ByteLine& target) {
    try {
        Bytes bytes;
        while (!m_stopping) {
            carryChunk(from, bytes, source, target);
            bytes.clear();
        }
    } catch (const std::exception& error) {
        fail(error.what(), error.what());
    }
}

void LineTap::carryChunk(trace::Side from, Bytes& bytes, ByteLine& source, ByteLine& target) {
    if (!source.read(bytes, pollInterval))
        failGone(source);
    else if (bytes.empty())
        passTime(from);
    else
        pass(from, bytes, target);
}

void LineTap::passTime(trace::Side from) {
    if (from != trace::Side::tool) // one thread is enough
        return;
    const std::lock_guard lock(m_mutex);
    m_recorder.passTime(now());
}

void LineTap::pass(trace::Side from, ByteView bytes, ByteLine& target) {
    {
        const std::lock_guard lock(m_mutex);
        if (from == trace::Side::tool)
            noteRate();
        m_recorder.pass(from, bytes, now());
    }
    Time lastTaken = now();
    while (!bytes.empty() && !m_stopping) {
        const auto written = target.write(bytes, pollInterval);
        if (!written) {
            failGone(target);
            return;
        }
        bytes = bytes.range(*written, bytes.size());
        if (*written > 0)
            lastTaken = now();
        // The tool waits as for a slow camera; a camera cannot be made to wait.
        if (from == trace::Side::camera && now() - lastTaken > longestHold) {
            const std::lock_guard lock(m_mutex);
            m_recorder.note(now(), std::to_string(bytes.size()) + " bytes lost: the tool does not read");
            return;
        }
    }
}

void LineTap::noteRate() {
    const auto rate = m_toolLine.rate();
    if (rate == m_toolRate)
        return;
    m_toolRate = rate;
    const auto cameraRate = m_cameraLine.rate();
    if (rate && cameraRate && rate != cameraRate)
        m_recorder.note(now(), "the tool runs its line at " + std::to_string(*rate) +
                                   " baud, the camera's runs at " + std::to_string(*cameraRate));
}

} // namespace emulator
