// The time of a client and of the windows that use it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/// The system's monotonic time. Tests derive from it. Any thread; outlives its users.
class Clock {
public:
    using Time = std::chrono::steady_clock::time_point;

    Clock() = default;
    virtual ~Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;

    static Clock& system();

    [[nodiscard]] virtual Time now() const;
    /// Waits with the lock released. True at the end of the time; false after a notification or a spurious
    /// wake-up.
    [[nodiscard]] virtual bool wait(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                                    std::chrono::nanoseconds duration);
    /// The same for a pause between two steps of a command. Below 1 ms it polls the time: the system may
    /// wake a sleeping thread a whole tick later.
    [[nodiscard]] virtual bool pause(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                                     std::chrono::nanoseconds duration);
    /// Interval of a window's timer for this delay.
    [[nodiscard]] virtual std::chrono::milliseconds timerInterval(std::chrono::milliseconds delay) const;
};
