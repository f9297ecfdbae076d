#include "app/transferdisplay.h"

#include "link/camerasp.h"
#include "service/reportwords.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QStatusBar>
#include <QStyle>
#include <QToolButton>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;
using Phase = TransferProgress::Phase;

namespace {

constexpr auto pollInterval = 200ms;
constexpr int barWidth = 120;
constexpr int narrowBarWidth = 48;
constexpr int messageMargin = 20; // of the status bar around its message, and a gap

/// A line of text; without room for all of it, the line ends with an ellipsis.
class ElidedLabel final : public QLabel {
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
        style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()), palette(), isEnabled(),
                              shown, foregroundRole());
    }
};

} // namespace

TransferDisplay::TransferDisplay(QWidget* parent, const Clock& clock)
    : QWidget(parent), m_clock(clock), m_label(new ElidedLabel(this)), m_bar(new QProgressBar(this)),
      m_stop(new QToolButton(this)) {
    setObjectName(QStringLiteral("transferDisplay"));
    m_label->setObjectName(QStringLiteral("label_transfer"));
    m_bar->setObjectName(QStringLiteral("bar_transfer"));
    m_bar->setAccessibleName(tr("传输进度"));
    m_label->setMinimumWidth(1); // the text does not widen the window
    m_bar->setFixedWidth(barWidth);
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_label);
    layout->addWidget(m_bar);
    m_stop->setObjectName(QStringLiteral("btn_stop_transfer"));
    m_stop->setText(tr("停止"));
    m_stop->setToolTip(tr("停止升级并关闭串口，会先询问"));
    layout->addWidget(m_stop);
    connect(m_stop, &QToolButton::clicked, this, &TransferDisplay::stopWanted);
    offerStop(false);
    m_poll.setInterval(pollInterval);
    connect(&m_poll, &QTimer::timeout, this, &TransferDisplay::refresh);
    hide();
}

void TransferDisplay::followUpload(const CameraSp& client) {
    finish();
    m_uploading = &client;
    offerStop(true);
    follow(&client.progress());
    show();
}

void TransferDisplay::followDownload(const TransferProgress& progress) {
    finish();
    follow(&progress);
}

void TransferDisplay::followReturnWait(std::shared_ptr<const ReturnWaitProgress> progress) {
    finish();
    m_returnWait = std::move(progress);
    offerStop(true);
    refresh();
    m_poll.start();
    show();
}

void TransferDisplay::follow(const TransferProgress* transfer) {
    m_transfer = transfer;
    refresh();
    m_poll.start();
}

void TransferDisplay::finish() {
    m_poll.stop();
    m_sendingSince.reset();
    m_transfer = nullptr;
    m_uploading = nullptr;
    m_returnWait.reset();
    offerStop(false);
    hide();
}

void TransferDisplay::offerStop(bool offered) {
    m_stop->setVisible(offered);
    m_stop->setFocusPolicy(offered ? Qt::TabFocus : Qt::NoFocus); // no hidden tab stop
}

void TransferDisplay::refresh() {
    if (m_returnWait != nullptr) {
        showWait(tr("等待摄像头重启…（第 %1 次，共 %2 次）")
                     .arg(std::max(1, m_returnWait->attempt.load()))
                     .arg(m_returnWait->attempts));
        return;
    }
    if (m_uploading != nullptr) {
        const LineTurn::State line = m_uploading->lineState();
        if (line.waitingJob == LineUser::upload) {
            showWait(line.holder == LineUser::none
                         ? tr("等待线路空闲")
                         : tr("等待线路空闲（正在%1）").arg(lineUserWords(line.holder)));
            return;
        }
    }
    refreshTransfer();
}

void TransferDisplay::showWait(const QString& text) {
    m_bar->setRange(0, 0); // an empty range is the busy indicator
    showText(text);
}

void TransferDisplay::showText(const QString& text) {
    m_label->setText(text);
    m_label->setToolTip(text);
    fit();
}

/// The right end of this widget does not depend on its width.
void TransferDisplay::fit() {
    const auto* const status = qobject_cast<const QStatusBar*>(parentWidget());
    if (status == nullptr || isHidden())
        return;
    const int message = status->fontMetrics().horizontalAdvance(status->currentMessage());
    int room = geometry().right() + 1 - message - messageMargin - layout()->spacing();
    if (!m_stop->isHidden())
        room -= m_stop->sizeHint().width() + layout()->spacing();
    const int wanted = m_label->fontMetrics().horizontalAdvance(m_label->text());
    const int bar = std::clamp(room - wanted, narrowBarWidth, barWidth);
    m_bar->setFixedWidth(bar);
    m_label->setMaximumWidth(std::max(1, room - bar));
}

void TransferDisplay::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    fit();
}

void TransferDisplay::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fit();
}

void TransferDisplay::refreshTransfer() {
    TransferSnapshot snapshot = snapshotOf(*m_transfer);
    if (m_uploading == nullptr)
        setVisible(snapshot.phase == Phase::downloading);
    const bool sending = snapshot.phase == Phase::sending;
    const bool counted = sending || snapshot.phase == Phase::reading || snapshot.phase == Phase::downloading;
    const Clock::Time now = m_clock.now();
    if (sending && !m_sendingSince)
        m_sendingSince = now;
    snapshot.seconds = std::chrono::duration<double>(now - m_sendingSince.value_or(now)).count();
    m_bar->setRange(0, counted ? 100 : 0);
    if (counted)
        m_bar->setValue(transferPercent(snapshot));
    showText(transferText(snapshot));
}
