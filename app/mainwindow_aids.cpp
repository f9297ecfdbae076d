// The entries of the button "更多".
#include "aids/manual.h"
#include "app/mainwindow.h"
#include "app/moremenu.h"
#include "ui_mainwindow.h"

void MainWindow::connectAids() {
    auto* const menu = new MoreMenu(m_ui->statusbar);
    menu->addEntry("actionManual", tr("使用手册"), this, &MainWindow::showManual, QKeySequence::HelpContents);
}

void MainWindow::showManual() {
    openManual(firstFile(manualPlaces(QCoreApplication::applicationDirPath())), this);
}
