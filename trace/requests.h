// The requests that a camera can receive, by name.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace trace {

/// Code that stands for the JSON envelope, which has none.
inline constexpr std::uint16_t jsonCode = 0x100;
inline constexpr std::uint16_t jsonPropertyType = 145;
inline constexpr std::uint16_t jsonPictureType = 156;

struct RequestName {
    std::string_view name;
    std::string_view words; ///< what it asks for
    std::uint16_t code;     ///< without the picture-command offset
    /// First payload byte (JSON: cmdType) for requests that share a code; nothing: any.
    std::optional<std::uint16_t> detail;
};

/// Specific names before general ones.
[[nodiscard]] std::span<const RequestName> requestNames();

/// A request as it is told apart from others.
struct RequestKey {
    std::uint16_t code = 0;     ///< without the picture-command offset, or jsonCode
    std::uint16_t lineCode = 0; ///< as on the line, or jsonCode
    std::optional<std::uint16_t> detail;
};

/// The most specific name; nullptr for a code that no request has.
[[nodiscard]] const RequestName* nameOf(const RequestKey& key);

} // namespace trace
