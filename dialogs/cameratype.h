// The kinds of camera that the tool knows, as the numbers kept by the main window.
#pragma once

#include <cstdint>

namespace cameratype {

inline constexpr std::uint32_t ostra = 0;
inline constexpr std::uint32_t dorvel = 1;
inline constexpr std::uint32_t shelfStatic = 2;
inline constexpr std::uint32_t quenta = 3;       ///< speaks JSON for pictures and the version query
inline constexpr std::uint32_t shelfDynamic = 4; ///< V1 pictures, second application update

} // namespace cameratype
