// Every command code and property id that travels in a frame.
#pragma once

#include "link/protocol/bytes.h"

#include <optional>

namespace protocol {

enum class Command : std::uint16_t {
    callers = 0x100, ///< not on the line: the caller of the command gives the code
    json = 0x101,    ///< not on the line: a JSON envelope has no code
    heartbeat = 0x01,
    getProperty = 0x02,
    setProperty = 0x03,
    resetToFactory = 0x04,
    reboot = 0x05,
    originCapture = 0x06, // picture-command offset is added to 0x06 .. 0x09
    originCatalogue = 0x07,
    originDelete = 0x08,
    originRead = 0x09,
    firewareAnnounce = 0x0B,
    gyroTest = 0x0F,
    appAnnounce = 0x1B,
    appV1Announce = 0x1D,
    appV1Packet = 0x1E,
    getInfo = 0xC2,
    captureV1 = 0xC6,
    catalogueV1 = 0xC7,
    deleteV1 = 0xC8,
    readV1 = 0xC9,
    modelAnnounce = 0xCB,
    door = 0xCD,
};

[[nodiscard]] constexpr std::uint8_t code(Command command) {
    return static_cast<std::uint8_t>(static_cast<std::uint16_t>(command) & 0xFFU);
}

/// True for the codes that the picture-command offset shifts.
[[nodiscard]] constexpr bool isOriginPictureCode(std::uint8_t value) {
    return value >= code(Command::originCapture) && value <= code(Command::originRead);
}

/// Properties of the camera. Values are unsigned bytes unless said otherwise.
enum class PropertyId : std::uint8_t {
    appVersion = 0x02,   ///< text
    serialNumber = 0x03, ///< text
    compressionRate = 6,
    captureAngles = 10,    ///< angle A, angle B; degrees
    captureDirection = 11, ///< 1 = clockwise, else anticlockwise
    captureReserve = 12,   ///< meaning known to the camera only; read and logged
    gyroSwitch = 13,       ///< 1 = on, else off
    heaterDuty = 15,       ///< percent
    orientation = 16,      ///< orientation_value; every read gives the next quantity
    systemVersion = 0x15,  ///< text
    modelInfo = 0xCC,      ///< text
    qvVersion = 0xD4,      ///< text
};

[[nodiscard]] constexpr std::uint8_t code(PropertyId id) {
    return static_cast<std::uint8_t>(id);
}

/// Value of property 16.
namespace orientation_value {
inline constexpr Field<std::uint32_t> quantity{0};
inline constexpr std::size_t quantities = 4; ///< pitch, roll, yaw, acceleration
/// The three upper bytes of a quantity that the camera cannot tell; the lowest may hold anything.
inline constexpr std::uint32_t unknown = 0x7FFFFF;
[[nodiscard]] constexpr bool isUnknown(std::uint32_t value) {
    return value >> 8U == unknown;
}
/// Nothing when the value is too short or the camera cannot tell it.
[[nodiscard]] inline std::optional<std::uint32_t> quantityOf(ByteView value) {
    if (!value.has(quantity) || isUnknown(value.get(quantity)))
        return std::nullopt;
    return value.get(quantity);
}
} // namespace orientation_value

/// The gyro test: a raw read without a frame in the answer.
namespace gyro_test {
inline constexpr std::uint8_t property = 0x03;
inline constexpr std::uint32_t timeoutMs = 50;
inline constexpr std::uint32_t readSize = 100; // bytes
inline constexpr std::string_view passed = "3success";
} // namespace gyro_test

} // namespace protocol
