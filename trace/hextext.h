// Bytes as people read them.
#pragma once

#include "link/protocol/bytes.h"

#include <string>

namespace trace {

/// "AA 5A 01 ... (90 bytes)": the first 24 bytes, and how many there are when there are more.
[[nodiscard]] std::string hexText(protocol::ByteView bytes);

} // namespace trace
