#include "emulator/line/linetap.h"

namespace emulator {

namespace {

/// How soon a thread notices that it is to end.
constexpr std::chrono::milliseconds glance{50};
/// Bytes of the camera that the tool does not take within this time are lost, as on a real line.
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
    m_ending = true;
    m_fromTool.join();
    m_fromCamera.join();
    try {
        m_recorder.finish();
        if (!m_failure.empty())
            m_recorder.note(now(), m_failure);
    } catch (const std::exception& error) {
        fail(error.what());
    }
}

std::string LineTap::failure() const {
    const std::lock_guard lock(m_mutex);
    return m_failure;
}

Time LineTap::now() const {
    return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now() - m_start);
}

void LineTap::fail(const std::string& sentence) {
    const std::lock_guard lock(m_mutex);
    if (m_failure.empty())
        m_failure = sentence;
    m_ending = true;
}

void LineTap::carry(trace::Side from, ByteLine& source, ByteLine& target) {
    try {
        Bytes bytes;
        while (!m_ending) {
            carryChunk(from, bytes, source, target);
            bytes.clear();
        }
    } catch (const std::exception& error) {
        fail(error.what());
    }
}

void LineTap::carryChunk(trace::Side from, Bytes& bytes, ByteLine& source, ByteLine& target) {
    if (!source.read(bytes, glance))
        fail("the line is gone: " + source.name());
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
    while (!bytes.empty() && !m_ending) {
        const auto written = target.write(bytes, glance);
        if (!written) {
            fail("the line is gone: " + target.name());
            return;
        }
        bytes = bytes.range(*written, bytes.size());
        if (*written > 0)
            lastTaken = now();
        // The tool is made to wait as by a slow camera; nobody can make the camera wait.
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
