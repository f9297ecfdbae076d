#include "emulator/line/terminal.h"

#include <algorithm>
#include <array>
#include <termios.h>

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
