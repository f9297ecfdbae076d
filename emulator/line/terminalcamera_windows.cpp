#include "emulator/line/terminalcamera.h"
#include "language/language.h"

#include <stdexcept>

namespace emulator {

TerminalCamera serveOnNewTerminal(VirtualCamera, const std::string&) {
    throw std::runtime_error(
        language::sentence("Windows has no pseudo-terminals; name one port of a pair with --device"));
}

} // namespace emulator
