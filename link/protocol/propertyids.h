// Ids of the camera's properties.
#pragma once

#include "link/protocol/commands.h"

#include <cstddef>
#include <string_view>

namespace protocol {

/// Values are unsigned bytes unless said otherwise.
enum class PropertyId : std::uint8_t {
    appVersion = 0x02,   ///< text
    serialNumber = 0x03, ///< text
    compressionRate = 6,
    captureAngles = 10,    ///< angle A, angle B; degrees
    captureDirection = 11, ///< 1 = clockwise, else anticlockwise
    captureReserve = 12,   ///< meaning known to the camera only; read and logged
    gyroSwitch = 13,       ///< 1 = on, else off
    heaterDuty = 15,       ///< percent
    orientation = 16,      ///< unsigned 32-bit, little-endian; every read gives the next quantity
    systemVersion = 0x15,  ///< text
    modelInfo = 0xCC,      ///< text
    qvVersion = 0xD4,      ///< text
};

[[nodiscard]] constexpr std::uint8_t code(PropertyId id) {
    return static_cast<std::uint8_t>(id);
}

/// Pitch, roll, yaw, acceleration.
inline constexpr std::size_t orientationQuantities = 4;

/// The gyro test: a raw read without a frame in the answer.
namespace gyro_test {
inline constexpr std::uint8_t property = 0x03;
inline constexpr std::uint32_t timeoutMs = 50;
inline constexpr std::uint32_t readSize = 100; // bytes
inline constexpr std::string_view passed = "3success";
} // namespace gyro_test

} // namespace protocol
