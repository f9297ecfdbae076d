#include "emulator/camera/requestselector.h"

#include <charconv>

namespace emulator {

bool RequestSelector::matches(const protocol::RequestKey& key) const {
    return (!code || code == key.code) && (!lineCode || lineCode == key.lineCode) &&
           (!detail || detail == key.detail);
}

std::optional<RequestSelector> parseSelector(std::string_view text) {
    RequestSelector selector;
    const std::size_t colon = text.find(':');
    const std::string_view head = text.substr(0, colon);
    if (colon != std::string_view::npos) {
        const auto detail = parseNumber(text.substr(colon + 1));
        if (!detail || *detail < 0 || *detail > 0xFFFF)
            return std::nullopt;
        selector.detail = static_cast<std::uint16_t>(*detail);
    }
    if (head == "any")
        return selector;
    for (const protocol::RequestName& name : protocol::requestNames()) {
        if (name.name != head)
            continue;
        selector.code = name.code;
        if (name.detail)
            selector.detail = name.detail;
        return selector;
    }
    const auto number = parseNumber(head);
    if (!number || *number < 0 || *number > 0xFF)
        return std::nullopt;
    selector.lineCode = static_cast<std::uint16_t>(*number);
    return selector;
}

std::optional<std::int64_t> parseNumber(std::string_view text) {
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(hex ? 2 : 0);
    std::int64_t number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number, hex ? 16 : 10);
    // A second sign would slip through from_chars.
    if (text.empty() || text.front() == '-' || parsed.ec != std::errc() ||
        parsed.ptr != text.data() + text.size())
        return std::nullopt;
    return negative ? -number : number;
}

std::optional<protocol::Bytes> parseBytes(std::string_view text) {
    protocol::Bytes bytes;
    for (std::size_t at = 0; at < text.size(); at += 2) {
        std::uint8_t byte = 0;
        const std::string_view pair = text.substr(at, 2);
        const auto parsed = std::from_chars(pair.data(), pair.data() + pair.size(), byte, 16);
        if (pair.size() != 2 || parsed.ec != std::errc() || parsed.ptr != pair.data() + 2)
            return std::nullopt;
        bytes.push_back(byte);
    }
    return bytes;
}

} // namespace emulator
