// The door command.
#pragma once

#include "link/protocol/bytes.h"

namespace protocol {

/// Its payload.
namespace door_layout {
inline constexpr Field<std::uint8_t> open{0}; ///< 1 = open, 0 = close
inline constexpr Field<std::uint32_t> secondsSinceEpoch{1};
inline constexpr Field<std::uint8_t> sequence{5};
static_assert(sequence.end() == 6);
} // namespace door_layout

} // namespace protocol
