#include "app/application.h"

#include "app/outlinestyle.h"
#include "app/programicon.h"
#include "app/readablecolors.h"

#include <QDebug>
#include <QStyle>
#include <QTimer>

#include <algorithm>
#include <chrono>

namespace {

constexpr std::chrono::milliseconds iconDelay{50};

} // namespace

Application::Application(int& argumentCount, char** arguments) : QApplication(argumentCount, arguments) {
    // Its seven pictures are decoded and sent to the display: not before the first window is painted.
    QTimer::singleShot(iconDelay, this, [] { setWindowIcon(programIcon()); });
    // Desktops find the program's entry and icon by this name.
    setDesktopFileName(QStringLiteral("shelf-camera-tool"));
    installTranslator(&m_qtTexts);
    if (style()->name() == QLatin1String("fusion")) // a desktop's own style has its own borders
        setStyle(new OutlineStyle);
    deepenPaleTexts();
}

bool Application::event(QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange)
        deepenPaleTexts();
    return QApplication::event(event);
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
    qDebug() << text.what + text.details;
    emit failureReported(text.inShort());

    const auto isSame = [full = text.inFull()](const FailureText& other) { return other.inFull() == full; };
    if (std::any_of(m_failures.begin(), m_failures.end(), isSame) || (m_box != nullptr && isSame(m_shown)))
        return;
    m_failures.enqueue(text);
    // After the failed handler and its callers have returned.
    QTimer::singleShot(0, this, &Application::showNextFailure);
}

void Application::showNextFailure() {
    if (m_box != nullptr || m_failures.isEmpty())
        return;
    m_shown = m_failures.dequeue();
    m_box = new QMessageBox(QMessageBox::Warning, tr("操作失败"), m_shown.inShort(), QMessageBox::Ok,
                            activeWindow());
    m_box->setDetailedText(m_shown.details);
    m_box->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_box, &QObject::destroyed, this, &Application::showNextFailure, Qt::QueuedConnection);
    m_box->open();
}
