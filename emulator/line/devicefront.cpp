#include "emulator/line/devicefront.h"

#include "emulator/line/serialdevice.h"

namespace emulator {

DeviceFront::DeviceFront(VirtualCamera camera, const std::string& path) : CameraFront(std::move(camera)) {
    const std::uint32_t baudRate = withCamera([](VirtualCamera& held) { return held.settings().baudRate; });
    m_device = openSerialDevice(path, baudRate);
    start(m_device);
}

DeviceFront::~DeviceFront() {
    stop();
    closeLine();
}

void DeviceFront::closeLine() {
    if (m_device != LineIo::none)
        closeSerialDevice(m_device);
    m_device = LineIo::none;
}

std::optional<std::uint32_t> DeviceFront::lineSpeed() const {
    return serialDeviceRate(m_device);
}

} // namespace emulator
