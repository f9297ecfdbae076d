// Limits a byte stream to a rate.
#pragma once

#include "emulator/camera/camerasettings.h"

#include <algorithm>

namespace emulator {

/// Allows bytes evenly: at most the bytes of a fiftieth of a second at once.
class Pace {
public:
    /// Bytes per second; 0: unlimited.
    void setRate(std::uint32_t bytesPerSecond) {
        m_rate = bytesPerSecond;
        m_allowed = 0;
    }
    [[nodiscard]] bool limited() const { return m_rate != 0; }
    /// Number of bytes allowed now, at most `wanted`.
    [[nodiscard]] std::size_t allowed(Time now, std::size_t wanted) {
        if (!limited())
            return wanted;
        const double most = std::max(1.0, m_rate / 50.0);
        m_allowed = std::min(most, m_allowed + m_rate * std::chrono::duration<double>(now - m_last).count());
        m_last = now;
        return std::min(wanted, static_cast<std::size_t>(m_allowed));
    }
    void spend(std::size_t bytes) { m_allowed -= limited() ? static_cast<double>(bytes) : 0; }
    /// Time until the next slice.
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
