#include "app/transferdisplay.h"

#include "app/reportwords.h"
#include "link/camerasp.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

using namespace std::chrono_literals;
using Phase = TransferProgress::Phase;

namespace {

constexpr auto pollInterval = 200ms;
constexpr double bytesPerKilobyte = 1000.0;
constexpr double secondsBeforeEstimate = 1.0; // the first chunks fill buffers and say nothing of the line

QString translated(const char* text) {
    return QCoreApplication::translate("TransferDisplay", text);
}

QString timeText(double seconds) {
    constexpr double longest = 359999.0; // 5999:59; a line that hardly moves gives any number
    const auto whole = static_cast<int>(std::lround(std::min(seconds, longest)));
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

QString sendingText(const TransferSnapshot& snapshot) {
    QString text = translated("已发送 %1 / %2 字节").arg(snapshot.done).arg(snapshot.total);
    const std::uint64_t sent = snapshot.done - std::min(snapshot.done, snapshot.startOffset);
    if (snapshot.seconds >= secondsBeforeEstimate && sent > 0) {
        const double rate = static_cast<double>(sent) / snapshot.seconds;
        const auto left = static_cast<double>(snapshot.total - std::min(snapshot.total, snapshot.done));
        text += translated("，%1 KB/s，剩余 %2")
                    .arg(rate / bytesPerKilobyte, 0, 'f', 1)
                    .arg(timeText(left / rate));
    }
    if (snapshot.startOffset > 0)
        text += translated("（从第 %1 字节继续）").arg(snapshot.startOffset);
    return text;
}

} // namespace

int transferPercent(const TransferSnapshot& snapshot) {
    if (snapshot.total <= snapshot.startOffset)
        return 100;
    const std::uint64_t wanted = snapshot.total - snapshot.startOffset;
    const std::uint64_t sent =
        std::clamp(snapshot.done, snapshot.startOffset, snapshot.total) - snapshot.startOffset;
    return static_cast<int>(sent * 100 / wanted);
}

QString transferText(const TransferSnapshot& snapshot) {
    switch (snapshot.phase) {
    case Phase::reading:
        return translated("正在读取文件…（%1%）").arg(transferPercent(snapshot));
    case Phase::announcing:
        return translated("正在通知摄像头准备升级…");
    case Phase::sending:
        return sendingText(snapshot);
    case Phase::awaitingVerdict:
        return translated("文件已发送，等待摄像头确认…");
    case Phase::downloading:
        return translated("已接收 %1 / %2 字节").arg(snapshot.done).arg(snapshot.total);
    case Phase::idle:
        break;
    }
    return translated("请稍候…");
}

TransferDisplay::TransferDisplay(QWidget* parent, const Clock& clock)
    : QWidget(parent), m_clock(clock), m_label(new QLabel(this)), m_bar(new QProgressBar(this)) {
    setObjectName(QStringLiteral("transferDisplay"));
    m_label->setObjectName(QStringLiteral("label_transfer"));
    m_bar->setObjectName(QStringLiteral("bar_transfer"));
    m_bar->setAccessibleName(tr("传输进度"));
    constexpr int barWidth = 180;
    m_bar->setFixedWidth(barWidth);
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_label);
    layout->addWidget(m_bar);
    m_poll.setInterval(pollInterval);
    connect(&m_poll, &QTimer::timeout, this, &TransferDisplay::refresh);
    hide();
}

void TransferDisplay::followUpload(const CameraSp& client) {
    finish();
    m_uploading = &client;
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
    hide();
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
    m_label->setText(text);
}

void TransferDisplay::refreshTransfer() {
    TransferSnapshot snapshot;
    snapshot.phase = m_transfer->phase;
    snapshot.startOffset = m_transfer->startOffset;
    snapshot.done = m_transfer->done;
    snapshot.total = m_transfer->total;
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
    m_label->setText(transferText(snapshot));
}
