#include "emulator/line/lineio.h"
#include "language/language.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace emulator {

namespace {

int descriptorOf(LineIo::Line line) {
    return static_cast<int>(line);
}

bool wouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

LineIo::LineIo() {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_NONBLOCK | O_CLOEXEC) != 0)
        throw std::runtime_error(
            language::sentence("the system gives no pipe: %1", {language::reasonOf(errno)}));
    m_waker[0] = ends[0];
    m_waker[1] = ends[1];
}

LineIo::~LineIo() {
    ::close(descriptorOf(m_waker[0]));
    ::close(descriptorOf(m_waker[1]));
}

void LineIo::wake() {
    const char byte = 0;
    // A full pipe wakes the thread as well.
    static_cast<void>(!::write(descriptorOf(m_waker[1]), &byte, 1));
}

LineIo::Readiness LineIo::wait(Line line, Readiness wanted, int timeoutMs) {
    const auto events = static_cast<short>((wanted.reads ? POLLIN : 0) | (wanted.writes ? POLLOUT : 0));
    // poll reports a hang-up even without events; a wait for no events must not end with it.
    std::array<pollfd, 2> polled = {
        {{descriptorOf(m_waker[0]), POLLIN, 0}, {events == 0 ? -1 : descriptorOf(line), events, 0}}};
    ::poll(polled.data(), polled.size(), timeoutMs);
    std::array<char, 64> drained{};
    while (::read(descriptorOf(m_waker[0]), drained.data(), drained.size()) > 0) {
    }
    return {(polled[1].revents & (POLLIN | POLLERR | POLLHUP)) != 0,
            (polled[1].revents & (POLLOUT | POLLERR)) != 0};
}

std::optional<std::size_t> LineIo::write(Line line, ByteView bytes) {
    const ssize_t written = ::write(descriptorOf(line), bytes.begin(), bytes.size());
    if (written >= 0)
        return static_cast<std::size_t>(written);
    return wouldBlock(errno) ? std::optional<std::size_t>(0) : std::nullopt;
}

std::optional<std::size_t> LineIo::read(Line line, std::span<std::uint8_t> buffer) {
    const ssize_t count = ::read(descriptorOf(line), buffer.data(), buffer.size());
    if (count > 0)
        return static_cast<std::size_t>(count);
    return count < 0 && wouldBlock(errno) ? std::optional<std::size_t>(0) : std::nullopt;
}

} // namespace emulator
