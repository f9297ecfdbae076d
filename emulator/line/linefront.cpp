#include "emulator/line/linefront.h"

#include <array>

namespace emulator {

namespace {

constexpr std::size_t anyAmount = 65536;

int millisecondsUntil(Time due, Time now) {
    constexpr Time longest = std::chrono::minutes(1);
    if (due <= now)
        return 0;
    return static_cast<int>(
        std::chrono::ceil<std::chrono::milliseconds>(std::min(due - now, longest)).count());
}

} // namespace

LineFront::~LineFront() {
    stop();
}

void LineFront::start(LineCamera& camera, LineIo::Line line) {
    m_camera = &camera;
    setLine(line);
    m_thread = std::thread([this] { run(); });
}

void LineFront::stop() {
    if (!m_thread.joinable())
        return;
    m_stopping = true;
    m_io.wake();
    m_thread.join();
}

void LineFront::setPace(std::uint32_t bytesPerSecond) {
    whileStopped([this, bytesPerSecond] {
        m_readPace.setRate(bytesPerSecond);
        m_writePace.setRate(bytesPerSecond);
    });
}

void LineFront::runOnThread(const std::function<void()>& task) {
    std::unique_lock lock(m_taskMutex);
    m_taskDone.wait(lock, [this] { return m_task == nullptr; });
    m_task = &task;
    m_io.wake();
    m_taskDone.wait(lock, [this, &task] { return m_task != &task; });
}

void LineFront::runTasks() {
    const std::lock_guard lock(m_taskMutex);
    if (m_task == nullptr)
        return;
    (*m_task)();
    m_task = nullptr;
    m_taskDone.notify_all();
}

void LineFront::setLine(LineIo::Line line) {
    m_line = line;
    m_outgoing.clear();
    m_lineOpen = line != LineIo::none;
}

void LineFront::lose() {
    if (m_line != LineIo::none)
        closeLine();
    setLine(LineIo::none);
}

void LineFront::run() {
    while (!m_stopping) {
        runTasks();
        const int timeoutMs = stepCamera();
        const LineIo::Readiness ready = m_io.wait(m_line, m_wanted, timeoutMs);
        if (m_line != LineIo::none && ready.writes)
            writeLine();
        if (m_line != LineIo::none && ready.reads)
            readLine();
    }
}

int LineFront::stepCamera() {
    const std::lock_guard lock(m_mutex);
    const Time time = now();
    const Bytes due = m_camera->takeDue(time);
    if (m_line != LineIo::none)
        protocol::append(m_outgoing, due);
    if (m_camera->hangUpDue(time))
        lose();

    const bool paused = m_camera->readingPaused(time);
    m_wanted.reads = !paused && m_readPace.allowed(time, anyAmount) > 0;
    m_wanted.writes = !m_outgoing.empty() && m_writePace.allowed(time, anyAmount) > 0;
    int timeout = -1;
    const auto consider = [&](Time when) {
        const int wait = millisecondsUntil(when, time);
        timeout = timeout < 0 ? wait : std::min(timeout, wait);
    };
    if (const auto next = m_camera->nextDue())
        consider(*next);
    if (paused)
        consider(m_camera->readingPausedUntil());
    if ((!paused && !m_wanted.reads) || (!m_outgoing.empty() && !m_wanted.writes))
        consider(time + m_readPace.sliceTime());
    return timeout;
}

void LineFront::writeLine() {
    std::size_t most = 0;
    {
        const std::lock_guard lock(m_mutex);
        most = m_writePace.allowed(now(), m_outgoing.size());
    }
    const std::optional<std::size_t> written =
        LineIo::write(m_line, ByteView(std::span(m_outgoing).first(most)));
    if (!written) {
        lose();
        return;
    }
    m_outgoing.erase(m_outgoing.begin(), m_outgoing.begin() + static_cast<std::ptrdiff_t>(*written));
    const std::lock_guard lock(m_mutex);
    m_writePace.spend(*written);
}

void LineFront::readLine() {
    const std::optional<std::uint32_t> speed = lineSpeed();
    const std::lock_guard lock(m_mutex);
    const Time time = now();
    std::array<std::uint8_t, LineIo::readSize> buffer{};
    const std::optional<std::size_t> count =
        LineIo::read(m_line, std::span(buffer).first(m_readPace.allowed(time, buffer.size())));
    if (!count)
        lose();
    if (count.value_or(0) == 0)
        return;
    m_readPace.spend(*count);
    m_camera->setLineSpeed(speed);
    m_camera->receive(ByteView(std::span(buffer).first(*count)), time);
}

} // namespace emulator
