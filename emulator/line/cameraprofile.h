// Settings of a virtual camera and its line, read from a profile.
#pragma once

#include "emulator/camera/virtualcamera.h"
#include "emulator/line/linetraits.h"
#include "trace/profile.h"

namespace emulator {

/// Settings of a profile; the camera type gives the others.
struct CameraProfile {
    CameraSettings settings;
    CameraState state;
    std::vector<Fault> faults;
    LineTraits line;
    std::uint16_t pictures = 0; ///< held at the start
};

/// A key of profiles.
struct ProfileKey {
    std::string_view name;
    std::string_view example; ///< of the value
    std::string_view description;
    /// Throws std::invalid_argument with a text for people.
    void (*set)(CameraProfile& profile, std::string_view value);
};

/// The first is the type, with which each profile begins.
[[nodiscard]] std::span<const ProfileKey> profileKeys();

/// Throws trace::ProfileError, whose text names line and key.
[[nodiscard]] CameraProfile cameraProfileOf(const trace::Profile& profile);
/// The same from a file; the text begins with its path.
[[nodiscard]] CameraProfile loadCameraProfile(const std::string& path);

/// A camera with these settings, and the state, faults and pictures of the profile.
[[nodiscard]] VirtualCamera cameraOf(const CameraProfile& profile, const CameraSettings& settings);
[[nodiscard]] inline VirtualCamera cameraOf(const CameraProfile& profile) {
    return cameraOf(profile, profile.settings);
}

} // namespace emulator
