// The last exchanges of a line and how well they went.
#pragma once

#include "service/exchangejudge.h"

#include <deque>

namespace service {

/// Counts of the newest hundred exchanges; an exchange is a request and what comes until the next one.
class RecentExchanges {
public:
    static constexpr std::size_t count = 100;

    enum class Signal : std::uint8_t {
        unknown, ///< no exchange yet
        good,
        disturbed, ///< late, foreign, broken or stray bytes, or several single requests without answer
        absent,    ///< no answer to the last three requests, or to all of fewer
    };

    void add(const Judgement& judgement, std::size_t strayBytes);
    /// The exchange under way has got no whole answer.
    void addUnanswered();

    [[nodiscard]] LineCounts counts() const;
    [[nodiscard]] Signal signal() const;

private:
    std::deque<LineCounts> m_exchanges; ///< the newest last
};

} // namespace service
