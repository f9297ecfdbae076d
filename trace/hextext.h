// Bytes in hexadecimal, for people.
#pragma once

#include "link/protocol/bytes.h"

#include <string>

namespace trace {

inline constexpr std::size_t longestHexText = 24; // bytes

/// "AA 5A 01 ... (90 bytes)": the first 24 bytes, and the count of all when there are more.
[[nodiscard]] std::string hexText(protocol::ByteView bytes);

} // namespace trace
