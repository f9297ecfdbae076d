#include "link/lineturn.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace {
constexpr auto callbackInterval = std::chrono::milliseconds(100);
}

LineTurn::Hold::Hold(Hold&& other) noexcept
    : m_turn(std::exchange(other.m_turn, nullptr)), m_refusal(other.m_refusal), m_busyWith(other.m_busyWith),
      m_waited(other.m_waited) {}

LineTurn::Hold& LineTurn::Hold::operator=(Hold&& other) noexcept {
    if (this != &other) {
        giveBack();
        m_turn = std::exchange(other.m_turn, nullptr);
        m_refusal = other.m_refusal;
        m_busyWith = other.m_busyWith;
        m_waited = other.m_waited;
    }
    return *this;
}

void LineTurn::Hold::giveBack() {
    if (LineTurn* const turn = std::exchange(m_turn, nullptr))
        turn->giveBack();
}

LineUser LineTurn::jobInTheWay(LineUser user, const Ticket* own) const {
    if (user == LineUser::upload)
        return LineUser::none;
    if (isWholeJob(m_holder))
        return m_holder;
    for (const Ticket* const ticket : m_waiting) {
        // Earlier users keep their place, but a reading yields to a later upload.
        if (ticket == own && user != LineUser::reading)
            break;
        if (ticket != own && isWholeJob(ticket->user))
            return ticket->user;
    }
    return LineUser::none;
}

LineTurn::Hold LineTurn::take(LineUser user, const std::function<void()>& whileWaiting) {
    Hold hold;
    std::unique_lock lock(m_mutex);
    if (m_holder != LineUser::none && m_owner == std::this_thread::get_id())
        return hold;
    const Ticket ticket{user};
    m_waiting.push_back(&ticket);
    m_changed.notify_all(); // wakes waiting readings, which yield to a whole job
    while (!m_stopped && hold.m_busyWith == LineUser::none) {
        hold.m_busyWith = jobInTheWay(user, &ticket);
        if (hold.m_busyWith != LineUser::none)
            break;
        if (m_holder == LineUser::none && m_waiting.front() == &ticket)
            break;
        hold.m_waited = true;
        if (m_clock.wait(lock, m_changed, callbackInterval) && whileWaiting) {
            lock.unlock();
            whileWaiting();
            lock.lock();
        }
    }
    std::erase(m_waiting, &ticket);
    if (m_stopped) {
        hold.m_refusal = Refusal::stopped;
    } else if (hold.m_busyWith != LineUser::none) {
        hold.m_refusal = Refusal::busy;
    } else {
        hold.m_turn = this;
        m_holder = user;
        m_owner = std::this_thread::get_id();
    }
    m_changed.notify_all();
    return hold;
}

void LineTurn::giveBack() {
    {
        const std::lock_guard lock(m_mutex);
        m_holder = LineUser::none;
        m_owner = {};
    }
    m_changed.notify_all();
}

void LineTurn::stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
    }
    m_changed.notify_all();
}

LineUser LineTurn::userOnThisThread() const {
    const std::lock_guard lock(m_mutex);
    return m_owner == std::this_thread::get_id() ? m_holder : LineUser::none;
}

LineTurn::State LineTurn::state() const {
    const std::lock_guard lock(m_mutex);
    State state{m_holder, LineUser::none};
    for (const Ticket* const ticket : m_waiting) {
        if (isWholeJob(ticket->user)) {
            state.waitingJob = ticket->user;
            break;
        }
    }
    return state;
}
