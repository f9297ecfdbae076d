#include "emulator/line/serialdevice.h"
#include "emulator/line/terminal.h"
#include "language/language.h"

#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace emulator {

LineIo::Line openSerialDevice(const std::string& path, std::uint32_t baudRate) {
    const int device = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (device < 0)
        throw std::runtime_error(
            language::sentence("cannot open the device %1: %2", {path, language::reasonOf(errno)}));
    if (!makeRaw(device, baudRate)) {
        ::close(device);
        throw std::runtime_error(language::sentence("%1 is not a serial device; choose another", {path}));
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
