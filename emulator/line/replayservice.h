// A recorded camera on a line.
#pragma once

#include "emulator/camera/replaycamera.h"
#include "emulator/line/byteline.h"

namespace emulator {

/// Has the camera answer on the line until it is to end (asked several times a second), in the caller's
/// thread. False when the line is gone.
bool serveReplay(ReplayCamera& camera, ByteLine& line, const std::function<bool()>& endAsked);

} // namespace emulator
