// The keyboard focus while controls are disabled, and after repeated key presses.
#include "app/mainwindow.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"
#include "tests/support/recordedwindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSpinBox>

#include <gtest/gtest.h>

#include <chrono>
#include <future>

using namespace guitest;
using namespace std::chrono_literals;

namespace {

constexpr const char* mainWindow = "mainwindow";

/// Every write waits until release(), or for a limited time, so that a test which closes the link ends.
class BusyLine {
public:
    BusyLine() {
        fake_serial::onWrite([freed = m_freed.get_future().share()](const auto&) { freed.wait_for(5s); });
    }
    void release() { m_freed.set_value(); }

private:
    std::promise<void> m_freed;
};

/// Records the buttons that a key press reaches, except those of message boxes.
class KeyReceivers final : public QObject {
public:
    explicit KeyReceivers(int key) : m_key(key) { qApp->installEventFilter(this); }

    [[nodiscard]] const QStringList& names() const { return m_names; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto* const button = qobject_cast<QAbstractButton*>(watched);
        if (button != nullptr && event->type() == QEvent::KeyPress &&
            static_cast<QKeyEvent*>(event)->key() == m_key && !button->window()->inherits("QMessageBox"))
            m_names.append(button->window()->objectName() + '/' + button->objectName());
        return false;
    }

private:
    int m_key;
    QStringList m_names;
};

/// Cancels modal dialogs as long as it lives.
class DialogCanceller {
public:
    DialogCanceller() {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [] {
            if (auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                dialog->reject();
        });
        m_timer.start(5);
    }

private:
    QTimer m_timer;
};

class Focus : public RecordedPorts {
protected:
    Focus() {
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        restart();
    }

    /// Activates a new main window with an open link.
    void restart() {
        window.reset();
        window = std::make_unique<MainWindow>();
        window->show();
        activate(window.get());
        click(*window, "btn_open");
    }

    static void activate(QWidget* top) {
        top->activateWindow();
        // A window counts as active when its parent is.
        ASSERT_TRUE(eventually([top] { return QGuiApplication::focusWindow() == top->windowHandle(); }));
    }

    /// Activates the parent of a closed window, as a window manager does.
    void activateNext(const QPointer<QWidget>& opened) const {
        if (QApplication::activeModalWidget() == nullptr)
            activate(opened != nullptr && opened->isVisible() ? opened.data() : window.get());
    }

    /// Activates the main window, or the window of this menu entry.
    QWidget* open(const std::string& entry) {
        if (entry == mainWindow)
            return window.get();
        trigger(*window, entry.c_str());
        QWidget* opened = nullptr;
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            if (widget != window.get() && widget->isVisible())
                opened = widget;
        }
        activate(opened);
        // The address field takes the focus a moment later.
        if (const auto* const address = opened->findChild<QSpinBox*>("hex_sb")) {
            const auto* const digits = address->findChild<QLineEdit*>();
            EXPECT_TRUE(eventually([digits] { return digits->hasSelectedText(); }));
        }
        return opened;
    }

    /// The buttons that the user can press with a key.
    static QStringList buttonsOf(const QWidget& top) {
        QStringList names;
        for (const QAbstractButton* const button : top.findChildren<QAbstractButton*>()) {
            if (button->window() == &top && button->isVisible() && button->isEnabled() &&
                button->focusPolicy() != Qt::NoFocus && !button->visibleRegion().isEmpty())
                names.append(button->objectName());
        }
        return names;
    }

    /// Sends the key to the focused widget.
    void press(int key) const { QTest::keyClick(QGuiApplication::focusWindow(), static_cast<Qt::Key>(key)); }

    void focusAndPress(const char* button, int key = Qt::Key_Return) const {
        find<QWidget>(*window, button)->setFocus();
        press(key);
    }

    [[nodiscard]] QString focused() const {
        const QWidget* const widget = window->focusWidget();
        return widget == nullptr || widget == window.get() ? QString() : widget->objectName();
    }
    bool waitUntilEnabled(const char* name) const {
        return eventually([this, name] { return isEnabled(*window, name); });
    }

    void expectOpen() const { EXPECT_EQ(text(*window, "btn_open"), "关闭串口"); }

    std::unique_ptr<MainWindow> window;
};

struct PressedKey {
    const char* name;
    Qt::Key key;
};

void PrintTo(const PressedKey& pressed, std::ostream* out) {
    *out << pressed.name;
}

class KeyTwice : public Focus, public testing::WithParamInterface<std::tuple<std::string, PressedKey>> {
protected:
    [[nodiscard]] static std::string entry() { return std::get<0>(GetParam()); }
    [[nodiscard]] static Qt::Key key() { return std::get<1>(GetParam()).key; }
};

std::vector<std::string> allWindows() {
    std::vector<std::string> all(menuWindows.begin(), menuWindows.end());
    all.emplace_back(mainWindow);
    return all;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Windows, KeyTwice,
                         testing::Combine(testing::ValuesIn(allWindows()),
                                          testing::Values(PressedKey{"Space", Qt::Key_Space},
                                                          PressedKey{"Enter", Qt::Key_Return})),
                         [](const auto& test) {
                             return std::get<0>(test.param) + std::get<1>(test.param).name;
                         });

