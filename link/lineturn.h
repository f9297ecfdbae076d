// Whose turn it is on the line.
#pragma once

#include "link/clock.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

/// A user of the line. The first two use it for one exchange, the others from their first exchange to their
/// last.
enum class LineUser : std::uint8_t { none, command, reading, versions, download, upload };

[[nodiscard]] constexpr bool isWholeJob(LineUser user) {
    return user >= LineUser::versions;
}

/// A fair lock: one user at a time, in the order in which they asked. Any thread.
///
/// An upload waits for whoever is before it. Nobody else waits for a whole job: while one holds the line or
/// waits for it, take() is refused at once. A reading that waits gives its place up as soon as an upload
/// asks.
class LineTurn {
public:
    enum class Refusal : std::uint8_t { none, busy, stopped };

    /// The line for as long as it lives; may be refused. Given back on the thread that took it.
    class Hold {
    public:
        Hold() = default;
        ~Hold() { giveBack(); }
        Hold(Hold&& other) noexcept;
        Hold& operator=(Hold&& other) noexcept;

        explicit operator bool() const { return m_refusal == Refusal::none; }
        [[nodiscard]] Refusal refusal() const { return m_refusal; }
        /// The whole job in whose favour this was refused.
        [[nodiscard]] LineUser busyWith() const { return m_busyWith; }
        /// Somebody else had the line first.
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

    /// On the thread that already holds the line this succeeds at once and gives nothing back.
    /// `whileWaiting`, if any, is called about every 100 ms on this thread.
    [[nodiscard]] Hold take(LineUser user, const std::function<void()>& whileWaiting = {});
    /// Refuses every later and every waiting take().
    void stop();

    /// The user as which this thread holds the line; none if it does not.
    [[nodiscard]] LineUser userOnThisThread() const;
    /// The user that holds the line, and the first whole job that waits for it.
    struct State {
        LineUser holder = LineUser::none;
        LineUser waitingJob = LineUser::none;
    };
    [[nodiscard]] State state() const;

private:
    struct Ticket {
        LineUser user;
    };
    /// With the lock held: the whole job that this user does not wait for.
    [[nodiscard]] LineUser jobInTheWay(LineUser user, const Ticket* own) const;
    void giveBack();

    Clock& m_clock;
    mutable std::mutex m_mutex; // guards everything below
    std::condition_variable m_changed;
    std::deque<const Ticket*> m_waiting; ///< in the order of asking; the tickets stand on the waiters' stacks
    LineUser m_holder = LineUser::none;
    std::thread::id m_owner;
    bool m_stopped = false;
};
