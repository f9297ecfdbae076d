// Draws the pictures of the virtual camera. Needs no application object, no display and no font.
#pragma once

#include "link/protocol/bytes.h"

#include <cstddef>

namespace emulator {

/// A JPEG of a shelf with goods on it and the id in large digits. Another variation is another picture;
/// the same id and variation give the same picture. Any thread.
[[nodiscard]] protocol::Bytes drawShelfPicture(std::uint16_t id, std::uint32_t variation);

/// The JPEG with zero bytes after its end until it has the size; one that is longer stays as it is.
/// Viewers ignore what follows the end marker.
[[nodiscard]] protocol::Bytes paddedJpeg(protocol::Bytes jpeg, std::size_t size);

} // namespace emulator
