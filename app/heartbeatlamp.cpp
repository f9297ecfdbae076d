#include "app/heartbeatlamp.h"

#include "linkaccess/signs.h"

#include <QPainter>

namespace {

constexpr int lampMargin = 6; // more than a text's height

Sign signOf(HeartbeatLamp::State state) {
    switch (state) {
    case HeartbeatLamp::State::answered:
        return Sign::success;
    case HeartbeatLamp::State::silent:
        return Sign::failure;
    case HeartbeatLamp::State::notTested:
        break;
    }
    return Sign::unknown;
}

} // namespace

HeartbeatLamp::HeartbeatLamp(QWidget* parent) : QRadioButton(parent) {
    setAutoExclusive(false); // else it could not be switched off
    showNotTested();
}

void HeartbeatLamp::showResult(bool answered, QTime at, std::chrono::milliseconds took) {
    setCheckable(true);
    setChecked(answered);
    m_silent = !answered;
    const QString time = at.toString(QStringLiteral("HH:mm:ss"));
    tell(answered ? tr("%1 有应答，用时 %2 ms").arg(time).arg(took.count()) : tr("%1 没有应答").arg(time));
}

void HeartbeatLamp::showNotTested() {
    setChecked(false);
    m_silent = false;
    tell(tr("还没有测试心跳"));
}

HeartbeatLamp::State HeartbeatLamp::state() const {
    if (isChecked())
        return State::answered;
    return m_silent ? State::silent : State::notTested;
}

void HeartbeatLamp::tell(const QString& text) {
    setToolTip(text);
    setAccessibleDescription(text);
    if (parentWidget() != nullptr)
        parentWidget()->setToolTip(text);
    update();
}

QSize HeartbeatLamp::sizeHint() const {
    const int side = fontMetrics().height() + lampMargin;
    return {side, side};
}

void HeartbeatLamp::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    // As clear while it is disabled.
    paintSign(painter, rect(), signOf(state()), palette().color(QPalette::Active, QPalette::WindowText));
}
