// Observes the traffic of an open line.
#pragma once

#include "link/clock.h"
#include "link/protocol/bytes.h"

/// Called on the thread that has the turn, between two library calls: must return soon and not throw.
/// Outlives the link, or is removed first.
class LineObserver {
public:
    LineObserver() = default;
    virtual ~LineObserver() = default;
    LineObserver(const LineObserver&) = delete;
    LineObserver& operator=(const LineObserver&) = delete;

    /// Before the bytes are handed to the system.
    virtual void sending(protocol::ByteView bytes, Clock::Time now) = 0;
    /// The last byte came between `earliest` and `now`: a read that expires keeps what came until its end.
    virtual void received(protocol::ByteView bytes, Clock::Time earliest, Clock::Time now) = 0;
};
