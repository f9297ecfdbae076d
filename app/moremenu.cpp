#include "app/moremenu.h"

#include <QStatusBar>

MoreMenu::MoreMenu(QStatusBar* bar) : QPushButton(tr("更多"), bar) {
    setObjectName(QStringLiteral("btn_more"));
    setFlat(true);
    m_menu.setObjectName(QStringLiteral("menu_more"));
    bar->addPermanentWidget(this);
    // The button's own menu would run an event loop inside the press.
    connect(this, &QPushButton::clicked, this, &MoreMenu::popUp);
}

void MoreMenu::popUp() {
    m_menu.popup(mapToGlobal(QPoint(width() - m_menu.sizeHint().width(), -m_menu.sizeHint().height())));
}
