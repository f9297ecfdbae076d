#include "dialogs/settingwrite.h"

#include "link/diagnostics.h"
#include "linkaccess/focuskeeper.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTimer>

#include <chrono>
#include <utility>

SettingWrite::SettingWrite(QWidget* window, const Clock& clock, Plan plan)
    : QObject(window), m_window(window), m_plan(std::move(plan)), m_timer(new QTimer(window)),
      m_counter(m_plan.seconds) {
    m_timer->setInterval(clock.timerInterval(std::chrono::seconds(1)));
    connect(m_timer, &QTimer::timeout, this, &SettingWrite::tick);
}

void SettingWrite::run() {
    setControlsEnabled(false);
    m_plan.hint->setText(tr("开始设置，请稍后..."));
    const QString value = m_plan.value();
    if (value.isEmpty()) {
        m_plan.hint->setText(m_plan.emptyValue);
        setControlsEnabled(true);
        return;
    }
    m_plan.hint->repaint(); // the exchange blocks this thread
    const bool accepted = m_plan.write(value);
    m_plan.hint->setText(m_plan.started + value);
    diagnostics::line(m_plan.resultTag, accepted ? 1 : 0);
    if (accepted) {
        m_timer->start();
        return;
    }
    m_plan.hint->setText(m_plan.failed);
    setControlsEnabled(true);
}

void SettingWrite::tick() {
    if (!m_window->isVisible()) {
        // A hidden window's countdown ends for good: its controls stay held until it is opened anew.
        m_timer->stop();
        return;
    }
    if (m_counter != 0) {
        m_plan.hint->setText(m_plan.countdown.arg(m_counter).arg(tr("秒")));
        --m_counter;
        return;
    }
    if (!m_window->isEnabled())
        return; // somebody else uses the client: the read-back waits for a later tick
    m_plan.hint->setText(tr("设置成功!"));
    setControlsEnabled(true);
    m_timer->stop();
    m_counter = m_plan.seconds;
    m_plan.readBack->click();
}

void SettingWrite::setControlsEnabled(bool enabled) {
    FocusKeeper::of(m_window).keep([this, enabled] {
        for (QWidget* control : m_plan.controls)
            control->setEnabled(enabled);
    });
}
