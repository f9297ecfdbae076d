#include "service/linequality.h"

namespace service {

LineCounts LineQuality::finish() {
    const std::lock_guard lock(m_mutex);
    for (const trace::LineItem& item : m_follower.finish())
        count(item);
    m_counts.unanswered += m_judge.finish() ? 1 : 0;
    return m_counts;
}

void LineQuality::pass(trace::Side from, protocol::ByteView bytes, trace::Time at) {
    for (const trace::LineItem& item : m_follower.receive(from, bytes, at))
        count(item);
}

void LineQuality::count(const trace::LineItem& item) {
    const Judgement judgement = m_judge.judge(item);
    m_counts += judgement.counts(item.bytes.size());
    m_counts.unanswered += judgement.endsUnanswered ? 1 : 0;
}

} // namespace service
