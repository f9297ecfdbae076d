#include "linkaccess/focuskeeper.h"

#include <QKeyEvent>

FocusKeeper::FocusKeeper(QWidget* window) : QObject(window), m_window(window) {
    window->installEventFilter(this);
}

FocusKeeper& FocusKeeper::of(QWidget* window) {
    auto* const keeper = window->findChild<FocusKeeper*>(QString(), Qt::FindDirectChildrenOnly);
    return keeper != nullptr ? *keeper : *new FocusKeeper(window);
}

void FocusKeeper::rest() {
    if (isResting())
        return;
    m_control = m_window->focusWidget();
    m_returns = false;
    m_window->setFocus();
}

void FocusKeeper::settle(QWidget* before) {
    if (before != nullptr && before != m_window && !before->isEnabled()) {
        m_control = before;
        m_returns = true;
        m_window->setFocus();
    } else if (!isResting()) {
        m_control.clear();
    } else if (m_control != nullptr) {
        const bool back = m_returns && m_control->isEnabled();
        // A window without a focus widget gives the focus to its first control when it is activated.
        (back ? m_control.data() : m_window)->setFocus();
    }
}

bool FocusKeeper::isResting() const {
    const QWidget* const focused = m_window->focusWidget();
    return focused == nullptr || focused == m_window;
}

bool FocusKeeper::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && isResting() && m_control != nullptr && m_control->isEnabled()) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Tab || key == Qt::Key_Backtab) {
            m_control->setFocus(Qt::TabFocusReason);
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}
