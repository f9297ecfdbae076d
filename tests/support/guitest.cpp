#include "tests/support/guitest.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QRadioButton>
#include <QRegularExpression>
#include <QStatusBar>

#include <algorithm>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace guitest {

namespace {

constexpr int dialogPollMs = 5;
constexpr int indicatorInset = 8; // pixels

} // namespace

void click(const QWidget& window, const char* name) {
    auto* const widget = find<QWidget>(window, name);
    if (!widget->isEnabled())
        throw std::runtime_error(std::string("disabled and not to be clicked: ") + name);
    // A button with an indicator reacts at the indicator and its text only, not in the empty space behind.
    const bool hasIndicator = qobject_cast<QRadioButton*>(widget) || qobject_cast<QCheckBox*>(widget);
    const QPoint place = hasIndicator ? QPoint(indicatorInset, widget->height() / 2) : QPoint();
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, place);
}

void clickThatThrows(const QWidget& window, const char* name) {
#ifdef __SANITIZE_ADDRESS__
    const __lsan::ScopedDisabler expected;
#endif
    click(window, name);
}

void trigger(const QWidget& window, const char* name) {
    auto* const action = find<QAction>(window, name);
    if (!action->isEnabled())
        throw std::runtime_error(std::string("disabled and not to be chosen: ") + name);
    action->trigger();
}

QStringList exchangingEntries(const QWidget& window) {
    QStringList names;
    for (const QAction* const action : window.findChildren<QAction*>()) {
        if (action->property("exchanges").toBool())
            names.append(action->objectName());
    }
    return names;
}

void chooseForRow(const QWidget& window, int row, const QString& entry) {
    auto* const view = find<QAbstractItemView>(window, "listview");
    view->setCurrentIndex(view->model()->index(row, 0));
    emit view->customContextMenuRequested(QPoint(5, 5));
    const QList<QMenu*> menus = window.findChildren<QMenu*>();
    if (menus.isEmpty())
        return;
    const QList<QAction*> actions = menus.back()->actions();
    const auto chosen = std::find_if(actions.begin(), actions.end(),
                                     [&entry](const QAction* action) { return action->text() == entry; });
    if (chosen != actions.end())
        (*chosen)->trigger();
}

void choosePath(QFileDialog& dialog, const QString& path) {
    if (auto* const name = dialog.findChild<QLineEdit*>("fileNameEdit"))
        name->setText(path);
    else
        dialog.selectFile(path);
    QMetaObject::invokeMethod(&dialog, "accept");
}

void chooseFolder(const QWidget& window, const QString& folder) {
    auto* const dialog = window.findChild<QFileDialog*>();
    if (dialog != nullptr)
        choosePath(*dialog, folder);
}

QString text(const QWidget& window, const char* name) {
    return find<QWidget>(window, name)->property("text").toString();
}

bool isEnabled(const QWidget& window, const char* name) {
    return find<QWidget>(window, name)->isEnabled();
}

QString statusText(const QWidget& window) {
    static const QRegularExpression timeOfDay(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d  "));
    return statusLine(window).remove(timeOfDay);
}

QString statusLine(const QWidget& window) {
    return find<QStatusBar>(window, "statusbar")->currentMessage();
}

bool eventually(const std::function<bool()>& condition, int timeoutMs) {
    return QTest::qWaitFor(condition, timeoutMs);
}

BoxAnswerer::BoxAnswerer() : BoxAnswerer(QMessageBox::Ok) {}

BoxAnswerer::BoxAnswerer(int button) : m_button(button) {
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { answer(); });
    m_timer.start(dialogPollMs);
}

bool BoxAnswerer::waitFor(std::size_t count, int timeoutMs) {
    return eventually(
        [this, count] { return m_seen.size() >= count && QApplication::activeModalWidget() == nullptr; },
        timeoutMs);
}

void BoxAnswerer::answer() {
    auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr)
        return;
    QStringList buttons;
    for (QAbstractButton* const button : box->buttons()) {
        if (box->standardButton(button) != QMessageBox::NoButton)
            buttons.append(QString::number(box->standardButton(button), 16));
    }
    m_seen.push_back({box->windowTitle(), box->text(), box->icon(), buttons, box->detailedText()});
    QAbstractButton* chosen = box->button(static_cast<QMessageBox::StandardButton>(m_button));
    if (chosen == nullptr)
        chosen = box->button(QMessageBox::Ok);
    chosen->click();
}

FileChooser::FileChooser(QString path) : m_path(std::move(path)) {
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { answer(); });
    m_timer.start(dialogPollMs);
}

void FileChooser::answer() {
    auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr)
        return;
    m_seen.push_back({dialog->windowTitle(), dialog->nameFilters(), dialog->parent()});
    if (m_path.isEmpty())
        dialog->reject();
    else
        choosePath(*dialog, m_path);
}

} // namespace guitest
