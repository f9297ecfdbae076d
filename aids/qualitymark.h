// The mark of the line's quality in the status bar.
#pragma once

#include "service/recentexchanges.h"

#include <QLabel>

/// Empty until something is known of the line. The counts are its tool tip.
class QualityMark final : public QLabel {
    Q_OBJECT

public:
    explicit QualityMark(QWidget* parent = nullptr);

    void showSignal(const service::RecentExchanges& recent);
    void clear();

private:
    service::LineCounts m_counts; ///< shown
    service::RecentExchanges::Signal m_signal = service::RecentExchanges::Signal::unknown;
};
