#include "service/linequality.h"

#include "link/protocol/commands.h"

namespace service {

using trace::LineItem;

namespace {

/// No answer is read to it.
bool isUnanswered(std::uint16_t code) {
    return code == protocol::code(protocol::Command::door);
}

} // namespace

LineCounts LineQuality::finish() {
    const std::lock_guard lock(m_mutex);
    for (const LineItem& item : m_follower.finish())
        count(item);
    if (m_pending && !isUnanswered(m_pending->lineCode))
        ++m_counts.unanswered;
    m_pending.reset();
    return m_counts;
}

void LineQuality::pass(trace::Side from, protocol::ByteView bytes, trace::Time at) {
    for (const LineItem& item : m_follower.receive(from, bytes, at))
        count(item);
}

void LineQuality::count(const LineItem& item) {
    if (item.from == trace::Side::tool) {
        if (item.kind == LineItem::Kind::frame || item.kind == LineItem::Kind::json)
            countRequest(item);
        return;
    }
    switch (item.kind) {
    case LineItem::Kind::frame:
    case LineItem::Kind::json:
        countAnswer(item);
        break;
    case LineItem::Kind::badFrame:
    case LineItem::Kind::badJson:
    case LineItem::Kind::brokenOff:
        ++m_counts.broken;
        m_pending.reset();
        break;
    case LineItem::Kind::stray:
        countStray(item);
        break;
    case LineItem::Kind::data:
        break;
    }
}

void LineQuality::countRequest(const LineItem& item) {
    if (m_pending && !isUnanswered(m_pending->lineCode))
        ++m_counts.unanswered;
    ++m_counts.requests;
    m_pending = Pending{trace::requestKeyOf(item, m_pictureOffset).lineCode, item.lastAt};
}

void LineQuality::countAnswer(const LineItem& item) {
    const bool fits = m_pending && trace::requestKeyOf(item, m_pictureOffset).lineCode == m_pending->lineCode;
    if (!fits) {
        ++m_counts.late;
        return;
    }
    ++m_counts.answers;
    m_counts.slowest = std::max(
        m_counts.slowest, std::chrono::duration_cast<std::chrono::milliseconds>(item.lastAt - m_pending->at));
    m_pending.reset();
}

/// The gyro test is answered without a frame.
void LineQuality::countStray(const LineItem& item) {
    if (m_pending && m_pending->lineCode == protocol::code(protocol::Command::gyroTest)) {
        ++m_counts.answers;
        m_pending.reset();
        return;
    }
    m_counts.strayBytes += item.bytes.size();
}

} // namespace service
