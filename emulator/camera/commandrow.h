// The camera's command table; for the sources of VirtualCamera.
#pragma once

#include "emulator/camera/virtualcamera.h"

namespace emulator {

/// Which cameras know a command.
enum class Generation : std::uint8_t {
    heartbeat,   ///< all, by a switch of its own
    all,         ///< every camera
    framesOnly,  ///< all but the JSON camera: properties and information
    first,       ///< first-generation pictures
    firstUpload, ///< application image by raw data
    second,      ///< V1 pictures, second application-update protocol
};

// Result bytes of answers.
inline constexpr std::uint8_t succeeded = 0;
inline constexpr std::uint8_t failed = 1;

/// A code that no request has.
inline constexpr std::uint16_t unknownCode = 0x1FF;

struct VirtualCamera::CommandRow {
    std::uint16_t code;
    Generation generation;
    Handler handler;
};

struct VirtualCamera::UploadKind {
    std::uint16_t code;
    bool named;      ///< constant, size, digest, name; else size, digest
    bool hasVerdict; ///< sent after the last byte
    bool restarts;   ///< after a good image
    /// In front of the verdict's result.
    Bytes verdictHead;
};

} // namespace emulator
