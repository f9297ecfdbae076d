#include "emulator/devicefront.h"
#include "emulator/terminal.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace emulator {

DeviceFront::DeviceFront(VirtualCamera camera, const std::string& path) : CameraFront(std::move(camera)) {
    const std::uint32_t baudRate = withCamera([](VirtualCamera& held) { return held.settings().baudRate; });
    const int descriptor = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        throw std::runtime_error(path + ": " + std::strerror(errno));
    m_device = descriptor;
    if (!makeRaw(descriptor, baudRate)) {
        DeviceFront::closeLine();
        throw std::runtime_error(path + " is not a serial device");
    }
    start(m_device);
}

DeviceFront::~DeviceFront() {
    stop();
    closeLine();
}

void DeviceFront::closeLine() {
    if (m_device != LineIo::none)
        ::close(static_cast<int>(m_device));
    m_device = LineIo::none;
}

std::optional<std::uint32_t> DeviceFront::lineSpeed() const {
    return terminalSpeed(static_cast<int>(m_device));
}

} // namespace emulator
