// Answers of a camera as bytes. Check codes are zero: the tool does not examine those of answers.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace answers {

using Bytes = std::vector<std::uint8_t>;

/// A frame from address 1.
[[nodiscard]] inline Bytes frame(std::uint8_t command, const Bytes& payload) {
    Bytes bytes{0xAA, 0x5A, 0x01, command};
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<std::uint8_t>(payload.size() >> shift & 0xFFU));
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    bytes.insert(bytes.end(), 2, 0);
    return bytes;
}

/// The answer to the read or write of a property; result 0 is success.
[[nodiscard]] inline Bytes property(std::uint8_t command, std::uint8_t id, std::string_view value,
                                    std::uint8_t result = 0) {
    Bytes payload{id, result};
    payload.insert(payload.end(), value.begin(), value.end());
    return frame(command, payload);
}

/// The envelope of cameras that speak JSON.
[[nodiscard]] inline Bytes json(std::string_view body) {
    const std::size_t total = body.size() + 8;
    Bytes bytes{0x01,
                0x17,
                static_cast<std::uint8_t>(total >> 8U & 0xFFU),
                static_cast<std::uint8_t>(total & 0xFFU),
                0xFD,
                0xFC,
                0xFB,
                0xFA,
                0x64,
                0x00,
                static_cast<std::uint8_t>(body.size() & 0xFFU),
                static_cast<std::uint8_t>(body.size() >> 8U & 0xFFU)};
    bytes.insert(bytes.end(), body.begin(), body.end());
    bytes.insert(bytes.end(), 2, 0);
    return bytes;
}

} // namespace answers
