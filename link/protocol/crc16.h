// The two check codes of the camera line.
#pragma once

#include "link/protocol/bytes.h"

namespace protocol {

/// CRC-16/XMODEM: polynomial 0x1021, initial value 0, most significant bit first. Trailer of every frame.
[[nodiscard]] std::uint16_t crc16Xmodem(ByteView bytes);

/// CRC-16/MODBUS: reflected polynomial 0xA001, initial value 0xFFFF (also the result for no bytes).
/// Trailer of every JSON envelope.
[[nodiscard]] std::uint16_t crc16Modbus(ByteView bytes);

} // namespace protocol
