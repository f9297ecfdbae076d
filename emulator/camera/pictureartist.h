// Draws the pictures of the virtual camera. Needs no application object, no display and no font.
#pragma once

#include "link/protocol/bytes.h"

#include <cstddef>

namespace emulator {

/// A JPEG of a shelf with goods and the id in large digits. The same id and variation give the same picture.
/// Any thread.
[[nodiscard]] protocol::Bytes drawShelfPicture(std::uint16_t id, std::uint32_t variation);

/// The JPEG, padded to the size with zero bytes after the end marker, which viewers ignore; a longer one is
/// unchanged.
[[nodiscard]] protocol::Bytes paddedJpeg(protocol::Bytes jpeg, std::size_t size);

} // namespace emulator
