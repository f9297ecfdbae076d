// The traffic of a line as rows: one for each frame, decoded into words on demand.
#pragma once

#include "service/linerecord.h"
#include "service/recentexchanges.h"

#include <array>
#include <deque>

namespace service {

/// A frame, envelope or upload of the line, or its absence.
struct LineRow {
    enum class Kind : std::uint8_t {
        item,
        nothing, ///< no answer; the item is the request
        gap,     ///< bytes came faster than they were decoded
    };

    Kind kind = Kind::item;
    trace::LineItem::Kind itemKind = trace::LineItem::Kind::frame;
    trace::Side from = trace::Side::tool;
    Judgement::Role role = Judgement::Role::other;
    std::uint8_t uploadCode = 0;
    trace::Time at{0};              ///< of the last byte
    trace::Time took{0};            ///< answer: since its request; nothing: the wait
    trace::Time slack{0};           ///< the last byte may have come this much earlier
    std::size_t size = 0;           ///< bytes
    std::size_t expected = 0;       ///< data: announced size
    std::size_t strayBefore = 0;    ///< frame of the camera: stray bytes in front of it
    LineRecord::Position first = 0; ///< chunk with the first byte
    std::size_t skip = 0;           ///< bytes of the side in front of it, from that chunk on
    LineRecord::Position last = 0;  ///< chunk with the last byte

    [[nodiscard]] bool isOdd() const;
};

/// Follows a record. Rows have numbers that count up from 0; the oldest go when there are too many or their
/// bytes are no longer in the record. One thread; the record outlives it.
class LineRows {
public:
    static constexpr std::size_t usualLimit = 10000;

    explicit LineRows(const LineRecord& record, std::size_t limit = usualLimit)
        : m_record(record), m_limit(limit) {}

    /// Decodes what the record got since the last call. The time is that of the record.
    void update(trace::Time now);
    /// The same at the end of the line: abandons incomplete items.
    void finish(trace::Time now);

    /// Numbers of the oldest row and behind the newest.
    [[nodiscard]] std::uint64_t begin() const { return m_begin; }
    [[nodiscard]] std::uint64_t end() const { return m_begin + m_rows.size(); }
    [[nodiscard]] const LineRow& row(std::uint64_t number) const { return m_rows[number - m_begin]; }
    [[nodiscard]] const RecentExchanges& recent() const { return m_recent; }
    /// The received part of an upload's data; null while there is none.
    [[nodiscard]] const trace::LineItem* dataUnderWay() const { return m_follower.dataUnderWay(); }

private:
    /// Bytes of a side that belong to no row yet.
    struct Open {
        LineRecord::Position first = 0; ///< chunk to count from
        std::size_t skip = 0;
        std::size_t size = 0;
    };

    void take(const LineRecord::Chunk& chunk, protocol::ByteView bytes);
    void addItems(const std::vector<trace::LineItem>& items);
    void addItem(const trace::LineItem& item);
    void addNothing(trace::Time at);
    void addGap();
    void dropOld();
    [[nodiscard]] Open& open(trace::Side side) { return m_open[static_cast<std::size_t>(side)]; }

    const LineRecord& m_record;
    const std::size_t m_limit;
    LineRecord::Position m_next = 0;
    LineRecord::Batch m_batch;
    trace::LineFollower m_follower{trace::LineFollower::DataBytes::counted};
    ExchangeJudge m_judge;
    RecentExchanges m_recent;
    std::array<Open, 2> m_open;
    std::array<LineRecord::Position, 2> m_lastChunk{};
    trace::Time m_lastByte{0};
    trace::Time m_slack{0}; ///< of the chunk being decoded
    trace::Time m_lastAnswerByte{0};
    std::size_t m_strayBefore = 0;
    std::optional<LineRow> m_request; ///< of the exchange under way
    std::deque<LineRow> m_rows;
    std::uint64_t m_begin = 0;
};

/// The row's bytes, at most so many; fewer when they are no longer all in the record.
[[nodiscard]] protocol::Bytes bytesOf(const LineRow& row, const LineRecord& record, std::size_t atMost);
/// One line for people; without its bytes a short one.
[[nodiscard]] std::string wordsOf(const LineRow& row, const LineRecord& record, std::uint8_t pictureOffset,
                                  trace::Phrasebook phrasebook);

} // namespace service
