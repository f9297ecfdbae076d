// The envelope that carries JSON text to cameras of type 3, and the parsing of their answers.
#pragma once

#include "link/protocol/frame.h"

#include <optional>

namespace protocol {

namespace json_layout {
inline constexpr std::uint8_t start1 = 0x01;
inline constexpr std::uint8_t start2 = 0x17;
inline constexpr std::uint32_t magic = 0xFAFBFCFD;
inline constexpr std::uint16_t kind = 0x0064;
inline constexpr std::uint16_t countExtra = 8; ///< count = body length + this
} // namespace json_layout

/// Fields in front of the body, the same in both directions.
struct JsonHead {
    Field<std::uint16_t> bigEndianCount;
    Field<std::uint32_t> magic;
    Field<std::uint16_t> kind;
    Field<std::uint16_t> bodyLength;
    std::size_t body;
};
[[nodiscard]] constexpr JsonHead jsonHeadAt(std::size_t offset) {
    return {{offset}, {offset + 2}, {offset + 6}, {offset + 8}, offset + 10};
}

/// Request: [01][17][8 zero bytes][L + 8, big-endian u16][FD FC FB FA][64 00][L, u16][JSON text]
/// [CRC-16/MODBUS, u16]. L is the length of the text in bytes.
namespace json_request {
inline constexpr Field<std::uint64_t> zeros{2};
inline constexpr JsonHead head = jsonHeadAt(zeros.end());
static_assert(head.bigEndianCount.offset == 10 && head.body == 20);
} // namespace json_request

/// Answer: [01][17][L + 8, big-endian u16][FD FC FB FA][64 00][L, u16][body][CRC-16/MODBUS, u16]. L is the
/// length of the body in bytes: JSON text, and in a picture answer the marker and data behind it.
namespace json_answer {
inline constexpr JsonHead head = jsonHeadAt(2);
/// Bytes of the envelope that the count leaves out: those up to the count, and the check code.
inline constexpr std::size_t uncounted = head.bigEndianCount.end() + frame_layout::checkCodeSize;
static_assert(head.body == 12 && uncounted == 6);
} // namespace json_answer

/// The count of an envelope is the only big-endian number of the line.
[[nodiscard]] constexpr std::uint16_t swapped(std::uint16_t value) {
    return static_cast<std::uint16_t>((value << 8) | (value >> 8));
}

[[nodiscard]] Bytes buildJsonRequest(std::string_view json);
[[nodiscard]] Bytes buildJsonAnswer(ByteView body);

/// JSON answer: big-endian count at bytes 2-3, plus 6.
extern const AnswerForm jsonForm;

/// Text of a request: bytes 20 up to the check code; empty when the request ends before that.
[[nodiscard]] ByteView jsonText(ByteView request);

/// Body of an accepted answer: bytes 12 up to the check code; empty when the answer ends before that.
[[nodiscard]] ByteView jsonBody(ByteView answer);

/// In the body of a picture answer: the data begin after the marker, the picture's size after the key.
inline constexpr std::string_view jsonPictureMarker = "<<BINARY>>";
inline constexpr std::string_view jsonSizeKey = "\"size\":";

/// Picture data of a body: the bytes after the marker; empty without the marker.
[[nodiscard]] ByteView jsonPictureData(ByteView body);

/// The integer after "size": by the rules of std::stoi; nothing when it is missing or malformed.
[[nodiscard]] std::optional<int> jsonPictureSize(ByteView body);

/// Values of "cmdType" in requests.
inline constexpr std::uint16_t jsonPropertyType = 145;
inline constexpr std::uint16_t jsonPictureType = 156;

/// The property query.
[[nodiscard]] std::string jsonPropertyQuery();

/// The request for one piece of the picture; offset and length in bytes.
[[nodiscard]] std::string jsonChunkRequest(std::int64_t offset, std::int64_t length);

/// Piece sizes: the first is always 500 bytes, the later ones at most 6500. The camera relies on both.
inline constexpr std::int64_t jsonFirstChunk = 500;
inline constexpr std::int64_t jsonLaterChunk = 6500;

} // namespace protocol
