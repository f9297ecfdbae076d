// The camera's command table; for the sources of VirtualCamera.
#pragma once

#include "emulator/camera/virtualcamera.h"
#include "link/protocol/uploads.h"

#include <algorithm>

namespace emulator {

/// Cameras that know a command.
enum class Generation : std::uint8_t {
    heartbeat,   ///< all, by a switch of its own
    all,         ///< every camera
    framesOnly,  ///< all but the JSON camera: properties and information
    first,       ///< first-generation pictures
    firstUpload, ///< application image by raw data
    second,      ///< V1 pictures, second application-update protocol
};

/// A code that no request has.
inline constexpr std::uint16_t unknownCode = 0x1FF;

/// Result byte of an answer.
[[nodiscard]] constexpr std::uint8_t resultOf(bool success) {
    return success ? protocol::answer_result::success : protocol::answer_result::failure;
}

/// A byte count of a fault; no fault makes more than 1 MiB.
[[nodiscard]] inline std::size_t limited(std::int64_t number) {
    constexpr std::int64_t mostBytes = 1 << 20;
    return static_cast<std::size_t>(std::clamp<std::int64_t>(number, 0, mostBytes));
}

struct VirtualCamera::CommandRow {
    std::uint16_t code;
    Generation generation;
    Handler handler;
};

struct VirtualCamera::UploadKind {
    protocol::Command command;
    bool hasVerdict; ///< sends a verdict after the last byte
    bool restarts;   ///< restarts after a good image

    [[nodiscard]] bool named() const { return protocol::isNamed(command); }
};

} // namespace emulator
