#include "emulator/ptyfront.h"
#include "emulator/terminalcamera.h"

namespace emulator {

TerminalCamera serveOnNewTerminal(VirtualCamera camera, const std::string& link) {
    auto front = std::make_unique<PtyFront>(std::move(camera));
    if (!link.empty())
        front->linkAt(link);
    std::string portName = front->portName();
    return {std::move(front), std::move(portName)};
}

} // namespace emulator
