// Paints windows as often as a screen shows them.
#pragma once

#include <QApplication>
#include <QEvent>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <utility>
#include <vector>

/// As long as it lives, the windows' changes are painted together four times a second. Without it every
/// change is painted at once: half of the processor time of tests in virtual time, where no time passes
/// between changes. What is shown first, and what a test grabs, is painted at once.
class ScreenRefresh final : public QObject {
public:
    ScreenRefresh() {
        m_timer.setSingleShot(true);
        m_timer.setInterval(interval);
        connect(&m_timer, &QTimer::timeout, this, &ScreenRefresh::paint);
        qApp->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override {
        if (event->type() != QEvent::UpdateRequest || m_painting || !receiver->isWidgetType())
            return false;
        m_changed.emplace_back(static_cast<QWidget*>(receiver));
        if (!m_timer.isActive())
            m_timer.start();
        return true;
    }

private:
    static constexpr std::chrono::milliseconds interval{250};

    void paint() {
        m_painting = true;
        for (const QPointer<QWidget>& window : std::exchange(m_changed, {})) {
            QEvent request(QEvent::UpdateRequest);
            if (window != nullptr)
                QCoreApplication::sendEvent(window, &request);
        }
        m_painting = false;
    }

    QTimer m_timer;
    std::vector<QPointer<QWidget>> m_changed;
    bool m_painting = false;
};
