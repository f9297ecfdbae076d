// Texts of the camera.
#pragma once

#include <string_view>

namespace protocol {

/// The text up to its first zero byte, which ends a text on the line.
[[nodiscard]] constexpr std::string_view untilZero(std::string_view bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

} // namespace protocol
