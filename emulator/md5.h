// MD5 of the camera's side. Its own, so that a mistake in the tool's digest cannot hide here.
#pragma once

#include "link/protocol/bytes.h"

namespace emulator {

/// 16 bytes.
[[nodiscard]] protocol::Bytes md5(protocol::ByteView bytes);

} // namespace emulator
