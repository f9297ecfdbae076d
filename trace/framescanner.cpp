#include "trace/framescanner.h"

#include "link/protocol/crc16.h"
#include "link/protocol/frame.h"
#include "link/protocol/jsonenvelope.h"
#include "trace/jsonlayout.h"

namespace trace {

namespace {

using protocol::Field;

bool startsJson(ByteView bytes) {
    return bytes.get(Field<std::uint8_t>{0}) == json_layout::start1 &&
           (bytes.size() < 2 || bytes.get(Field<std::uint8_t>{1}) == json_layout::start2);
}

bool startsFrame(ByteView bytes) {
    return bytes.get(protocol::frame_layout::start1) == protocol::frameStart1 &&
           (bytes.size() < 2 || bytes.get(protocol::frame_layout::start2) == protocol::frameStart2);
}

std::size_t garbageCount(ByteView bytes) {
    std::size_t count = 0;
    while (count < bytes.size()) {
        const ByteView rest = bytes.range(count, bytes.size());
        if (startsFrame(rest) || startsJson(rest))
            break;
        ++count;
    }
    return count;
}

/// The eight bytes after the start are zero in every request; fewer may have come yet.
bool jsonHeaderPossible(ByteView bytes) {
    for (std::size_t i = json_layout::zerosFrom; i < json_layout::zerosTo && i < bytes.size(); ++i) {
        if (bytes.get(Field<std::uint8_t>{i}) != 0)
            return false;
    }
    return true;
}

bool jsonEnvelopeRight(ByteView envelope, std::uint16_t textLength) {
    const std::uint16_t counted = json_layout::swapped(envelope.get(json_layout::requestCount));
    const ByteView covered = envelope.range(0, envelope.size() - 2);
    return counted == textLength + json_layout::countExtra &&
           envelope.get(json_layout::requestMagic) == json_layout::magic &&
           envelope.get(json_layout::requestKind) == json_layout::kind &&
           envelope.get(Field<std::uint16_t>{covered.size()}) == protocol::crc16Modbus(covered);
}

} // namespace

FrameScanner::Item FrameScanner::take(Item::Kind kind, std::size_t count) {
    const auto end = m_buffer.begin() + static_cast<std::ptrdiff_t>(count);
    Item item{kind, Bytes(m_buffer.begin(), end)};
    m_buffer.erase(m_buffer.begin(), end);
    return item;
}

std::optional<FrameScanner::Item> FrameScanner::next() {
    if (m_buffer.empty())
        return std::nullopt;
    if (const std::size_t garbage = garbageCount(m_buffer); garbage > 0)
        return take(Item::Kind::garbage, garbage);
    if (startsFrame(m_buffer))
        return frameAtStart();
    return m_side == Side::tool ? jsonAtStart() : jsonAnswerAtStart();
}

std::optional<FrameScanner::Item> FrameScanner::frameAtStart() {
    const ByteView bytes(m_buffer);
    if (!bytes.has(protocol::frame_layout::payloadLength))
        return std::nullopt;
    const std::uint32_t payloadLength = bytes.get(protocol::frame_layout::payloadLength);
    if (payloadLength > (m_side == Side::tool ? longestPayload : longestAnswerPayload))
        return take(Item::Kind::badFrame, protocol::frame_layout::headerSize);
    const std::size_t size = payloadLength + protocol::frameOverhead;
    if (bytes.size() < size)
        return std::nullopt;
    const std::size_t covered = size - protocol::frame_layout::checkCodeSize;
    if (bytes.get(Field<std::uint16_t>{covered}) == protocol::crc16Xmodem(bytes.range(0, covered)))
        return take(Item::Kind::frame, size);
    return take(Item::Kind::badFrame, size);
}

std::optional<FrameScanner::Item> FrameScanner::jsonAtStart() {
    const ByteView bytes(m_buffer);
    if (!jsonHeaderPossible(bytes))
        return take(Item::Kind::garbage, 1);
    if (!bytes.has(json_layout::requestTextLength))
        return std::nullopt;
    const std::uint16_t textLength = bytes.get(json_layout::requestTextLength);
    const std::size_t size = json_layout::requestText + textLength + 2;
    if (bytes.size() < size)
        return std::nullopt;
    const bool right = jsonEnvelopeRight(bytes.range(0, size), textLength);
    return take(right ? Item::Kind::json : Item::Kind::badJson, size);
}

std::optional<FrameScanner::Item> FrameScanner::jsonAnswerAtStart() {
    const ByteView bytes(m_buffer);
    if (!bytes.has(json_layout::answerCount))
        return std::nullopt;
    const auto size = static_cast<std::size_t>(protocol::jsonForm.statedSize(bytes));
    if (bytes.size() < size)
        return std::nullopt;
    const std::size_t covered = size - protocol::frame_layout::checkCodeSize;
    const bool right =
        bytes.get(Field<std::uint16_t>{covered}) == protocol::crc16Modbus(bytes.range(0, covered));
    return take(right ? Item::Kind::json : Item::Kind::badJson, size);
}

} // namespace trace
