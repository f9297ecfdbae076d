// An observer that tells both sides of a line apart and counts the time from the first byte.
#pragma once

#include "link/lineobserver.h"
#include "trace/linefollower.h"

#include <mutex>
#include <optional>

namespace service {

class SideObserver : public LineObserver {
public:
    void sending(protocol::ByteView bytes, Clock::Time now) final;
    void received(protocol::ByteView bytes, Clock::Time earliest, Clock::Time now) final;

protected:
    /// Called with m_mutex held.
    virtual void pass(trace::Side from, protocol::ByteView bytes, trace::Time at) = 0;

    mutable std::mutex m_mutex; ///< guards everything of derived classes

private:
    void passFrom(trace::Side from, protocol::ByteView bytes, Clock::Time now);

    std::optional<Clock::Time> m_start;
};

} // namespace service
