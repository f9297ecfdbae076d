// Several observers of one line.
#pragma once

#include "link/lineobserver.h"

#include <mutex>
#include <vector>

/// Tells each in the order in which they were added. Any thread.
class LineObservers final : public LineObserver {
public:
    void add(LineObserver& observer);
    /// Returns when the observer is called no more.
    void remove(const LineObserver& observer);

    void sending(protocol::ByteView bytes, Clock::Time now) override;
    void received(protocol::ByteView bytes, Clock::Time earliest, Clock::Time now) override;

private:
    std::mutex m_mutex;
    std::vector<LineObserver*> m_observers;
};