TEST_P(KeyTwice, PressesNoOtherButton) {
    const DialogCanceller canceller;
    const QStringList buttons = buttonsOf(*open(entry()));
    EXPECT_EQ(buttons.isEmpty(), entry() == "actionAbout");
    for (const QString& name : buttons) {
        restart();
        QWidget* const top = open(entry());
        const QPointer<QWidget> opened(top);
        const QString whole = top->objectName() + '/' + name;
        find<QAbstractButton>(*top, qPrintable(name))->setFocus();
        const KeyReceivers receivers(key());
        press(key());
        EXPECT_EQ(receivers.names(), QStringList(whole));
        activateNext(opened);
        press(key());
        for (const QString& receiver : receivers.names())
            EXPECT_EQ(receiver, whole);
        if (whole != "MainWindow/btn_open")
            expectOpen();
    }
}

TEST_F(Focus, KeepsASecondPressFromOtherButtons) {
    for (const auto key : {Qt::Key_Return, Qt::Key_Space}) {
        restart();
        BusyLine busy;
        const KeyReceivers receivers(key);
        focusAndPress("btn_appversion", key);
        press(key);
        EXPECT_EQ(receivers.names(), QStringList("MainWindow/btn_appversion"));
        expectOpen();
        busy.release();
    }
}

TEST_F(Focus, ReturnsAfterTheVersionQuery) {
    BusyLine busy;
    focusAndPress("btn_appversion");
    EXPECT_EQ(focused(), "");
    busy.release();
    ASSERT_TRUE(waitUntilEnabled("btn_appversion"));
    EXPECT_EQ(focused(), "btn_appversion");
    EXPECT_EQ(QApplication::focusWidget(), window->focusWidget());
}

TEST_F(Focus, StaysWhereTheUserMovesIt) {
    BusyLine busy;
    focusAndPress("btn_appversion");
    click(*window, "btn_test");
    busy.release();
    ASSERT_TRUE(waitUntilEnabled("btn_appversion"));
    EXPECT_EQ(focused(), "btn_test");
}

TEST_F(Focus, ReturnsToAnUpdateButtonPressedWithoutAFile) {
    for (const char* const name : {"btn_appupdate", "btn_firewareupdate", "btn_modelupdate"}) {
        focusAndPress(name);
        EXPECT_FALSE(isEnabled(*window, name));
        EXPECT_EQ(focused(), "");
        find<QAbstractButton>(*window, "btn_appversion")->click(); // enables all when it ends
        ASSERT_TRUE(waitUntilEnabled(name));
        EXPECT_EQ(focused(), name);
    }
}

TEST_F(Focus, IsNotOnTheCloseButtonAfterActivation) {
    BusyLine busy;
    focusAndPress("btn_appversion");
    open("actionAbout");
    activate(window.get());
    EXPECT_EQ(focused(), "");
    busy.release();
    ASSERT_TRUE(waitUntilEnabled("btn_appversion"));
    EXPECT_EQ(focused(), "btn_appversion");
}

TEST_F(Focus, LeavesTheCloseButtonForAnotherWindow) {
    find<QWidget>(*window, "btn_open")->setFocus();
    QWidget* const about = open("actionAbout");
    press(Qt::Key_Escape);
    EXPECT_TRUE(eventually([about = QPointer<QWidget>(about)] { return about == nullptr; }));
    activate(window.get());
    press(Qt::Key_Return);
    expectOpen();
    press(Qt::Key_Tab); // goes back to it
    EXPECT_EQ(focused(), "btn_open");
}

TEST_F(Focus, LeavesTheButtonThatOpensTheLink) {
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        click(*window, "btn_open");
        ASSERT_EQ(text(*window, "btn_open"), "打开串口");
        ASSERT_EQ(focused(), "btn_open");
        press(key);
        expectOpen();
        press(key);
        expectOpen();
        press(Qt::Key_Tab);
        EXPECT_EQ(focused(), "btn_open");
    }
}

TEST_F(Focus, StaysOnTheOpenButtonWhenThePortCannotBeOpened) {
    click(*window, "btn_open");
    fake_serial::failOpening(ENOENT);
    BoxAnswerer boxes;
    clickThatThrows(*window, "btn_open");
    ASSERT_TRUE(boxes.waitFor(1));
    activate(window.get());
    EXPECT_EQ(focused(), "btn_open");
}

TEST_F(Focus, ReturnsToAListChosenFromWhenTheLinkIsClosed) {
    click(*window, "btn_open");
    auto* const rates = find<QWidget>(*window, "sel_baund");
    rates->setFocus();
    auto* const button = find<QAbstractButton>(*window, "btn_open");
    button->click(); // as an accessibility tool does, without moving the focus
    EXPECT_EQ(focused(), "");
    button->click();
    EXPECT_EQ(focused(), "sel_baund");
}

TEST_F(Focus, DoesNotStayBehindTheCameraSettings) {
    click(*window, "btn_open");
    ASSERT_EQ(focused(), "btn_open");
    QWidget* const settings = open("actionaddress");
    find<QWidget>(*settings, "btn_confirm")->setFocus();
    press(Qt::Key_Return);
    activate(window.get());
    press(Qt::Key_Return);
    EXPECT_EQ(text(*window, "btn_open"), "打开串口");
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), "btn_open");
}

TEST_F(Focus, HasNoHiddenTabStop) {
    for (const char* const entry : menuWindows)
        trigger(*window, entry);
    for (const QWidget* const top : QApplication::topLevelWidgets()) {
        if (!top->isVisible())
            continue;
        for (const QWidget* const control : top->findChildren<QWidget*>()) {
            const bool tabStop = (control->focusPolicy() & Qt::TabFocus) != 0;
            // The list of a combo box and the edit of a number field count as their owner.
            if (!tabStop || control->window() != top || control->objectName().startsWith("qt_"))
                continue;
            EXPECT_TRUE(control->isVisible() && !control->visibleRegion().isEmpty())
                << top->objectName().toStdString() << '/' << control->objectName().toStdString();
        }
    }
}
