#include "aids/qualitymark.h"

namespace {

QString signalText(service::RecentExchanges::Signal signal) {
    using Signal = service::RecentExchanges::Signal;
    switch (signal) {
    case Signal::unknown:
        return {};
    case Signal::good:
        return QualityMark::tr("信号良好");
    case Signal::disturbed:
        return QualityMark::tr("有干扰");
    case Signal::absent:
        return QualityMark::tr("无应答");
    }
    return {};
}

QString advice(service::RecentExchanges::Signal signal) {
    using Signal = service::RecentExchanges::Signal;
    if (signal == Signal::disturbed)
        return QualityMark::tr("\n请检查接线、接地和转接器");
    if (signal == Signal::absent)
        return QualityMark::tr("\n请检查供电、接线、从机地址和波特率");
    return {};
}

} // namespace

QualityMark::QualityMark(QWidget* parent) : QLabel(parent) {
    setObjectName(QStringLiteral("label_quality"));
    setAccessibleDescription(tr("信号"));
    hide();
}

void QualityMark::showSignal(const service::RecentExchanges& recent) {
    const auto signal = recent.signal();
    const service::LineCounts counts = recent.counts();
    if (counts == m_counts && signal == m_signal)
        return;
    m_counts = counts;
    m_signal = signal;
    setText(signalText(signal));
    setToolTip(tr("最近 %1 次命令：应答 %2，没有应答 %3，迟到 %4，损坏 %5，杂散字节 %6，最慢 %7 ms")
                   .arg(counts.requests)
                   .arg(counts.answers)
                   .arg(counts.unanswered)
                   .arg(counts.late)
                   .arg(counts.broken)
                   .arg(counts.strayBytes)
                   .arg(counts.slowest.count()) +
               advice(signal));
    setVisible(!text().isEmpty());
}

void QualityMark::clear() {
    showSignal({});
}
