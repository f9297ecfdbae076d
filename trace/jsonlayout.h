// The JSON envelope as the camera reads and writes it.
#pragma once

#include "link/protocol/bytes.h"

namespace trace::json_layout {

using protocol::Field;

inline constexpr std::uint8_t start1 = 0x01;
inline constexpr std::uint8_t start2 = 0x17;
inline constexpr std::uint32_t magic = 0xFAFBFCFD;
inline constexpr std::uint16_t kind = 0x0064;
inline constexpr std::uint16_t countExtra = 8; ///< the big-endian counts cover these bytes beside the body

// Request: start, eight zero bytes, count, magic, kind, length, text, check code.
inline constexpr std::size_t zerosFrom = 2;
inline constexpr std::size_t zerosTo = 10;
inline constexpr Field<std::uint16_t> requestCount{10};
inline constexpr Field<std::uint32_t> requestMagic{12};
inline constexpr Field<std::uint16_t> requestKind{16};
inline constexpr Field<std::uint16_t> requestTextLength{18};
inline constexpr std::size_t requestText = requestTextLength.end();

// Answer: start, count, magic, kind, length, body, check code.
inline constexpr Field<std::uint8_t> answerStart1{0};
inline constexpr Field<std::uint8_t> answerStart2{1};
inline constexpr Field<std::uint16_t> answerCount{2};
inline constexpr Field<std::uint32_t> answerMagic{4};
inline constexpr Field<std::uint16_t> answerKind{8};
inline constexpr Field<std::uint16_t> answerBodyLength{10};
static_assert(requestText == 20 && answerBodyLength.end() == 12);

/// The envelope's count is the one big-endian number of the line.
[[nodiscard]] constexpr std::uint16_t swapped(std::uint16_t value) {
    return static_cast<std::uint16_t>((value << 8) | (value >> 8));
}

} // namespace trace::json_layout
