// A clock whose pauses and timers a test shortens, holds and lists.
#pragma once

#include "link/clock.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

/// Tells the system's time.
class TestClock final : public Clock {
public:
    using Length = std::function<std::chrono::nanoseconds(std::chrono::nanoseconds asked)>;

    /// How long pauses last from now on.
    void setPauses(Length length) { set(m_length, std::move(length)); }
    void limitPauses(std::chrono::nanoseconds limit) {
        setPauses([limit](std::chrono::nanoseconds asked) { return std::min(asked, limit); });
    }
    void skipPauses() { limitPauses({}); }
    void pauseForReal() { setPauses({}); }
    /// Pauses last until release(); then they are over.
    void hold() {
        skipPauses();
        set(m_held, true);
    }
    void release() { set(m_held, false); }
    /// Timers that start from now on, and pauses, take this fraction of their time.
    void speedUp(int factor) { set(m_factor, factor); }

    /// False when no pause begins within 5 s.
    bool waitForFirst() {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(5), [this] { return !m_pauses.empty(); });
    }
    /// The pauses that were asked for.
    [[nodiscard]] std::vector<std::chrono::nanoseconds> pauses() const {
        const std::lock_guard lock(m_mutex);
        return m_pauses;
    }
    /// The delays of timers that were asked for.
    [[nodiscard]] std::vector<std::chrono::milliseconds> timers() const {
        const std::lock_guard lock(m_mutex);
        return m_timers;
    }

    bool pause(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
               std::chrono::nanoseconds duration) override {
        lock.unlock();
        const std::chrono::nanoseconds left = begin(duration);
        lock.lock();
        return left.count() == 0 || Clock::pause(lock, changed, left);
    }

    [[nodiscard]] std::chrono::milliseconds timerInterval(std::chrono::milliseconds delay) const override {
        const std::lock_guard lock(m_mutex);
        m_timers.push_back(delay);
        return delay / m_factor;
    }

private:
    template <typename Value>
    void set(Value& field, Value value) {
        const std::lock_guard lock(m_mutex);
        field = std::move(value);
        m_changed.notify_all();
    }
    /// How long the pause takes.
    std::chrono::nanoseconds begin(std::chrono::nanoseconds duration) {
        std::unique_lock lock(m_mutex);
        m_pauses.push_back(duration);
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_held; });
        return m_length ? m_length(duration) : duration / m_factor;
    }

    mutable std::mutex m_mutex; // guards everything below
    std::condition_variable m_changed;
    std::vector<std::chrono::nanoseconds> m_pauses;
    mutable std::vector<std::chrono::milliseconds> m_timers;
    Length m_length; ///< empty: by the factor
    int m_factor = 1;
    bool m_held = false;
};
