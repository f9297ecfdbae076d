#include "app/windowkeys.h"

#include <QPushButton>
#include <QShortcut>

void pressButtonsByEnter(QWidget* window) {
    // Only dialogs get this by themselves.
    for (QPushButton* const button : window->findChildren<QPushButton*>())
        button->setAutoDefault(true);
}

void closeByEscape(QWidget* window) {
    QObject::connect(new QShortcut(QKeySequence::Cancel, window), &QShortcut::activated, window,
                     &QWidget::close);
}
