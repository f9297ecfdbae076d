#include "emulator/line/byteline.h"

#include "emulator/line/serialdevice.h"

#include <array>

namespace emulator {

namespace {

class DeviceLine final : public ByteLine {
public:
    DeviceLine(std::string device, std::uint32_t baudRate)
        : m_name(std::move(device)), m_device(openSerialDevice(m_name, baudRate)) {}
    ~DeviceLine() override { closeSerialDevice(m_device); }
    std::optional<std::uint32_t> rate() const override { return serialDeviceRate(m_device); }
    std::string name() const override { return m_name; }
    LineIo::Line line() const override { return m_device; }

private:
    std::string m_name;
    LineIo::Line m_device;
};

} // namespace

bool ByteLine::read(Bytes& bytes, std::chrono::milliseconds timeout) {
    if (!m_reading.wait(line(), {true, false}, static_cast<int>(timeout.count())).reads)
        return true;
    std::array<std::uint8_t, LineIo::readSize> buffer{};
    const auto count = LineIo::read(line(), buffer);
    if (!count)
        return false;
    protocol::append(bytes, ByteView(std::span(buffer)).range(0, *count));
    return true;
}

std::optional<std::size_t> ByteLine::write(ByteView bytes, std::chrono::milliseconds timeout) {
    if (!m_writing.wait(line(), {false, true}, static_cast<int>(timeout.count())).writes)
        return 0;
    return LineIo::write(line(), bytes);
}

std::unique_ptr<ByteLine> openDeviceLine(const std::string& device, std::uint32_t baudRate) {
    return std::make_unique<DeviceLine>(device, baudRate);
}

} // namespace emulator
