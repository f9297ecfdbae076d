#include "link/lineobservers.h"

void LineObservers::add(LineObserver& observer) {
    const std::lock_guard lock(m_mutex);
    m_observers.push_back(&observer);
}

void LineObservers::remove(const LineObserver& observer) {
    const std::lock_guard lock(m_mutex);
    std::erase(m_observers, &observer);
}

void LineObservers::sending(protocol::ByteView bytes, Clock::Time now) {
    const std::lock_guard lock(m_mutex);
    for (LineObserver* const observer : m_observers)
        observer->sending(bytes, now);
}

void LineObservers::received(protocol::ByteView bytes, Clock::Time earliest, Clock::Time now) {
    const std::lock_guard lock(m_mutex);
    for (LineObserver* const observer : m_observers)
        observer->received(bytes, earliest, now);
}
