// The requests that a camera can receive, by name.
#pragma once

#include "link/protocol/commands.h"

#include <optional>
#include <span>

namespace protocol {

/// In place of the command code, which a JSON request does not have.
inline constexpr auto jsonCode = static_cast<std::uint16_t>(Command::json);

struct RequestName {
    std::string_view name;
    std::string_view words; ///< purpose, for people
    std::uint16_t code;     ///< without the picture-command offset, or jsonCode
    /// First payload byte (JSON: cmdType) of requests that share a code; nothing: any.
    std::optional<std::uint16_t> detail;
};

/// Specific names before general ones.
[[nodiscard]] std::span<const RequestName> requestNames();

/// Identity of one request.
struct RequestKey {
    std::uint16_t code = 0;     ///< without the picture-command offset, or jsonCode
    std::uint16_t lineCode = 0; ///< as on the line, or jsonCode
    std::optional<std::uint16_t> detail;
};

/// The most specific name; nullptr for a code that no request has.
[[nodiscard]] const RequestName* nameOf(const RequestKey& key);

} // namespace protocol
