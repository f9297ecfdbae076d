// How many bytes may pass at a given rate.
#pragma once

#include "emulator/camera/camerasettings.h"

#include <algorithm>

namespace emulator {

/// Gives out bytes evenly: at no time more than a fiftieth of a second's worth at once.
class Pace {
public:
    /// Bytes per second; 0 does not limit.
    void setRate(std::uint32_t bytesPerSecond) {
        m_rate = bytesPerSecond;
        m_allowed = 0;
    }
    [[nodiscard]] bool limited() const { return m_rate != 0; }
    /// Bytes that may pass now, at most `wanted`.
    [[nodiscard]] std::size_t allowed(Time now, std::size_t wanted) {
        if (!limited())
            return wanted;
        const double most = std::max(1.0, m_rate / 50.0);
        m_allowed = std::min(most, m_allowed + m_rate * std::chrono::duration<double>(now - m_last).count());
        m_last = now;
        return std::min(wanted, static_cast<std::size_t>(m_allowed));
    }
    void spend(std::size_t bytes) { m_allowed -= limited() ? static_cast<double>(bytes) : 0; }
    /// Until the next slice is worth waking up for.
    [[nodiscard]] Time sliceTime() const {
        const double seconds = std::max(1.0 / 400, 1.0 / std::max(1U, m_rate));
        return std::chrono::duration_cast<Time>(std::chrono::duration<double>(seconds));
    }

private:
    std::uint32_t m_rate = 0;
    double m_allowed = 0;
    Time m_last{0};
};

} // namespace emulator
