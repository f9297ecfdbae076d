// The door command.
#pragma once

#include "link/protocol/bytes.h"

namespace protocol {

/// Payload.
namespace door_layout {
inline constexpr Field<std::uint8_t> open{0}; ///< 1 = open, 0 = close
inline constexpr Field<std::uint32_t> secondsSinceEpoch{1};
inline constexpr Field<std::uint8_t> sequence{5};
inline constexpr std::size_t size = sequence.end();
static_assert(size == 6);
} // namespace door_layout

} // namespace protocol
