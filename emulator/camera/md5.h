// MD5 of the camera's side.
#pragma once

#include "link/protocol/bytes.h"

namespace emulator {

/// 16 bytes.
[[nodiscard]] protocol::Bytes md5(protocol::ByteView bytes);

} // namespace emulator
