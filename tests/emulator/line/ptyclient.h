// The tool's end of a pseudo-terminal, with plain system calls.
#pragma once

#include "tests/emulator/camera/camerabench.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace emulatortest {

class PtyClient {
public:
    explicit PtyClient(const std::string& path)
        : m_descriptor(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK)) {}
    ~PtyClient() { close(); }
    PtyClient(const PtyClient&) = delete;
    PtyClient& operator=(const PtyClient&) = delete;

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    void close() {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
        m_descriptor = -1;
    }
    [[nodiscard]] bool exclusive() const {
        int mark = 0;
        return ::ioctl(m_descriptor, TIOCGEXCL, &mark) == 0 && mark != 0;
    }
    void setSpeed(speed_t speed) const {
        termios settings{};
        ::tcgetattr(m_descriptor, &settings);
        ::cfsetspeed(&settings, speed);
        ::tcsetattr(m_descriptor, TCSANOW, &settings);
    }
    /// Bytes written; fewer when the far end takes no more within the time.
    std::size_t write(const Bytes& bytes, std::chrono::milliseconds patience = longEnough) {
        const auto end = std::chrono::steady_clock::now() + patience;
        std::size_t written = 0;
        while (written < bytes.size() && waitFor(POLLOUT, end)) {
            const ssize_t count = ::write(m_descriptor, bytes.data() + written, bytes.size() - written);
            if (count < 0 && errno != EAGAIN)
                break;
            written += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        return written;
    }
    /// Up to `count` bytes; fewer when no more come within the time or the device is gone.
    Bytes read(std::size_t count, std::chrono::milliseconds patience = longEnough) {
        const auto end = std::chrono::steady_clock::now() + patience;
        Bytes bytes;
        while (bytes.size() < count && waitFor(POLLIN, end)) {
            std::array<std::uint8_t, 4096> buffer{};
            const ssize_t got =
                ::read(m_descriptor, buffer.data(), std::min(buffer.size(), count - bytes.size()));
            if (got == 0 || (got < 0 && errno != EAGAIN)) {
                m_gone = true;
                break;
            }
            if (got > 0)
                bytes.insert(bytes.end(), buffer.begin(), buffer.begin() + got);
        }
        return bytes;
    }
    /// A read found the device gone.
    [[nodiscard]] bool gone() const { return m_gone; }

private:
    bool waitFor(short events, std::chrono::steady_clock::time_point end) const {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
        pollfd polled{m_descriptor, events, 0};
        return left > 0 && ::poll(&polled, 1, static_cast<int>(left)) > 0;
    }

    int m_descriptor;
    bool m_gone = false;
};

/// Waits for the condition; false after a generous limit.
template <typename Condition>
bool comesTrue(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + longEnough;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        ::usleep(2000);
    }
    return true;
}

} // namespace emulatortest
