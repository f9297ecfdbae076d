// Sequence of quantities: each read of the same property gives the next one.
#pragma once

#include "link/clock.h"

#include <cstddef>

/// Position of the camera in its sequence. The next read continues an abandoned sequence; after a long pause
/// the camera restarts it. Only the holder of the turn for readings uses it.
class QuantitySequence {
public:
    using Time = Clock::Time;

    /// Which of `count` quantities the next read gives.
    [[nodiscard]] std::size_t next(std::size_t count, Time now) const {
        return now - m_lastRead > restart ? 0 : m_reads % count;
    }
    /// Call for each read.
    void advance(std::size_t count, Time now) {
        m_reads = next(count, now) + 1;
        m_lastRead = now;
    }

private:
    static constexpr auto restart = std::chrono::seconds(2);

    std::size_t m_reads = 0;
    Time m_lastRead{};
};
