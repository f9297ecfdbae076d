// A session with every kind of exchange, made once with a virtual camera and kept as a recording.
#pragma once

#include "emulator/camera/virtualcamera.h"
#include "link/camerasp.h"

#include <string>
#include <vector>

namespace emulatortest {

/// The camera of the session, independent of chance and time of day.
[[nodiscard]] emulator::CameraSettings sessionSettings(emulator::CameraType type);
void fillSessionCamera(emulator::VirtualCamera& camera);

/// Everything that the camera type knows, through the real client; a line of text for each result. Uses files
/// of the working directory.
[[nodiscard]] std::vector<std::string> runSession(emulator::CameraType type, CameraSp& client);
/// Results of the session with its camera.
[[nodiscard]] std::vector<std::string> sessionResults(emulator::CameraType type);

} // namespace emulatortest
