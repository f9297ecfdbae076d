// Tells answers from late, foreign and broken ones.
#pragma once

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
    LineCounts& operator+=(const LineCounts& other);
    bool operator==(const LineCounts&) const = default;
};

/// Role of one item of the line in the present exchange.
struct Judgement {
    enum class Role : std::uint8_t {
        request, ///< begins an exchange
        answer,  ///< whole, to the last request
        late,    ///< whole, to an earlier request
        foreign, ///< whole, to no request
        broken,  ///< wrong check code, impossible length, or broken off
        stray,   ///< outside any frame
        other,   ///< of the tool, no request
    };
    Role role = Role::other;
    bool endsUnanswered = false; ///< the exchange before had no whole answer
    trace::Time took{0};         ///< answer: from the sending of its request

    [[nodiscard]] LineCounts counts(std::size_t strayBytes) const;
};

/// Judges the items of a line in their order. No clock: the caller gives the time.
class ExchangeJudge {
public:
    [[nodiscard]] Judgement judge(const trace::LineItem& item);
    /// True when the request under way got no whole answer for so long that the tool has given it up, with
    /// the time of the line's last byte. Tells so once.
    [[nodiscard]] bool givesUp(trace::Time lastByte, trace::Time now);
    /// Ends the line; true when the request under way got no whole answer.
    [[nodiscard]] bool finish();
    /// A request waits for its answer.
    [[nodiscard]] bool awaitsAnswer() const { return m_pending && m_pending->answered; }
    /// When the request under way was sent.
    [[nodiscard]] trace::Time sentAt() const { return m_pending ? m_pending->at : trace::Time{0}; }

private:
    struct Pending {
        std::uint16_t lineCode;
        trace::Time at;
        trace::Time longestWait;
        bool answered; ///< an answer is read to it
    };

    [[nodiscard]] Judgement judgeRequest(const trace::LineItem& item);
    [[nodiscard]] Judgement judgeData(const trace::LineItem& data);
    [[nodiscard]] Judgement judgeAnswer(const trace::LineItem& item);
    [[nodiscard]] Judgement judgeBroken(const trace::LineItem& item);
    [[nodiscard]] Judgement judgeStray(const trace::LineItem& item);
    [[nodiscard]] Judgement begin(const Pending& pending);

    std::optional<Pending> m_pending;
    std::vector<std::uint16_t> m_earlier; ///< codes of the last requests, the newest last
    bool m_unframed = false;              ///< the last request is answered without a frame, and was
};

} // namespace service
