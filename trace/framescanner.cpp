#include "trace/framescanner.h"

#include "link/protocol/crc16.h"
#include "link/protocol/frame.h"
#include "link/protocol/jsonenvelope.h"

#include <algorithm>

namespace trace {

namespace {

using protocol::startsAs;

std::size_t garbageCount(ByteView bytes) {
    std::size_t count = 0;
    while (count < bytes.size()) {
        const ByteView rest = bytes.range(count, bytes.size());
        if (startsAs(rest, protocol::frameForm) || startsAs(rest, protocol::jsonForm))
            break;
        ++count;
    }
    return count;
}

/// The eight bytes after the start are zero in every request; some may not have come yet.
bool jsonHeaderPossible(ByteView bytes) {
    const ByteView zeros =
        bytes.range(protocol::json_request::zeros.offset, protocol::json_request::zeros.end());
    return std::all_of(zeros.begin(), zeros.end(), [](std::uint8_t byte) { return byte == 0; });
}

bool checkCodeRight(ByteView whole, std::uint16_t (*crc)(ByteView)) {
    return whole.get(protocol::checkCodeOf(whole.size())) == crc(protocol::withoutCheckCode(whole));
}

bool jsonRequestRight(ByteView request) {
    constexpr protocol::JsonHead head = protocol::json_request::head;
    return protocol::swapped(request.get(head.bigEndianCount)) ==
               request.get(head.bodyLength) + protocol::json_layout::countExtra &&
           request.get(head.magic) == protocol::json_layout::magic &&
           request.get(head.kind) == protocol::json_layout::kind &&
           checkCodeRight(request, &protocol::crc16Modbus);
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
    if (startsAs(m_buffer, protocol::frameForm))
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
    const bool right = checkCodeRight(bytes.range(0, size), &protocol::crc16Xmodem);
    return take(right ? Item::Kind::frame : Item::Kind::badFrame, size);
}

std::optional<FrameScanner::Item> FrameScanner::jsonAtStart() {
    const ByteView bytes(m_buffer);
    if (!jsonHeaderPossible(bytes))
        return take(Item::Kind::garbage, 1);
    constexpr protocol::JsonHead head = protocol::json_request::head;
    if (!bytes.has(head.bodyLength))
        return std::nullopt;
    const std::size_t size = head.body + bytes.get(head.bodyLength) + protocol::frame_layout::checkCodeSize;
    if (bytes.size() < size)
        return std::nullopt;
    const bool right = jsonRequestRight(bytes.range(0, size));
    return take(right ? Item::Kind::json : Item::Kind::badJson, size);
}

std::optional<FrameScanner::Item> FrameScanner::jsonAnswerAtStart() {
    const ByteView bytes(m_buffer);
    if (!bytes.has(protocol::json_answer::head.bigEndianCount))
        return std::nullopt;
    const auto size = static_cast<std::size_t>(protocol::jsonForm.statedSize(bytes));
    if (bytes.size() < size)
        return std::nullopt;
    const bool right = checkCodeRight(bytes.range(0, size), &protocol::crc16Modbus);
    return take(right ? Item::Kind::json : Item::Kind::badJson, size);
}

} // namespace trace
