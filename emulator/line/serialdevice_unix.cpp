#include "emulator/line/serialdevice.h"
#include "emulator/line/terminal.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace emulator {

LineIo::Line openSerialDevice(const std::string& path, std::uint32_t baudRate) {
    const int device = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (device < 0)
        throw std::runtime_error(path + ": " + std::strerror(errno));
    if (!makeRaw(device, baudRate)) {
        ::close(device);
        throw std::runtime_error(path + " is not a serial device");
    }
    return device;
}

void closeSerialDevice(LineIo::Line device) {
    ::close(static_cast<int>(device));
}

std::optional<std::uint32_t> serialDeviceRate(LineIo::Line device) {
    return terminalSpeed(static_cast<int>(device));
}

} // namespace emulator
