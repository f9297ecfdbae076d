#include "app/application.h"

#include "app/programicon.h"

#include <QDebug>
#include <QTimer>

Application::Application(int& argumentCount, char** arguments) : QApplication(argumentCount, arguments) {
    setWindowIcon(programIcon());
    // Desktops find the program's entry and icon by this name.
    setDesktopFileName(QStringLiteral("shelf-camera-tool"));
    installTranslator(&m_qtTexts);
}

Application::~Application() {
    delete m_box;
}

bool Application::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        report(std::current_exception());
        return true;
    }
}

void Application::report(const std::exception_ptr& failure) {
    const FailureText text = failureText(failure);
    qDebug() << text.what;
    emit failureReported(text.what + QLatin1Char(' ') + text.advice);

    const QString message = text.what + QStringLiteral("\n\n") + text.advice;
    const bool alreadyTold = m_failures.contains(message) || (m_box != nullptr && m_box->text() == message);
    if (alreadyTold)
        return;
    m_failures.enqueue(message);
    // After the failed handler and its callers have returned.
    QTimer::singleShot(0, this, &Application::showNextFailure);
}

void Application::showNextFailure() {
    if (m_box != nullptr || m_failures.isEmpty())
        return;
    m_box = new QMessageBox(QMessageBox::Warning, tr("操作失败"), m_failures.dequeue(), QMessageBox::Ok,
                            activeWindow());
    m_box->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_box, &QObject::destroyed, this, &Application::showNextFailure, Qt::QueuedConnection);
    m_box->open();
}
