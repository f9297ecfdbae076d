// The envelope that carries JSON text to cameras of type 3, and what is read out of their answers.
#pragma once

#include "link/protocol/frame.h"

#include <optional>

namespace protocol {

/// Binary envelope: [01][17][8 zero bytes][L + 8, big-endian u16][FD FC FB FA][64 00][L, u16][JSON text]
/// [CRC-16/MODBUS, u16]. L is the length of the text in bytes.
[[nodiscard]] Bytes buildJsonRequest(std::string_view json);

/// JSON answer: big-endian count at bytes 2-3, plus 6.
extern const AnswerForm jsonForm;

/// Body of an accepted answer: bytes 12 up to the check code; empty when the answer ends before that.
[[nodiscard]] ByteView jsonBody(ByteView answer);

/// Picture data of a body: what follows the marker "<<BINARY>>"; empty without the marker.
[[nodiscard]] ByteView jsonPictureData(ByteView body);

/// The integer after "size": by the rules of std::stoi; nothing when it is missing or malformed.
[[nodiscard]] std::optional<int> jsonPictureSize(ByteView body);

/// The property query.
[[nodiscard]] std::string_view jsonPropertyQuery();

/// The request for one piece of the picture; offset and length in bytes.
[[nodiscard]] std::string jsonChunkRequest(std::int64_t offset, std::int64_t length);

/// Piece sizes: the first is always 500 bytes, the later ones at most 6500. The camera counts on both.
inline constexpr std::int64_t jsonFirstChunk = 500;
inline constexpr std::int64_t jsonLaterChunk = 6500;

} // namespace protocol
