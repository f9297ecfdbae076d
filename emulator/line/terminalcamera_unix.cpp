#include "emulator/line/ptyfront.h"
#include "emulator/line/terminalcamera.h"

namespace emulator {

TerminalCamera serveOnNewTerminal(VirtualCamera camera, const std::string& link) {
    auto front = std::make_unique<PtyFront>(std::move(camera));
    if (!link.empty())
        front->linkAt(link);
    std::string portName = front->portName();
    const auto plug = [served = front.get()](bool in) {
        in ? served->comeBack() : served->vanish();
        return served->portName();
    };
    return {std::move(front), std::move(portName), plug};
}

} // namespace emulator
