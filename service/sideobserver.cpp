#include "service/sideobserver.h"

namespace service {

void SideObserver::sending(protocol::ByteView bytes, Clock::Time now) {
    passFrom(trace::Side::tool, bytes, now);
}

void SideObserver::received(protocol::ByteView bytes, Clock::Time /*earliest*/, Clock::Time now) {
    passFrom(trace::Side::camera, bytes, now);
}

void SideObserver::passFrom(trace::Side from, protocol::ByteView bytes, Clock::Time now) {
    const std::lock_guard lock(m_mutex);
    if (!m_start)
        m_start = now;
    pass(from, bytes, std::chrono::duration_cast<trace::Time>(now - *m_start));
}

} // namespace service
