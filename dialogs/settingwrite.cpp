#include "dialogs/settingwrite.h"

#include "link/diagnostics.h"
#include "linkaccess/focuskeeper.h"

#include <QAbstractButton>
#include <QBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>

#include <chrono>
#include <utility>

namespace {

constexpr QSize barSize(80, 10);

} // namespace

SettingWrite::SettingWrite(QWidget* window, const Clock& clock, Plan plan)
    : QObject(window), m_window(window), m_plan(std::move(plan)),
      m_mark(new SignMark(m_plan.hint->parentWidget())), m_bar(new QProgressBar(m_plan.hint->parentWidget())),
      m_timer(new QTimer(window)), m_counter(m_plan.seconds) {
    if (auto* const row = qobject_cast<QBoxLayout*>(m_plan.hint->parentWidget()->layout())) {
        row->insertWidget(0, m_mark);
        row->addWidget(m_bar);
        row->setStretchFactor(m_plan.hint, 1);
    }
    m_mark->setObjectName(QStringLiteral("mark_outcome"));
    m_mark->setSign(Sign::none);
    m_bar->setObjectName(QStringLiteral("bar_countdown"));
    m_bar->setAccessibleName(tr("倒计时"));
    m_bar->setRange(0, m_plan.seconds);
    m_bar->setTextVisible(false);
    m_bar->setMaximumSize(barSize);
    m_bar->hide();
    m_timer->setInterval(clock.timerInterval(std::chrono::seconds(1)));
    connect(m_timer, &QTimer::timeout, this, &SettingWrite::tick);
}

void SettingWrite::run() {
    setControlsEnabled(false);
    tell(Sign::waiting, tr("开始设置，请稍后..."));
    const QString value = m_plan.value();
    if (value.isEmpty()) {
        tell(Sign::failure, m_plan.emptyValue);
        setControlsEnabled(true);
        return;
    }
    m_mark->parentWidget()->repaint(); // the exchange blocks this thread
    const bool accepted = m_plan.write(value);
    tell(Sign::waiting, m_plan.started + value);
    diagnostics::line(m_plan.resultTag, accepted ? 1 : 0);
    if (accepted) {
        m_bar->setValue(m_plan.seconds);
        m_bar->show();
        m_timer->start();
        return;
    }
    tell(Sign::failure, m_plan.failed);
    setControlsEnabled(true);
}

void SettingWrite::tick() {
    if (!m_window->isVisible()) {
        // A hidden window's countdown ends for good: its controls stay held until it is opened anew.
        m_timer->stop();
        return;
    }
    if (m_counter != 0) {
        tell(Sign::waiting, m_plan.countdown.arg(m_counter).arg(tr("秒")));
        m_bar->setValue(m_counter);
        --m_counter;
        return;
    }
    if (!m_window->isEnabled())
        return; // somebody else uses the client: the read-back waits for a later tick
    tell(Sign::success, tr("设置成功!"));
    m_bar->hide();
    setControlsEnabled(true);
    m_timer->stop();
    m_counter = m_plan.seconds;
    m_plan.readBack->click();
}

void SettingWrite::tell(Sign sign, const QString& hint) {
    m_mark->setSign(sign);
    m_plan.hint->setText(hint);
}

void SettingWrite::setControlsEnabled(bool enabled) {
    FocusKeeper::of(m_window).keep([this, enabled] {
        for (QWidget* control : m_plan.controls)
            control->setEnabled(enabled);
    });
}
