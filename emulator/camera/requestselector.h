// Selection of requests for faults and delays.
#pragma once

#include "link/protocol/requests.h"

#include <string_view>

namespace emulator {

/// Requests to which a fault or delay applies.
struct RequestSelector {
    std::optional<std::uint16_t> code;     ///< without the picture-command offset; nothing: any request
    std::optional<std::uint16_t> lineCode; ///< on the line; nothing: any
    std::optional<std::uint16_t> detail;

    [[nodiscard]] bool matches(const protocol::RequestKey& key) const;
};

/// "any", a name of the table, a code on the line (0x02), each with an optional ":detail" (getProperty:15).
/// Nothing for any other text.
[[nodiscard]] std::optional<RequestSelector> parseSelector(std::string_view text);

/// Decimal or 0x hexadecimal, with an optional minus; nothing for a text that is not exactly one number.
[[nodiscard]] std::optional<std::int64_t> parseNumber(std::string_view text);

/// Pairs of hexadecimal digits; nothing for any other text.
[[nodiscard]] std::optional<protocol::Bytes> parseBytes(std::string_view text);

} // namespace emulator
