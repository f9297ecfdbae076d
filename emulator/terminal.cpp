#include "emulator/terminal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <termios.h>
#include <unistd.h>

namespace emulator {

namespace {

struct Rate {
    std::uint32_t baudRate;
    speed_t constant;
};

constexpr std::array rates = {Rate{9600, B9600},     Rate{19200, B19200},   Rate{38400, B38400},
                              Rate{57600, B57600},   Rate{115200, B115200}, Rate{230400, B230400},
                              Rate{460800, B460800}, Rate{921600, B921600}};

} // namespace

bool makeRaw(int descriptor, std::optional<std::uint32_t> baudRate) {
    termios settings{};
    if (::tcgetattr(descriptor, &settings) != 0)
        return false;
    ::cfmakeraw(&settings);
    const auto* const rate =
        std::find_if(rates.begin(), rates.end(), [&](const Rate& row) { return row.baudRate == baudRate; });
    if (rate != rates.end())
        ::cfsetspeed(&settings, rate->constant);
    return ::tcsetattr(descriptor, TCSANOW, &settings) == 0;
}

int openSerialDevice(const std::string& path, std::uint32_t baudRate) {
    const int device = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (device < 0)
        throw std::runtime_error(path + ": " + std::strerror(errno));
    if (!makeRaw(device, baudRate)) {
        ::close(device);
        throw std::runtime_error(path + " is not a serial device");
    }
    return device;
}

std::optional<std::uint32_t> terminalSpeed(int descriptor) {
    termios settings{};
    if (::tcgetattr(descriptor, &settings) != 0)
        return std::nullopt;
    const speed_t speed = ::cfgetospeed(&settings);
    const auto* const rate =
        std::find_if(rates.begin(), rates.end(), [speed](const Rate& row) { return row.constant == speed; });
    return rate == rates.end() ? std::nullopt : std::optional(rate->baudRate);
}

} // namespace emulator
