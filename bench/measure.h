// Time, processor time and memory of this process.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

namespace bench {

using Seconds = std::chrono::duration<double>;

/// The middle one, of an even count the greater of the two.
[[nodiscard]] double median(std::vector<double> values);

/// From its construction on.
class Stopwatch {
public:
    Stopwatch();
    [[nodiscard]] double seconds() const;
    /// User and system time of the whole process.
    [[nodiscard]] double cpuSeconds() const;

private:
    std::chrono::steady_clock::time_point m_start;
    double m_cpuStart;
};

/// What is resident now, in bytes; freed memory is given back first. Linux only.
[[nodiscard]] std::int64_t residentBytes();

/// The most memory that was resident since construction, less what was resident then. Linux only; one at a
/// time.
class PeakMemory {
public:
    PeakMemory();
    [[nodiscard]] std::int64_t growthBytes() const;

private:
    std::int64_t m_before;
};

} // namespace bench
