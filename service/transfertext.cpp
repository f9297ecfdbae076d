#include "service/transfertext.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

using Phase = TransferProgress::Phase;

namespace {

constexpr double bytesPerKilobyte = 1000.0;
constexpr double secondsBeforeEstimate = 1.0; // the first chunks fill buffers and say nothing of the line

QString progressWords(const char* text) {
    return QCoreApplication::translate("TransferDisplay", text);
}

QString timeText(double seconds) {
    constexpr double longest = 359999.0; // 5999:59; a line that hardly moves gives any number
    const auto whole = static_cast<int>(std::lround(std::min(seconds, longest)));
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

QString sendingText(const TransferSnapshot& snapshot) {
    QString text = progressWords("已发送 %1 / %2 字节").arg(snapshot.done).arg(snapshot.total);
    const std::uint64_t sent = snapshot.done - std::min(snapshot.done, snapshot.startOffset);
    if (snapshot.seconds >= secondsBeforeEstimate && sent > 0) {
        const double rate = static_cast<double>(sent) / snapshot.seconds;
        const auto left = static_cast<double>(snapshot.total - std::min(snapshot.total, snapshot.done));
        text += progressWords("，%1 KB/s，剩余 %2")
                    .arg(rate / bytesPerKilobyte, 0, 'f', 1)
                    .arg(timeText(left / rate));
    }
    if (snapshot.startOffset > 0)
        text += progressWords("（从第 %1 字节继续）").arg(snapshot.startOffset);
    return text;
}

} // namespace

TransferSnapshot snapshotOf(const TransferProgress& progress) {
    TransferSnapshot snapshot;
    snapshot.phase = progress.phase;
    snapshot.startOffset = progress.startOffset;
    snapshot.done = progress.done;
    snapshot.total = progress.total;
    return snapshot;
}

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
        return progressWords("正在读取文件…（%1%）").arg(transferPercent(snapshot));
    case Phase::announcing:
        return progressWords("正在通知摄像头准备升级…");
    case Phase::sending:
        return sendingText(snapshot);
    case Phase::awaitingVerdict:
        return progressWords("文件已发送，等待摄像头确认…");
    case Phase::downloading:
        return progressWords("已接收 %1 / %2 字节").arg(snapshot.done).arg(snapshot.total);
    case Phase::idle:
        break;
    }
    return progressWords("请稍候…");
}
