// Lines of the tap and the replay: pseudo-terminals and serial devices. Unix only.
#include "emulator/pty.h"
#include "emulator/tap/byteline.h"
#include "emulator/terminal.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace emulator {

namespace {

constexpr std::size_t readSize = 4096;

bool wouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

enum class Wait { ready, timedOut, gone };

Wait waitFor(int descriptor, short events, std::chrono::milliseconds patience) {
    pollfd polled{descriptor, events, 0};
    const int ready = ::poll(&polled, 1, static_cast<int>(patience.count()));
    if (ready < 0)
        return wouldBlock(errno) ? Wait::timedOut : Wait::gone;
    if (ready == 0)
        return Wait::timedOut;
    // What came before a hang-up can still be read.
    return (polled.revents & events) != 0 ? Wait::ready : Wait::gone;
}

class DescriptorLine : public ByteLine {
public:
    bool read(Bytes& bytes, std::chrono::milliseconds patience) override {
        const Wait wait = waitFor(descriptor(), POLLIN, patience);
        if (wait != Wait::ready)
            return wait == Wait::timedOut;
        std::array<std::uint8_t, readSize> buffer{};
        const ssize_t count = ::read(descriptor(), buffer.data(), buffer.size());
        if (count <= 0)
            return count < 0 && wouldBlock(errno);
        protocol::append(bytes, ByteView(std::span(buffer).first(static_cast<std::size_t>(count))));
        return true;
    }

    std::optional<std::size_t> write(ByteView bytes, std::chrono::milliseconds patience) override {
        const Wait wait = waitFor(descriptor(), POLLOUT, patience);
        if (wait != Wait::ready)
            return wait == Wait::timedOut ? std::optional<std::size_t>(0) : std::nullopt;
        const ssize_t count = ::write(descriptor(), bytes.begin(), bytes.size());
        if (count < 0)
            return wouldBlock(errno) ? std::optional<std::size_t>(0) : std::nullopt;
        return static_cast<std::size_t>(count);
    }

protected:
    [[nodiscard]] virtual int descriptor() const = 0;
};

class PtyLine final : public DescriptorLine {
public:
    explicit PtyLine(const std::string& link) : m_link(link) {
        m_pty.open();
        if (!link.empty())
            m_pty.linkAt(link);
    }
    std::optional<std::uint32_t> rate() const override { return terminalSpeed(m_pty.slave()); }
    std::string name() const override {
        return m_link.empty() ? m_pty.portName() : m_pty.portName() + " (" + m_link + ')';
    }

protected:
    int descriptor() const override { return m_pty.master(); }

private:
    Pty m_pty;
    std::string m_link;
};

class DeviceLine final : public DescriptorLine {
public:
    DeviceLine(std::string device, std::uint32_t baudRate)
        : m_name(std::move(device)), m_device(openSerialDevice(m_name, baudRate)) {}
    ~DeviceLine() override { ::close(m_device); }
    std::optional<std::uint32_t> rate() const override { return terminalSpeed(m_device); }
    std::string name() const override { return m_name; }

protected:
    int descriptor() const override { return m_device; }

private:
    std::string m_name;
    int m_device;
};

} // namespace

std::unique_ptr<ByteLine> openToolLine(const std::string& link) {
    return std::make_unique<PtyLine>(link);
}

std::unique_ptr<ByteLine> openDeviceLine(const std::string& device, std::uint32_t baudRate) {
    return std::make_unique<DeviceLine>(device, baudRate);
}

} // namespace emulator
