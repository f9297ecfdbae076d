// Bytes from hexadecimal text, and common requests and answers.
#pragma once

#include "link/protocol/bytes.h"

#include <cctype>
#include <string>
#include <string_view>

namespace linetest {

using protocol::Bytes;

/// Bytes of "AA 5A 01"; blanks are ignored.
inline Bytes hex(std::string_view text) {
    const auto digit = [](char c) {
        return std::isdigit(static_cast<unsigned char>(c)) != 0 ? c - '0' : std::toupper(c) - 'A' + 10;
    };
    std::string digits;
    for (const char c : text) {
        if (c != ' ')
            digits += c;
    }
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(digit(digits[i]) * 16 + digit(digits[i + 1])));
    return bytes;
}

inline Bytes countingBytes(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(i % 256);
    return bytes;
}

inline const char* const heartbeatRequest = "AA 5A 01 01 01 00 00 00 00 5E FA";
inline const char* const heartbeatAnswer = "AA 5A 01 01 01 00 00 00 01 7F EA";
inline const char* const getSnRequest = "AA 5A 01 02 01 00 00 00 03 DD 04";
inline const char* const snAnswerA1 = "AA 5A 01 02 04 00 00 00 03 00 41 31 8A EF";
inline const char* const jsonPropertyQuery = "01 17 00 00 00 00 00 00 00 00 00 3A FD FC FB FA 64 00 32 00 7B "
                                             "22 74 69 6D 65 73 74 61 6D 70 22 3A 31 2C "
                                             "22 73 65 71 4E 75 6D 22 3A 31 2C 22 63 6D 64 54 79 70 65 22 3A "
                                             "31 34 35 2C 22 69 6E 66 6F 22 3A 22 22 7D "
                                             "2B 55";

} // namespace linetest
