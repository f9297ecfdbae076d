// The frame of the camera line: building requests and recognising whole answers.
#pragma once

#include "link/protocol/bytes.h"

namespace protocol {

inline constexpr std::uint8_t frameStart1 = 0xAA;
inline constexpr std::uint8_t frameStart2 = 0x5A;

/// [AA][5A][address][command][payload length, u32][payload][check code, u16]; all little-endian.
namespace frame_layout {
inline constexpr Field<std::uint8_t> start1{0};
inline constexpr Field<std::uint8_t> start2{1};
inline constexpr Field<std::uint8_t> address{2};
inline constexpr Field<std::uint8_t> command{3};
inline constexpr Field<std::uint32_t> payloadLength{4};
inline constexpr std::size_t headerSize = 8;
inline constexpr std::size_t checkCodeSize = 2; ///< of a JSON envelope too
static_assert(payloadLength.end() == headerSize);
} // namespace frame_layout

/// Frame size less payload size.
inline constexpr std::size_t frameOverhead = frame_layout::headerSize + frame_layout::checkCodeSize;

/// A shorter buffer is no answer, neither frame nor JSON.
inline constexpr std::size_t leastAnswerSize = 9;

/// Place in the whole frame of a field that is declared by its place in the payload.
template <std::unsigned_integral T>
[[nodiscard]] constexpr Field<T> inFrame(Field<T> payloadField) {
    return {frame_layout::headerSize + payloadField.offset};
}

/// Payload of most answers: the result, then the data.
namespace status_answer {
inline constexpr Field<std::uint8_t> status{0};
inline constexpr std::size_t data = status.end();
} // namespace status_answer

/// Payload of a property or information answer.
namespace property_answer {
inline constexpr Field<std::uint8_t> id{0};
inline constexpr Field<std::uint8_t> result{1};
inline constexpr std::size_t value = result.end();
} // namespace property_answer

/// Result bytes; any value but success is a failure.
namespace answer_result {
inline constexpr std::uint8_t success = 0;
inline constexpr std::uint8_t failure = 1;
} // namespace answer_result

/// Status of the heartbeat answer.
inline constexpr std::uint8_t heartbeatAlive = 1;

/// The client reads answers by their place in the whole frame. An accepted frame has at least ten bytes, so
/// the first two always exist; for a payload of none or one byte they are bytes of the check code.
namespace answer_layout {
inline constexpr Field<std::uint8_t> status = inFrame(status_answer::status);
inline constexpr Field<std::uint8_t> propertyId = inFrame(property_answer::id);
inline constexpr Field<std::uint8_t> propertyResult = inFrame(property_answer::result);
inline constexpr std::size_t propertyValue = propertyResult.end();
} // namespace answer_layout

/// The whole frame: payload size + 10 bytes.
[[nodiscard]] Bytes buildFrame(std::uint8_t command, ByteView payload, std::uint8_t address);

/// Properties that make a buffer an answer: the first two bytes and the size.
struct AnswerForm {
    std::uint8_t start1;
    std::uint8_t start2;
    /// Size of the whole answer as its own length field states it (64 bits: no stated length can wrap).
    std::uint64_t (*statedSize)(ByteView answer);
};

/// Binary frame: payload length + 10.
extern const AnswerForm frameForm;

/// True when the first two bytes are those of the form. A missing second byte counts as right.
[[nodiscard]] bool startsAs(ByteView bytes, const AnswerForm& form);

/// Number of leading bytes that cannot begin an answer. A single byte is always kept, whatever it is.
[[nodiscard]] std::size_t leadingGarbage(ByteView buffer, const AnswerForm& form);

/// True when the buffer holds exactly one answer. The check code and the address are never examined:
/// cameras in the field answer with either of them wrong.
[[nodiscard]] bool isWholeAnswer(ByteView buffer, const AnswerForm& form);

/// Check code of a frame or JSON envelope of this size, which is at least two bytes.
[[nodiscard]] constexpr Field<std::uint16_t> checkCodeOf(std::size_t size) {
    return {size - frame_layout::checkCodeSize};
}

/// All bytes of a frame or JSON envelope but the check code; none of fewer than two bytes.
[[nodiscard]] ByteView withoutCheckCode(ByteView bytes);

/// Payload of a frame; empty when the frame ends before it.
[[nodiscard]] ByteView payloadOf(ByteView frame);

/// Value bytes of a property answer: payload bytes 2 onward, none for a payload of two bytes or fewer.
[[nodiscard]] ByteView propertyValue(ByteView answer);

/// The heartbeat answer as text: every byte but the address and the check code, in upper-case hexadecimal
/// without leading zeros ("AA5A110001" for the good answer).
[[nodiscard]] std::string heartbeatText(ByteView answer);

/// The bytes that heartbeatText converts, in order.
[[nodiscard]] Bytes heartbeatBytes(ByteView answer);

/// True only for AA 5A, any address, command 01, length 1, payload 01, any check code.
[[nodiscard]] bool isHeartbeatAnswer(ByteView answer);

/// Bytes in upper-case hexadecimal, no separators, no zero padding (0x0A is "A").
[[nodiscard]] std::string unpaddedHexText(ByteView bytes);

/// Bytes as two lower-case hexadecimal digits each, no separators.
[[nodiscard]] std::string paddedHexText(ByteView bytes);

} // namespace protocol
