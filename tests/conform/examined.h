// A virtual camera, examined over a simulated line.
#pragma once

#include "conform/profilewriter.h"
#include "emulator/line/cameraprofile.h"

#include <map>
#include <set>

namespace conformtest {

using emulator::VirtualCamera;

/// What conform found at a camera.
struct Examined {
    std::set<std::string> different; ///< names of checks
    std::set<std::string> good;
    trace::Profile profile;
    std::string text;                                                     ///< of the profile
    std::map<std::string, std::vector<std::chrono::microseconds>> delays; ///< least, median, 95 %
    std::set<std::uint8_t> codes; ///< of the frames that the camera got
    std::size_t uploads = 0;
    std::string table; ///< for messages
};

struct How {
    int repeats = 4;
    bool takesPicture = false;
    std::string uploadFile{};
};

[[nodiscard]] Examined examined(VirtualCamera camera, const How& how = {});
/// The same of the camera that a profile describes.
[[nodiscard]] Examined examinedAfter(const std::string& profile, const How& how = {});

/// A camera of the type that holds three pictures, a minute apart.
[[nodiscard]] VirtualCamera cameraWithPictures(emulator::CameraType type);

/// The profile's lines with these keys.
[[nodiscard]] std::set<std::string> linesOf(const trace::Profile& profile, const std::set<std::string>& keys);
/// Those that tell what differs: all but delays.
[[nodiscard]] std::set<std::string> quirksOf(const trace::Profile& profile);

} // namespace conformtest
