#include "service/linerows.h"

#include <algorithm>

namespace service {

using trace::LineItem;
using trace::Side;
using Role = Judgement::Role;

bool LineRow::isOdd() const {
    const bool oddRole =
        role == Role::late || role == Role::foreign || role == Role::broken || role == Role::stray;
    const bool cutData = itemKind == LineItem::Kind::data && size != expected;
    return kind != Kind::item || oddRole || cutData || strayBefore > 0;
}

void LineRows::update(trace::Time now) {
    for (;;) {
        m_record.read(m_next, m_batch);
        if (m_batch.lost)
            addGap();
        if (m_batch.chunks.empty())
            break;
        for (const LineRecord::Chunk& chunk : m_batch.chunks)
            take(chunk, m_batch.bytesOf(chunk));
        m_next = m_batch.next;
    }
    addItems(m_follower.passTime(now));
    if (m_judge.givesUp(m_lastByte, now)) {
        m_recent.addUnanswered();
        addNothing(now);
    }
    dropOld();
}

void LineRows::finish(trace::Time now) {
    update(now);
    addItems(m_follower.finish());
    if (m_judge.finish()) {
        m_recent.addUnanswered();
        addNothing(now);
    }
    dropOld();
}

void LineRows::take(const LineRecord::Chunk& chunk, protocol::ByteView bytes) {
    Open& mine = open(chunk.from);
    if (mine.size == 0)
        mine = {chunk.position, 0, 0};
    mine.size += bytes.size();
    m_lastChunk[static_cast<std::size_t>(chunk.from)] = chunk.position;
    m_lastByte = chunk.at;
    m_slack = chunk.slack;
    if (chunk.from == Side::camera)
        m_lastAnswerByte = chunk.at;
    addItems(m_follower.receive(chunk.from, bytes, chunk.at, chunk.slack));
    // Counted from its last chunk, a rest is found while that is in the record.
    if (mine.size > 0 && mine.size <= bytes.size())
        mine = {chunk.position, bytes.size() - mine.size, mine.size};
}

void LineRows::addItems(const std::vector<LineItem>& items) {
    for (const LineItem& item : items)
        addItem(item);
}

void LineRows::addItem(const LineItem& item) {
    const bool heard = m_lastAnswerByte > m_judge.sentAt();
    const Judgement judgement = m_judge.judge(item);
    const std::size_t size = item.kind == LineItem::Kind::data ? item.dataSize : item.bytes.size();
    m_recent.add(judgement, size);
    // After the first bytes of an answer its rest is missing, which is a row of its own.
    if (judgement.endsUnanswered && !heard)
        addNothing(item.lastAt);

    Open& from = open(item.from);
    LineRow row;
    row.itemKind = item.kind;
    row.from = item.from;
    row.role = judgement.role;
    row.uploadCode = item.uploadCode;
    row.at = item.lastAt;
    row.took = judgement.took;
    row.slack = m_slack;
    row.size = size;
    row.expected = item.expected;
    row.first = from.first;
    row.skip = from.skip;
    row.last = m_lastChunk[static_cast<std::size_t>(item.from)];
    from.skip += size;
    from.size -= std::min(from.size, size);

    const bool stray = item.from == Side::camera && row.role == Role::stray;
    if (item.from == Side::camera && !stray)
        row.strayBefore = m_strayBefore;
    m_strayBefore = stray ? m_strayBefore + size : 0;
    m_rows.push_back(row);
    if (row.role == Role::request)
        m_request = row;
}

/// A row behind the request.
void LineRows::addNothing(trace::Time at) {
    if (!m_request)
        return;
    LineRow row = *m_request;
    row.kind = LineRow::Kind::nothing;
    row.from = Side::camera;
    row.role = Role::other;
    row.took = at - row.at;
    row.at = at;
    m_rows.push_back(row);
}

void LineRows::addGap() {
    m_follower = trace::LineFollower(trace::LineFollower::DataBytes::counted);
    m_judge = ExchangeJudge();
    m_open = {};
    m_request.reset();
    LineRow row;
    row.kind = LineRow::Kind::gap;
    row.at = m_lastByte;
    row.first = row.last = m_record.begin();
    m_rows.push_back(row);
}

void LineRows::dropOld() {
    const LineRecord::Position oldest = m_record.begin();
    while (!m_rows.empty() && (m_rows.size() > m_limit || m_rows.front().last < oldest)) {
        m_rows.pop_front();
        ++m_begin;
    }
}

protocol::Bytes bytesOf(const LineRow& row, const LineRecord& record, std::size_t atMost) {
    const Side from = row.kind == LineRow::Kind::nothing ? Side::tool : row.from;
    protocol::Bytes bytes;
    std::size_t skip = row.skip;
    const std::size_t wanted = std::min(row.size, atMost);
    LineRecord::Batch batch;
    for (LineRecord::Position at = row.first; bytes.size() < wanted; at = batch.next) {
        record.read(at, batch);
        if (batch.lost || batch.chunks.empty())
            break;
        for (const LineRecord::Chunk& chunk : batch.chunks) {
            if (chunk.from != from)
                continue;
            const protocol::ByteView all = batch.bytesOf(chunk);
            const protocol::ByteView rest = all.range(std::min(skip, all.size()), all.size());
            skip -= std::min(skip, all.size());
            protocol::append(bytes, rest.range(0, wanted - bytes.size()));
        }
    }
    return bytes;
}

std::string wordsOf(const LineRow& row, const LineRecord& record, std::uint8_t pictureOffset,
                    trace::Phrasebook phrasebook) {
    LineItem item;
    item.from = row.kind == LineRow::Kind::nothing ? Side::tool : row.from;
    item.kind = row.itemKind;
    item.expected = row.expected;
    item.uploadCode = row.uploadCode;
    item.dataSize = row.size;
    if (row.kind == LineRow::Kind::gap)
        return std::string(phrasebook("bytes that came faster than they were decoded"));
    if (row.itemKind != LineItem::Kind::data) {
        item.bytes = bytesOf(row, record, row.size);
        if (item.bytes.size() < row.size)
            return std::string(phrasebook("no longer in memory"));
    }
    const std::string words = trace::wordsOf(item, pictureOffset, phrasebook);
    return row.kind == LineRow::Kind::nothing ? std::string(phrasebook("no answer to: ")) + words : words;
}

} // namespace service
