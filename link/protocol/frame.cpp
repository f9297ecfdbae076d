#include "link/protocol/frame.h"

#include "link/protocol/commands.h"
#include "link/protocol/crc16.h"

namespace protocol {

namespace {

std::uint64_t statedFrameSize(ByteView answer) {
    return std::uint64_t{answer.get(frame_layout::payloadLength)} + frameOverhead;
}

void appendHex(std::string& text, std::uint8_t byte, std::string_view digits, bool padded) {
    if (padded || byte > 0x0F)
        text += digits[byte >> 4];
    text += digits[byte & 0x0FU];
}

} // namespace

const AnswerForm frameForm{frameStart1, frameStart2, &statedFrameSize};

Bytes buildFrame(std::uint8_t command, ByteView payload, std::uint8_t address) {
    Bytes frame;
    frame.reserve(payload.size() + frameOverhead);
    put(frame, frame_layout::start1, frameStart1);
    put(frame, frame_layout::start2, frameStart2);
    put(frame, frame_layout::address, address);
    put(frame, frame_layout::command, command);
    put(frame, frame_layout::payloadLength, static_cast<std::uint32_t>(payload.size()));
    append(frame, payload);
    put(frame, Field<std::uint16_t>{frame.size()}, crc16Xmodem(frame));
    return frame;
}

bool startsAs(ByteView bytes, const AnswerForm& form) {
    return bytes.has(frame_layout::start1) && bytes.get(frame_layout::start1) == form.start1 &&
           (!bytes.has(frame_layout::start2) || bytes.get(frame_layout::start2) == form.start2);
}

std::size_t leadingGarbage(ByteView buffer, const AnswerForm& form) {
    std::size_t dropped = 0;
    const std::uint8_t* const bytes = buffer.begin();
    while (buffer.size() - dropped > 1 &&
           (bytes[dropped] != form.start1 || bytes[dropped + 1] != form.start2))
        ++dropped;
    return dropped;
}

bool isWholeAnswer(ByteView buffer, const AnswerForm& form) {
    return buffer.size() >= leastAnswerSize && startsAs(buffer, form) &&
           form.statedSize(buffer) == buffer.size();
}

ByteView withoutCheckCode(ByteView bytes) {
    return bytes.range(0, bytes.size() - std::min(bytes.size(), frame_layout::checkCodeSize));
}

ByteView payloadOf(ByteView frame) {
    const ByteView fields = withoutCheckCode(frame);
    return fields.range(frame_layout::headerSize, fields.size());
}

ByteView propertyValue(ByteView answer) {
    const ByteView payload = payloadOf(answer);
    return payload.range(property_answer::value, payload.size());
}

Bytes heartbeatBytes(ByteView answer) {
    Bytes kept;
    for (std::size_t i = 0; i + frame_layout::checkCodeSize < answer.size(); ++i) {
        if (i != frame_layout::address.offset)
            kept.push_back(answer.begin()[i]);
    }
    return kept;
}

std::string heartbeatText(ByteView answer) {
    return unpaddedHexText(heartbeatBytes(answer));
}

bool isHeartbeatAnswer(ByteView answer) {
    // Different bytes can give the same text, which has no leading zeros; therefore the fields are checked
    // too.
    return heartbeatText(answer) == "AA5A110001" && answer.size() == frameOverhead + 1 &&
           startsAs(answer, frameForm) && answer.get(frame_layout::command) == code(Command::heartbeat) &&
           answer.get(answer_layout::status) == heartbeatAlive &&
           answer.get(frame_layout::payloadLength) == 1;
}

std::string unpaddedHexText(ByteView bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes)
        appendHex(text, byte, "0123456789ABCDEF", false);
    return text;
}

std::string paddedHexText(ByteView bytes) {
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes)
        appendHex(text, byte, "0123456789abcdef", true);
    return text;
}

} // namespace protocol
