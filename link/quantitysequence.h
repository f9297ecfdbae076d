// Quantities that the camera gives one after the other, one at each read of the same property.
#pragma once

#include "link/clock.h"

#include <cstddef>

/// Where the camera is in its sequence. A sequence that is broken off goes on at the next read, unless that
/// comes so late that the camera begins anew. Belongs to whoever has the turn for readings.
class QuantitySequence {
public:
    using Time = Clock::Time;

    /// Which of `count` quantities the next read gives.
    [[nodiscard]] std::size_t next(std::size_t count, Time now) const {
        return now - m_lastRead > restart ? 0 : m_reads % count;
    }
    /// A read was asked for.
    void advance(std::size_t count, Time now) {
        m_reads = next(count, now) + 1;
        m_lastRead = now;
    }

private:
    static constexpr auto restart = std::chrono::seconds(2);

    std::size_t m_reads = 0;
    Time m_lastRead{};
};
