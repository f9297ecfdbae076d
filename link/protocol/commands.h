// Every command code that travels in a frame.
#pragma once

#include <cstdint>

namespace protocol {

enum class Command : std::uint16_t {
    callers = 0x100, ///< no code: the caller of the command gives it
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

} // namespace protocol
