// A virtual camera on a new port, on systems that can make one: terminalcamera_unix.cpp,
// terminalcamera_windows.cpp.
#pragma once

#include "emulator/line/camerafront.h"

#include <functional>
#include <memory>
#include <string>

namespace emulator {

struct TerminalCamera {
    std::unique_ptr<CameraFront> front;
    std::string portName;
    /// Pulls the adapter (false) or plugs it in (true): gives the port's new name, empty while it is pulled.
    /// The front outlives the call.
    std::function<std::string(bool in)> plug;
};

/// Serves the camera on a new pseudo-terminal, with a symbolic link at the path unless that is empty. Throws
/// std::runtime_error on failure, and always on Windows, which has no pseudo-terminals.
[[nodiscard]] TerminalCamera serveOnNewTerminal(VirtualCamera camera, const std::string& link = {});

} // namespace emulator
