// Camera types as the numbers that windows store.
#pragma once

#include "link/protocol/cameratypes.h"

namespace cameratype {

constexpr std::uint32_t number(protocol::CameraType type) {
    return static_cast<std::uint32_t>(type);
}
inline constexpr std::uint32_t ostra = number(protocol::CameraType::ostra);
inline constexpr std::uint32_t quenta = number(protocol::CameraType::quenta);
inline constexpr std::uint32_t shelfDynamic = number(protocol::CameraType::salesDynamic);

} // namespace cameratype
