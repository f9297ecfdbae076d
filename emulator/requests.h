// The requests a camera can receive, by the names used for faults and in what is printed.
#pragma once

#include "link/protocol/bytes.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace emulator {

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

/// Which requests something applies to.
struct RequestSelector {
    std::optional<std::uint16_t> code;     ///< without the picture-command offset; nothing: any request
    std::optional<std::uint16_t> lineCode; ///< as on the line; nothing: any
    std::optional<std::uint16_t> detail;

    [[nodiscard]] bool matches(const RequestKey& key) const;
};

/// "any", a name of the table, a code on the line (0x02), each with an optional ":detail" (getProperty:15).
/// Nothing when the text is none of them.
[[nodiscard]] std::optional<RequestSelector> parseSelector(std::string_view text);

/// Decimal or 0x hexadecimal, with an optional minus; nothing when the text is not exactly one number.
[[nodiscard]] std::optional<std::int64_t> parseNumber(std::string_view text);

} // namespace emulator
