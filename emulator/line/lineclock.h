// The time of a line.
#pragma once

#include "trace/event.h"

namespace emulator {

/// Time since its construction. Any thread.
class LineClock {
public:
    [[nodiscard]] trace::Time now() const {
        return std::chrono::duration_cast<trace::Time>(std::chrono::steady_clock::now() - m_start);
    }

private:
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace emulator
