// MD5 for the virtual camera.
#pragma once

#include "link/protocol/bytes.h"

namespace emulator {

/// 16 bytes.
[[nodiscard]] protocol::Bytes md5(protocol::ByteView bytes);

} // namespace emulator
