#include "emulator/line/devicefront.h"

namespace emulator {

DeviceFront::DeviceFront(VirtualCamera camera, const std::string& path) : CameraFront(std::move(camera)) {
    const std::uint32_t baudRate = withCamera([](VirtualCamera& held) { return held.settings().baudRate; });
    m_device = openDeviceLine(path, baudRate);
    start(m_device->line());
}

} // namespace emulator
