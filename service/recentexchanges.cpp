#include "service/recentexchanges.h"

#include <algorithm>

namespace service {

namespace {

/// One request without answer may be one that the camera does not know. As many in a row: the camera is away.
constexpr int tellingUnanswered = 3;

bool isSilent(const LineCounts& exchange) {
    return exchange.unanswered > 0 && !exchange.isOdd();
}

} // namespace

void RecentExchanges::add(const Judgement& judgement, std::size_t strayBytes) {
    if (judgement.endsUnanswered)
        addUnanswered();
    if (judgement.role == Judgement::Role::request) {
        if (m_exchanges.size() == count)
            m_exchanges.pop_front();
        m_exchanges.emplace_back();
    }
    if (!m_exchanges.empty())
        m_exchanges.back() += judgement.counts(strayBytes);
}

void RecentExchanges::addUnanswered() {
    if (!m_exchanges.empty())
        m_exchanges.back().unanswered = 1;
}

LineCounts RecentExchanges::counts() const {
    LineCounts sum;
    for (const LineCounts& exchange : m_exchanges)
        sum += exchange;
    return sum;
}

RecentExchanges::Signal RecentExchanges::signal() const {
    int ended = 0;
    int run = 0;     ///< of requests without answer
    int singles = 0; ///< of them in shorter runs
    bool odd = false;
    for (const LineCounts& exchange : m_exchanges) {
        const bool silent = isSilent(exchange);
        if (!silent && exchange.answers == 0 && !exchange.isOdd())
            continue; // under way, or no answer is read to it
        ++ended;
        odd = odd || exchange.isOdd();
        if (!silent && run < tellingUnanswered)
            singles += run;
        run = silent ? run + 1 : 0;
    }
    if (ended == 0)
        return Signal::unknown;
    if (run >= tellingUnanswered || run == ended)
        return Signal::absent;
    return odd || singles >= tellingUnanswered ? Signal::disturbed : Signal::good;
}

} // namespace service
