// Counts of a line's exchanges.
#pragma once

#include "service/sideobserver.h"
#include "trace/framewords.h"

namespace service {

/// Counts of exchanges. The acceptance of answers does not depend on them.
struct LineCounts {
    int requests = 0;
    int answers = 0;                      ///< whole answers to the last request
    int unanswered = 0;                   ///< requests that had no whole answer before the next one
    int late = 0;                         ///< whole answers to an earlier request
    int broken = 0;                       ///< wrong check code, impossible length, or broken off
    std::size_t strayBytes = 0;           ///< outside any answer
    std::chrono::milliseconds slowest{0}; ///< answer

    [[nodiscard]] bool isOdd() const { return late > 0 || broken > 0 || strayBytes > 0; }
};

/// Decodes what passes. Any thread.
class LineQuality final : public SideObserver {
public:
    explicit LineQuality(std::uint8_t pictureOffset = 0) : m_pictureOffset(pictureOffset) {}

    /// The counts; counts incomplete answers as broken.
    [[nodiscard]] LineCounts finish();

private:
    struct Pending {
        std::uint16_t lineCode;
        trace::Time at;
    };

    void pass(trace::Side from, protocol::ByteView bytes, trace::Time at) override;
    void count(const trace::LineItem& item);
    void countRequest(const trace::LineItem& item);
    void countAnswer(const trace::LineItem& item);
    void countStray(const trace::LineItem& item);

    trace::LineFollower m_follower;
    std::optional<Pending> m_pending;
    LineCounts m_counts;
    const std::uint8_t m_pictureOffset;
};

} // namespace service
