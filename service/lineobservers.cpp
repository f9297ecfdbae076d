#include "service/lineobservers.h"

namespace service {

void LineObservers::sending(protocol::ByteView bytes, Clock::Time now) {
    for (LineObserver* const observer : m_observers)
        observer->sending(bytes, now);
}

void LineObservers::received(protocol::ByteView bytes, Clock::Time now) {
    for (LineObserver* const observer : m_observers)
        observer->received(bytes, now);
}

} // namespace service
