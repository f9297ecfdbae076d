// The turn on the line.
#pragma once

#include "link/clock.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

/// A user of the line. Commands and readings use it for one exchange, the others for a whole job.
enum class LineUser : std::uint8_t { none, command, reading, versions, download, upload };

[[nodiscard]] constexpr bool isWholeJob(LineUser user) {
    return user >= LineUser::versions;
}

/// A fair lock: one user at a time, in the order of the calls. Any thread.
///
/// An upload waits for the users before it. Other users do not wait for a whole job: take() is refused while
/// one holds the line or waits for it. A waiting reading is refused when an upload asks.
class LineTurn {
public:
    enum class Refusal : std::uint8_t { none, busy, stopped };

    /// Holds the line while it lives, unless it was refused. Destroyed on the thread that took it.
    class Hold {
    public:
        Hold() = default;
        ~Hold() { giveBack(); }
        Hold(Hold&& other) noexcept;
        Hold& operator=(Hold&& other) noexcept;

        explicit operator bool() const { return m_refusal == Refusal::none; }
        [[nodiscard]] Refusal refusal() const { return m_refusal; }
        /// The whole job that was the reason of the refusal.
        [[nodiscard]] LineUser busyWith() const { return m_busyWith; }
        /// True if another user had the line.
        [[nodiscard]] bool hadToWait() const { return m_waited; }

    private:
        friend class LineTurn;
        void giveBack();

        LineTurn* m_turn = nullptr; ///< null: nothing to give back
        Refusal m_refusal = Refusal::none;
        LineUser m_busyWith = LineUser::none;
        bool m_waited = false;
    };

    /// The clock outlives it.
    explicit LineTurn(Clock& clock = Clock::system()) : m_clock(clock) {}
    LineTurn(const LineTurn&) = delete;
    LineTurn& operator=(const LineTurn&) = delete;

    /// Nested calls on the holder's thread succeed at once.
    /// `whileWaiting`, if any, is called about every 100 ms on this thread.
    [[nodiscard]] Hold take(LineUser user, const std::function<void()>& whileWaiting = {});
    /// Refuses every waiting and later take().
    void stop();

    /// This thread's use of the line.
    [[nodiscard]] LineUser userOnThisThread() const;
    /// The holder and the first waiting whole job.
    struct State {
        LineUser holder = LineUser::none;
        LineUser waitingJob = LineUser::none;
    };
    [[nodiscard]] State state() const;

private:
    struct Ticket {
        LineUser user;
    };
    /// The whole job that refuses this user. Call with the lock held.
    [[nodiscard]] LineUser jobInTheWay(LineUser user, const Ticket* own) const;
    void giveBack();

    Clock& m_clock;
    mutable std::mutex m_mutex; // guards everything below
    std::condition_variable m_changed;
    std::deque<const Ticket*> m_waiting; ///< in the order of the calls; tickets live on the waiters' stacks
    LineUser m_holder = LineUser::none;
    std::thread::id m_owner;
    bool m_stopped = false;
};
