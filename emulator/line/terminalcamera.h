// A virtual camera on a port of its own, where the system can make one: terminalcamera_unix.cpp,
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
    /// Pulls the adapter (false) and plugs it in again; the front outlives the call.
    std::function<void(bool in)> plug;
};

/// Serves the camera on a new pseudo-terminal; at a path that is not empty a symbolic link leads to it.
/// Throws std::runtime_error or std::system_error when that cannot be, as on Windows, which has none.
[[nodiscard]] TerminalCamera serveOnNewTerminal(VirtualCamera camera, const std::string& link = {});

} // namespace emulator
