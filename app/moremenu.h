// The button "更多" of the status bar and its menu.
#pragma once

#include "linkaccess/signs.h"

#include <QAction>
#include <QMenu>
#include <QPushButton>

class QStatusBar;

/// The right end of the status bar, which owns it. User-interface thread.
class MoreMenu final : public QPushButton {
    Q_OBJECT

public:
    explicit MoreMenu(QStatusBar* bar);

    /// Adds an entry that calls a member or function of the context. A shortcut works in every window.
    template <typename Context, typename Slot>
    void addEntry(const char* name, Sign sign, const QString& text, Context* context, Slot slot,
                  const QKeySequence& shortcut = {}) {
        QAction* const entry = m_menu.addAction(text);
        if (sign != Sign::none)
            entry->setIcon(signIcon(sign));
        entry->setObjectName(QLatin1String(name));
        entry->setShortcut(shortcut);
        entry->setShortcutContext(Qt::ApplicationShortcut);
        addAction(entry); // the menu alone is hidden, and with it the shortcut
        connect(entry, &QAction::triggered, context, slot);
    }

private:
    void popUp();

    QMenu m_menu{this};
};
