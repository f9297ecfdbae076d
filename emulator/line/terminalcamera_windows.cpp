#include "emulator/line/terminalcamera.h"

#include <stdexcept>

namespace emulator {

TerminalCamera serveOnNewTerminal(VirtualCamera, const std::string&) {
    throw std::runtime_error("Windows has no pseudo-terminals; name a serial port, one of a pair");
}

} // namespace emulator
