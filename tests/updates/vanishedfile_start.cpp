// Linked with the tool's own main: opens the link, chooses a file, and removes it between the window's test
// and the upload. Arguments: which upload ("app", "system" or "model").
#include "app/mainwindow.h"
#include "emulator/line/ptyfront.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <chrono>
#include <iostream>

using namespace std::chrono_literals;

namespace {

constexpr const char* fileName = "vanishing.bin";

/// The task logs its start before it opens the file; "runing" is the system image's spelling.
void removeAtStart(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& line) {
    if (line.startsWith("runn") || line == "runing" || line == "modelUpdateTask running") {
        std::cerr << "started" << std::endl;
        QFile::remove(fileName);
    }
}

QPushButton* button(const char* role, const char* action) {
    for (QWidget* const each : QApplication::topLevelWidgets()) {
        if (auto* const found = each->findChild<QPushButton*>(QString("btn_%1%2").arg(role, action)))
            return found;
    }
    qFatal("no such button");
}

void choose() {
    auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    // Typed: selectFile leaves a name field alone that has the focus.
    dialog->findChild<QLineEdit*>()->setText(QDir::current().absoluteFilePath(fileName));
    QMetaObject::invokeMethod(dialog, "accept");
}

void drive() {
    static emulator::PtyFront camera;
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write");
    file.write("abc");
    file.close();
    const QByteArray asked = QCoreApplication::arguments().value(1).toUtf8();
    const char* const role = asked == "system" ? "fireware" : asked.constData();
    auto* const ports = button("", "open")->window()->findChild<QComboBox*>("sel_ports");
    ports->addItem(QString::fromStdString(camera.portName()));
    ports->setCurrentText(QString::fromStdString(camera.portName()));
    button("", "open")->click();
    QTimer::singleShot(200ms, qApp, &choose);
    button(role, "path")->click();
    qInstallMessageHandler(&removeAtStart);
    button(role, "update")->click();
}

void driveLater() {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QTimer::singleShot(300ms, qApp, &drive);
}
Q_COREAPP_STARTUP_FUNCTION(driveLater)

} // namespace
