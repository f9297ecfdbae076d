#include "trace/linefollower.h"

#include "link/protocol/commands.h"
#include "link/protocol/jsonenvelope.h"
#include "link/protocol/uploads.h"

namespace trace {

namespace {

LineItem::Kind kindOf(FrameScanner::Item::Kind kind) {
    switch (kind) {
    case FrameScanner::Item::Kind::frame:
        return LineItem::Kind::frame;
    case FrameScanner::Item::Kind::badFrame:
        return LineItem::Kind::badFrame;
    case FrameScanner::Item::Kind::json:
        return LineItem::Kind::json;
    case FrameScanner::Item::Kind::badJson:
        return LineItem::Kind::badJson;
    case FrameScanner::Item::Kind::garbage:
        break;
    }
    return LineItem::Kind::stray;
}

/// True for both start bytes of a frame or envelope.
bool startsItem(ByteView bytes) {
    return bytes.has(protocol::frame_layout::start2) &&
           (startsAs(bytes, protocol::frameForm) || startsAs(bytes, protocol::jsonForm));
}

bool isWholeRequest(ByteView bytes) {
    FrameScanner scanner;
    scanner.add(bytes);
    const auto item = scanner.next();
    return item &&
           (item->kind == FrameScanner::Item::Kind::frame || item->kind == FrameScanner::Item::Kind::json);
}

} // namespace

std::vector<LineItem> LineFollower::receive(Side from, ByteView bytes, Time now, Time slack) {
    Items items;
    Direction& own = direction(from);
    const bool silence = now - slack - own.lastByteAt > FrameScanner::longestSilence;
    if (!own.scanner.empty() && (silence || (own.otherSpoke && startsItem(bytes))))
        breakOff(from, items);
    if (from == Side::tool && m_data) {
        const bool givenUp = (m_data->dataSize == 0 || silence) && isWholeRequest(bytes);
        if (givenUp)
            finishData(items);
        else
            bytes = takeData(bytes, now, items);
    }
    own.lastByteAt = now;
    own.otherSpoke = false;
    direction(from == Side::tool ? Side::camera : Side::tool).otherSpoke = true;
    if (!bytes.empty()) {
        own.scanner.add(bytes);
        scan(from, items);
    }
    return items;
}

std::vector<LineItem> LineFollower::passTime(Time now) {
    Items items;
    for (const Side side : {Side::tool, Side::camera}) {
        const Direction& one = direction(side);
        if (!one.scanner.empty() && now - one.lastByteAt > FrameScanner::longestSilence)
            breakOff(side, items);
    }
    return items;
}

std::vector<LineItem> LineFollower::finish() {
    Items items;
    breakOff(Side::tool, items);
    breakOff(Side::camera, items);
    finishData(items);
    return items;
}

void LineFollower::scan(Side from, Items& items) {
    Direction& own = direction(from);
    while (auto found = own.scanner.next()) {
        LineItem item;
        item.from = from;
        item.kind = kindOf(found->kind);
        item.bytes = std::move(found->bytes);
        item.lastAt = own.lastByteAt;
        const bool frame =
            item.kind == LineItem::Kind::frame ||
            (item.kind == LineItem::Kind::badFrame && item.bytes.size() > protocol::frameOverhead);
        if (frame && from == Side::tool)
            noteAnnouncement(item);
        else if (frame)
            answerAnnouncement(item);
        items.push_back(std::move(item));
    }
}

void LineFollower::breakOff(Side from, Items& items) {
    Direction& own = direction(from);
    if (own.scanner.empty())
        return;
    LineItem item;
    item.from = from;
    item.kind = LineItem::Kind::brokenOff;
    item.bytes = own.scanner.takeRest();
    item.lastAt = own.lastByteAt;
    items.push_back(std::move(item));
}

void LineFollower::finishData(Items& items) {
    if (!m_data)
        return;
    m_uploaded = m_data->uploadCode;
    items.push_back(std::move(*m_data));
    m_data.reset();
}

/// Returns the bytes behind the data.
ByteView LineFollower::takeData(ByteView bytes, Time now, Items& items) {
    const ByteView taken = bytes.range(0, m_data->expected - m_data->dataSize);
    if (m_dataBytes == DataBytes::kept)
        protocol::append(m_data->bytes, taken);
    m_data->dataSize += taken.size();
    m_data->lastAt = now;
    if (m_data->dataSize == m_data->expected)
        finishData(items);
    return bytes.range(taken.size(), bytes.size());
}

void LineFollower::noteAnnouncement(const LineItem& frame) {
    using namespace protocol;
    const ByteView view(frame.bytes);
    const std::uint8_t code = view.get(frame_layout::command);
    const auto command = static_cast<Command>(code);
    m_announced.reset();
    m_uploaded.reset();
    const auto field = inFrame(isNamed(command) ? named_announcement::fileSize : announcement::fileSize);
    if (announcesRawData(command) && frame.kind == LineItem::Kind::frame && view.has(field))
        m_announced = Announcement{code, view.get(field)};
}

/// Expects raw data from the answer's resume offset on, unless the camera refuses.
void LineFollower::answerAnnouncement(LineItem& frame) {
    using namespace protocol;
    const ByteView view(frame.bytes);
    const std::uint8_t code = view.get(frame_layout::command);
    if (!m_announced || code != m_announced->code) {
        if (m_uploaded == code)
            frame.uploadCode = code;
        return;
    }
    const Announcement announced = *std::exchange(m_announced, std::nullopt);
    const bool named = isNamed(static_cast<Command>(code));
    const auto offsetField = inFrame(named ? named_answer::offset : image_answer::offset);
    const bool refused = named && view.has(inFrame(named_answer::result)) &&
                         (view.get(inFrame(named_answer::type)) != named_answer::announcementType ||
                          view.get(inFrame(named_answer::result)) != answer_result::success);
    if (!view.has(offsetField) || refused)
        return;
    m_uploaded = code;
    const std::uint32_t offset = view.get(offsetField);
    if (offset >= announced.fileSize)
        return;
    LineItem data;
    data.kind = LineItem::Kind::data;
    data.lastAt = frame.lastAt;
    data.expected = announced.fileSize - offset;
    data.uploadCode = code;
    m_data = std::move(data);
}

} // namespace trace
