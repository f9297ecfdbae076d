#include "emulator/camerafront.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace emulator {

namespace {

constexpr std::size_t readSize = 4096;
constexpr std::size_t anyAmount = 65536;

bool wouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

int millisecondsUntil(Time due, Time now) {
    constexpr Time longest = std::chrono::minutes(1);
    if (due <= now)
        return 0;
    return static_cast<int>(
        std::chrono::ceil<std::chrono::milliseconds>(std::min(due - now, longest)).count());
}

} // namespace

CameraFront::CameraFront(VirtualCamera camera) : m_camera(std::move(camera)) {
    if (::pipe2(m_wakePipe, O_NONBLOCK | O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
}

CameraFront::~CameraFront() {
    stop();
    ::close(m_wakePipe[0]);
    ::close(m_wakePipe[1]);
}

void CameraFront::start(int descriptor) {
    setDescriptor(descriptor);
    m_thread = std::thread([this] { run(); });
}

void CameraFront::stop() {
    if (!m_thread.joinable())
        return;
    m_stopping = true;
    wake();
    m_thread.join();
}

void CameraFront::setPace(std::uint32_t bytesPerSecond) {
    withCamera([this, bytesPerSecond](VirtualCamera&) {
        m_readPace.setRate(bytesPerSecond);
        m_writePace.setRate(bytesPerSecond);
    });
}

Time CameraFront::now() const {
    return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now() - m_start);
}

void CameraFront::wake() {
    const char byte = 0;
    // A full pipe wakes the thread as well.
    static_cast<void>(!::write(m_wakePipe[1], &byte, 1));
}

void CameraFront::runOnThread(const std::function<void()>& task) {
    std::unique_lock lock(m_taskMutex);
    m_taskDone.wait(lock, [this] { return m_task == nullptr; });
    m_task = &task;
    wake();
    m_taskDone.wait(lock, [this, &task] { return m_task != &task; });
}

void CameraFront::runTasks() {
    const std::lock_guard lock(m_taskMutex);
    if (m_task == nullptr)
        return;
    (*m_task)();
    m_task = nullptr;
    m_taskDone.notify_all();
}

void CameraFront::setDescriptor(int descriptor) {
    m_descriptor = descriptor;
    m_outgoing.clear();
    m_lineOpen = descriptor >= 0;
}

void CameraFront::lose() {
    if (m_descriptor >= 0)
        closeLine();
    setDescriptor(-1);
}

void CameraFront::run() {
    while (!m_stopping) {
        runTasks();
        waitForLine(stepCamera());
        if (m_descriptor >= 0 && m_writes)
            writeLine();
        if (m_descriptor >= 0 && m_reads)
            readLine();
    }
}

int CameraFront::stepCamera() {
    const std::lock_guard lock(m_mutex);
    const Time time = now();
    const Bytes due = m_camera.takeDue(time);
    if (m_descriptor >= 0)
        protocol::append(m_outgoing, due);
    if (m_camera.hangUpDue(time))
        lose();

    const bool paused = m_camera.readingPaused(time);
    m_reads = !paused && m_readPace.allowed(time, anyAmount) > 0;
    m_writes = !m_outgoing.empty() && m_writePace.allowed(time, anyAmount) > 0;
    int timeout = -1;
    const auto consider = [&](Time when) {
        const int wait = millisecondsUntil(when, time);
        timeout = timeout < 0 ? wait : std::min(timeout, wait);
    };
    if (const auto next = m_camera.nextDue())
        consider(*next);
    if (paused)
        consider(m_camera.readingPausedUntil());
    if ((!paused && !m_reads) || (!m_outgoing.empty() && !m_writes))
        consider(time + m_readPace.sliceTime());
    return timeout;
}

void CameraFront::waitForLine(int timeoutMs) {
    const auto events = static_cast<short>((m_reads ? POLLIN : 0) | (m_writes ? POLLOUT : 0));
    // A descriptor nothing is asked of would still report its hang-up, again and again.
    std::array<pollfd, 2> polled = {
        {{m_wakePipe[0], POLLIN, 0}, {events == 0 ? -1 : m_descriptor, events, 0}}};
    ::poll(polled.data(), polled.size(), timeoutMs);
    std::array<char, 64> drained{};
    while (::read(m_wakePipe[0], drained.data(), drained.size()) > 0) {
    }
    m_writes = (polled[1].revents & (POLLOUT | POLLERR)) != 0;
    m_reads = (polled[1].revents & (POLLIN | POLLERR | POLLHUP)) != 0;
}

void CameraFront::writeLine() {
    std::size_t most = 0;
    {
        const std::lock_guard lock(m_mutex);
        most = m_writePace.allowed(now(), m_outgoing.size());
    }
    const ssize_t written = ::write(m_descriptor, m_outgoing.data(), most);
    if (written < 0) {
        if (!wouldBlock(errno))
            lose();
        return;
    }
    m_outgoing.erase(m_outgoing.begin(), m_outgoing.begin() + written);
    const std::lock_guard lock(m_mutex);
    m_writePace.spend(static_cast<std::size_t>(written));
}

void CameraFront::readLine() {
    const std::optional<std::uint32_t> speed = lineSpeed();
    const std::lock_guard lock(m_mutex);
    const Time time = now();
    std::array<std::uint8_t, readSize> buffer{};
    const ssize_t count = ::read(m_descriptor, buffer.data(), m_readPace.allowed(time, buffer.size()));
    if (count < 0 && wouldBlock(errno))
        return;
    if (count <= 0) {
        lose();
        return;
    }
    const auto size = static_cast<std::size_t>(count);
    m_readPace.spend(size);
    m_camera.setLineSpeed(speed);
    m_camera.receive(ByteView(std::span(buffer).first(size)), time);
}

} // namespace emulator
