#include "service/exchangejudge.h"

#include "link/protocol/exchangetable.h"
#include "link/protocol/uploads.h"

#include <algorithm>

namespace service {

using namespace std::chrono_literals;
using protocol::Command;
using trace::LineItem;
using Role = Judgement::Role;

namespace {

/// Answers to requests before these are foreign.
constexpr std::size_t rememberedRequests = 16;
/// A request's tries may take longer, such as those of a picture's pieces.
constexpr trace::Time longestWaitOfAll = 10s;
constexpr trace::Time keptTimeout = 1s; ///< longest that a command leaves to the next one
constexpr trace::Time waitMargin = 500ms;

/// How long the tool reads for an answer at the most.
trace::Time longestWait(std::uint16_t lineCode) {
    trace::Time longest{0};
    for (const protocol::ExchangeRule* const rule : protocol::rules::all) {
        const bool callers = rule->command == Command::callers;
        if (!callers && static_cast<std::uint16_t>(rule->command) != lineCode)
            continue;
        const trace::Time once =
            rule->timeoutMs ? trace::Time(std::chrono::milliseconds(*rule->timeoutMs)) : keptTimeout;
        longest = std::max(longest, rule->reading == protocol::Reading::blocks ? longestWaitOfAll
                                                                               : once * rule->tries);
    }
    return std::min(longest, longestWaitOfAll) + waitMargin;
}

/// How long the tool reads for the verdict on an upload's data.
constexpr trace::Time verdictWait =
    std::chrono::milliseconds(1000) * protocol::rules::modelVerdictTries + waitMargin;

} // namespace

LineCounts& LineCounts::operator+=(const LineCounts& other) {
    requests += other.requests;
    answers += other.answers;
    unanswered += other.unanswered;
    late += other.late;
    broken += other.broken;
    strayBytes += other.strayBytes;
    slowest = std::max(slowest, other.slowest);
    return *this;
}

LineCounts Judgement::counts(std::size_t strayBytes) const {
    LineCounts counts;
    counts.requests = role == Role::request ? 1 : 0;
    counts.answers = role == Role::answer ? 1 : 0;
    counts.late = role == Role::late || role == Role::foreign ? 1 : 0;
    counts.broken = role == Role::broken ? 1 : 0;
    counts.strayBytes = role == Role::stray ? strayBytes : 0;
    counts.slowest = std::chrono::duration_cast<std::chrono::milliseconds>(took);
    return counts;
}

Judgement ExchangeJudge::judge(const LineItem& item) {
    switch (item.kind) {
    case LineItem::Kind::frame:
    case LineItem::Kind::json:
        return item.from == trace::Side::tool ? judgeRequest(item) : judgeAnswer(item);
    case LineItem::Kind::badFrame:
    case LineItem::Kind::badJson:
    case LineItem::Kind::brokenOff:
        return item.from == trace::Side::tool ? Judgement{} : judgeBroken(item);
    case LineItem::Kind::stray:
        return item.from == trace::Side::tool ? Judgement{} : judgeStray(item);
    case LineItem::Kind::data:
        return judgeData(item);
    }
    return {};
}

bool ExchangeJudge::givesUp(trace::Time lastByte, trace::Time now) {
    if (!awaitsAnswer() || now - std::max(lastByte, m_pending->at) <= m_pending->longestWait)
        return false;
    return finish();
}

bool ExchangeJudge::finish() {
    const bool unanswered = awaitsAnswer();
    m_pending.reset();
    return unanswered;
}

Judgement ExchangeJudge::begin(const Pending& pending) {
    Judgement judgement;
    judgement.role = Role::request;
    judgement.endsUnanswered = finish();
    m_pending = pending;
    m_unframed = false;
    if (m_earlier.size() == rememberedRequests)
        m_earlier.erase(m_earlier.begin());
    m_earlier.push_back(pending.lineCode);
    return judgement;
}

Judgement ExchangeJudge::judgeRequest(const LineItem& item) {
    const std::uint16_t lineCode = trace::requestKeyOf(item, 0).lineCode;
    const bool answered = lineCode != protocol::code(Command::door);
    return begin({lineCode, item.lastAt, longestWait(lineCode), answered});
}

/// The verdict answers an upload's data. None is read for a system image.
Judgement ExchangeJudge::judgeData(const LineItem& data) {
    const bool answered = data.uploadCode != protocol::code(Command::firewareAnnounce);
    return begin({data.uploadCode, data.lastAt, verdictWait, answered});
}

Judgement ExchangeJudge::judgeAnswer(const LineItem& item) {
    const std::uint16_t lineCode = trace::requestKeyOf(item, 0).lineCode;
    Judgement judgement;
    if (m_pending && m_pending->lineCode == lineCode) {
        judgement.role = Role::answer;
        judgement.took = item.lastAt - m_pending->at;
        m_pending.reset();
    } else if (item.uploadCode != 0) {
        judgement.role = Role::answer; // a verdict without data before it
    } else {
        const bool earlier = std::find(m_earlier.begin(), m_earlier.end(), lineCode) != m_earlier.end();
        judgement.role = earlier ? Role::late : Role::foreign;
    }
    return judgement;
}

Judgement ExchangeJudge::judgeBroken(const LineItem& item) {
    // The rest of an earlier answer is abandoned during the next exchange.
    if (m_pending && item.lastAt >= m_pending->at)
        m_pending.reset();
    Judgement judgement;
    judgement.role = Role::broken;
    return judgement;
}

/// The gyro test is answered without a frame, perhaps in pieces.
Judgement ExchangeJudge::judgeStray(const LineItem& item) {
    Judgement judgement;
    judgement.role = m_unframed ? Role::other : Role::stray;
    if (m_pending && m_pending->lineCode == protocol::code(Command::gyroTest)) {
        judgement.role = Role::answer;
        judgement.took = item.lastAt - m_pending->at;
        m_pending.reset();
        m_unframed = true;
    }
    return judgement;
}

} // namespace service
