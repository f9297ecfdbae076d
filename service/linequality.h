// Counts of a line's exchanges.
#pragma once

#include "service/exchangejudge.h"
#include "service/sideobserver.h"

namespace service {

/// Decodes what passes. Any thread.
class LineQuality final : public SideObserver {
public:
    /// The counts; counts incomplete answers as broken.
    [[nodiscard]] LineCounts finish();

private:
    void pass(trace::Side from, protocol::ByteView bytes, trace::Time at) override;
    void count(const trace::LineItem& item);

    trace::LineFollower m_follower{trace::LineFollower::DataBytes::counted};
    ExchangeJudge m_judge;
    LineCounts m_counts;
};

} // namespace service
