#include "demo/tourguide.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileDialog>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QToolTip>
#include <QUrl>

#include <algorithm>
#include <iostream>

namespace {

constexpr int stepMs = 20;

QString textOf(const QWidget& window, const char* name) {
    const auto* const object = window.findChild<QObject*>(QString::fromUtf8(name));
    return object != nullptr ? object->property("text").toString() : QString();
}

/// The window and the tool tip over it, which is a window of its own and may reach beyond.
QPixmap pictureOf(QWidget& window) {
    QPixmap picture = window.grab();
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto tip = std::find_if(windows.begin(), windows.end(), [](const QWidget* each) {
        return each->isVisible() && each->windowType() == Qt::ToolTip;
    });
    if (tip == windows.end())
        return picture;
    const QRect tipPlace(window.mapFromGlobal((*tip)->pos()), (*tip)->size());
    const QRect whole = window.rect().united(tipPlace);
    QPixmap both(whole.size() * picture.devicePixelRatio());
    both.setDevicePixelRatio(picture.devicePixelRatio());
    both.fill(Qt::white);
    QPainter painter(&both);
    painter.drawPixmap(-whole.topLeft(), picture);
    painter.drawPixmap(tipPlace.topLeft() - whole.topLeft(), (*tip)->grab());
    return both;
}

/// Looks for a modal dialog of one kind until it is there, then hands it over once.
template <typename Dialog>
class DialogWatch {
public:
    explicit DialogWatch(std::function<void(Dialog&)> meet) : m_meet(std::move(meet)) {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
        m_timer.start(stepMs);
    }
    [[nodiscard]] bool met() const { return m_met; }

private:
    void look() {
        auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || !dialog->isVisible() || m_met)
            return;
        m_met = true;
        m_timer.stop();
        m_meet(*dialog);
    }

    std::function<void(Dialog&)> m_meet;
    QTimer m_timer;
    bool m_met = false;
};

} // namespace

void TourGuide::say(const QString& text) const {
    std::cout << "tour: " << text.toStdString() << std::endl;
}

void TourGuide::screenshot(QWidget& window, const QString& name) {
    pause(150); // the last change is painted
    const QPixmap picture = pictureOf(window);
    const QString file = QStringLiteral("%1-%2.png").arg(++m_screenshots, 2, 10, QLatin1Char('0')).arg(name);
    expect(picture.save(QDir(m_folder).filePath(file)), QStringLiteral("cannot save ") + file);
}

QWidgetList TourGuide::topLevelWindows() {
    return QApplication::topLevelWidgets();
}

void TourGuide::press(const QWidget& window, const char* name) {
    const auto* const object = window.findChild<QObject*>(QString::fromUtf8(name));
    if (object == nullptr || !object->property("enabled").toBool())
        throw TourFailure(QStringLiteral("cannot press ") + QString::fromUtf8(name));
    if (auto* const action = window.findChild<QAction*>(QString::fromUtf8(name)))
        action->trigger();
    else
        find<QAbstractButton>(window, name).click();
}

void TourGuide::enter(const QWidget& window, const char* name, const QString& text) {
    find<QLineEdit>(window, name).setText(text);
}

void TourGuide::hover(QWidget& widget) {
    const QPoint place(0, widget.height() / 2);
    QHelpEvent event(QEvent::ToolTip, place, widget.mapToGlobal(place));
    QApplication::sendEvent(&widget, &event);
    waitUntil([] { return QToolTip::isVisible(); }, "the tool tip comes");
}

void TourGuide::dropFile(QWidget& window, const QString& path, const QString& screenshotName) {
    QMimeData file;
    file.setUrls({QUrl::fromLocalFile(path)});
    const QPoint middle = window.rect().center();
    QDragEnterEvent enter(middle, Qt::CopyAction, &file, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &enter);
    expect(enter.isAccepted(), QStringLiteral("the window takes no file"));
    screenshot(window, screenshotName);
    QDropEvent drop(middle, Qt::CopyAction, &file, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &drop);
}

void TourGuide::choose(const QWidget& window, const char* name, const QString& item) {
    find<QComboBox>(window, name).setCurrentText(item);
}

void TourGuide::waitUntil(const std::function<bool()>& condition, const char* what, int timeoutMs) {
    QElapsedTimer waited;
    waited.start();
    while (!condition()) {
        if (waited.hasExpired(timeoutMs))
            throw TourFailure(QStringLiteral("waited in vain until ") + QString::fromUtf8(what));
        pause(stepMs);
    }
}

void TourGuide::pause(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
    // Windows closed from the tour's own event handler are otherwise deleted only when that returns.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void TourGuide::expectText(const QWidget& window, const char* name, const QString& expected) {
    try {
        waitUntil([&] { return textOf(window, name) == expected; }, name);
    } catch (const TourFailure&) {
        throw TourFailure(QStringLiteral("%1 shows \"%2\" instead of \"%3\"")
                              .arg(QString::fromUtf8(name), textOf(window, name), expected));
    }
}

void TourGuide::expect(bool condition, const QString& what) {
    if (!condition)
        throw TourFailure(what);
}

void TourGuide::meetBox(const std::function<void()>& action, const QString& text, int button,
                        const QString& name, int timeoutMs) {
    QString shown;
    const DialogWatch<QMessageBox> watch([&](QMessageBox& box) {
        shown = box.text();
        if (!name.isEmpty())
            screenshot(box, name);
        box.button(static_cast<QMessageBox::StandardButton>(button))->click();
    });
    action();
    waitUntil([&] { return watch.met() && !shown.isNull(); }, "a message box comes", timeoutMs);
    waitUntil([] { return QApplication::activeModalWidget() == nullptr; }, "the box is gone");
    expect(shown == text, QStringLiteral("the box says \"%1\" instead of \"%2\"").arg(shown, text));
}

void TourGuide::giveFile(const std::function<void()>& action, const QString& path) {
    const DialogWatch<QFileDialog> watch([&](QFileDialog& dialog) {
        dialog.setDirectory(QFileInfo(path).absolutePath());
        find<QLineEdit>(dialog, "fileNameEdit").setText(path);
        QMetaObject::invokeMethod(&dialog, "accept", Qt::QueuedConnection);
    });
    action();
    waitUntil([&] { return watch.met(); }, "a file dialog comes");
}
