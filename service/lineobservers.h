// Several observers of one line.
#pragma once

#include "link/lineobserver.h"

#include <vector>

namespace service {

/// Tells each in the order in which they were added. All are added before the first byte passes.
class LineObservers final : public LineObserver {
public:
    void add(LineObserver& observer) { m_observers.push_back(&observer); }

    void sending(protocol::ByteView bytes, Clock::Time now) override;
    void received(protocol::ByteView bytes, Clock::Time now) override;

private:
    std::vector<LineObserver*> m_observers;
};

} // namespace service
