// The keyboard in the windows of the menu.
#include "app/mainwindow.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"
#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "tests/support/guitest.h"
#include "tests/support/recordedwindow.h"

#include <QGroupBox>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QShortcut>
#include <QToolButton>

#include <gtest/gtest.h>

#include <map>

using namespace guitest;

namespace {

class Keys : public RecordedWindow {
protected:
    Keys() { window->activateWindow(); }

    template <typename Window>
    Window* open(const char* entry) {
        trigger(*window, entry);
        Window* const opened = openWindows<Window>().front();
        opened->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(opened));
        return opened;
    }

    /// The window that a menu entry opens.
    QWidget* openAny(const char* entry) {
        trigger(*window, entry);
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            if (widget != window.get() && widget->isVisible() && !widget->inherits("QMenu"))
                return widget;
        }
        return nullptr;
    }
};

/// The window to which a child belongs; of a menu, that below it.
QWidget* windowOf(QObject* object) {
    while (object != nullptr && (!object->isWidgetType() || object->inherits("QMenu")))
        object = object->parent();
    return object == nullptr ? nullptr : static_cast<QWidget*>(object)->window();
}

using KeyOwners = std::map<QString, QStringList>;

void addKey(KeyOwners& owners, const QKeySequence& key, const QString& owner) {
    if (!key.isEmpty())
        owners[key.toString()].append(owner);
}

/// Keys that work in a window by themselves, with what they do. Mnemonics in a menu need the open menu.
KeyOwners keysOf(QWidget& window) {
    KeyOwners owners;
    for (const QShortcut* const shortcut : window.findChildren<QShortcut*>()) {
        if (windowOf(shortcut->parent()) != &window)
            continue;
        for (const QKeySequence& key : shortcut->keys())
            addKey(owners, key, "shortcut of " + shortcut->parent()->objectName());
    }
    for (const QAction* const action : window.findChildren<QAction*>()) {
        if (windowOf(action->parent()) != &window)
            continue;
        for (const QKeySequence& key : action->shortcuts())
            addKey(owners, key, action->text());
    }
    for (const QWidget* const widget : window.findChildren<QWidget*>()) {
        if (widget->window() != &window || widget->inherits("QComboBox"))
            continue;
        const char* const property = qobject_cast<const QGroupBox*>(widget) != nullptr ? "title" : "text";
        if (qobject_cast<const QAbstractButton*>(widget) != nullptr || widget->inherits("QGroupBox"))
            addKey(owners, QKeySequence::mnemonic(widget->property(property).toString()),
                   widget->objectName());
    }
    for (const QMenuBar* const bar : window.findChildren<QMenuBar*>()) {
        for (const QAction* const menu : bar->actions())
            addKey(owners, QKeySequence::mnemonic(menu->text()), menu->text());
    }
    return owners;
}

void expectNoClash(const KeyOwners& owners, const std::string& window) {
    for (const auto& [key, names] : owners)
        EXPECT_EQ(names.size(), 1) << window << ' ' << key.toStdString() << ": "
                                   << names.join(", ").toStdString();
}

} // namespace

TEST_F(Keys, EscapeClosesEveryWindowOfTheMenu) {
    for (const char* const entry : menuWindows) {
        trigger(*window, entry);
        QWidget* opened = nullptr;
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            if (widget != window.get() && widget->isVisible())
                opened = widget;
        }
        ASSERT_NE(opened, nullptr) << entry;
        opened->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(opened)) << entry;
        const QPointer<QWidget> closed(opened);
        QTest::keyClick(opened, Qt::Key_Escape);
        EXPECT_TRUE(eventually([&] { return closed == nullptr; })) << entry;
    }
}

TEST_F(Keys, EscapeKeepsTheMainWindow) {
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QTest::keyClick(window.get(), Qt::Key_Escape);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(Keys, EnterPressesOnlyTheFocusedButton) {
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QTest::keyClick(window->focusWidget(), Qt::Key_Return); // the open button has the focus at first
    EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
    auto* const name = find<QWidget>(*window, "et_modelname");
    name->setFocus();
    QTest::keyClicks(name, "model_v1");
    QTest::keyClick(name, Qt::Key_Return);
    auto* const sn = open<SetSN>("actionSnSet");
    EXPECT_TRUE(fake_serial::writes().empty()); // no accidental write
    find<QPushButton>(*sn, "btn_getsn")->setFocus();
    QTest::keyClick(find<QPushButton>(*sn, "btn_getsn"), Qt::Key_Enter);
    EXPECT_FALSE(fake_serial::writes().empty());
}

TEST_F(Keys, ClashInNoWindow) {
    const KeyOwners everywhere = keysOf(*window);
    expectNoClash(everywhere, "main window");
    EXPECT_GT(everywhere.size(), 30U);
    std::vector<const char*> entries(menuWindows.begin(), menuWindows.end());
    entries.push_back("actionLineRecord");
    for (const char* const entry : entries) {
        QWidget* const opened = openAny(entry);
        ASSERT_NE(opened, nullptr) << entry;
        KeyOwners owners = keysOf(*opened);
        EXPECT_FALSE(owners.empty()) << entry;
        for (const char* const global : {"F1", "F6", "F7", "F8"})
            owners[global].append("everywhere");
        expectNoClash(owners, entry);
        const QPointer<QWidget> closed(opened);
        opened->close();
        ASSERT_TRUE(eventually([&] { return closed == nullptr; }));
    }
    ImgDialog viewer;
    expectNoClash(keysOf(viewer), "viewer");
}

TEST_F(Keys, PressTheButtonsOfTheMainWindow) {
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QTest::keyClick(window.get(), Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
    QTest::keyClick(window.get(), Qt::Key_T, Qt::ControlModifier);
    ASSERT_EQ(fake_serial::writes().size(), 1U);
    EXPECT_EQ(fake_serial::writes()[0][3], 0x01); // heartbeat
}

TEST_F(Keys, DisabledButtonsStayUnpressed) {
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QTest::keyClick(window.get(), Qt::Key_T, Qt::ControlModifier);
    QTest::keyClick(window.get(), Qt::Key_X, Qt::AltModifier); // of a hidden button
    EXPECT_TRUE(fake_serial::calls().empty());
    EXPECT_TRUE(openWindows<QMessageBox>().empty());
}

TEST_F(Keys, OpenTheMenusAndTheirWindows) {
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QTest::keyClick(window.get(), Qt::Key_F, Qt::AltModifier);
    EXPECT_TRUE(find<QMenu>(*window, "menu_2")->isVisible());
    QTest::keyClick(find<QMenu>(*window, "menu_2"), Qt::Key_Escape);
    QTest::keyClick(window.get(), Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(openWindows<SetPwmHeat>().size(), 1U);
}

TEST_F(Keys, ChooseTheFileOfTheFocusedPanel) {
    click(*window, "btn_open");
    FileChooser files({});
    struct Case {
        const char* focus;
        const char* title;
    };
    for (const Case& each :
         {Case{"btn_heartbeat", "打开app固件"}, Case{"et_modelname", "打开模型文件"},
          Case{"btn_firewareupdate", "打开系统固件"}, Case{"btn_appupdate", "打开app固件"}}) {
        find<QWidget>(*window, each.focus)->setFocus();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        QTest::keyClick(window.get(), Qt::Key_O, Qt::ControlModifier);
        ASSERT_FALSE(files.seen().empty());
        EXPECT_EQ(files.seen().back().title, each.title) << each.focus;
    }
}

TEST_F(Keys, RefreshAndTakeAPictureInAList) {
    click(*window, "btn_open");
    auto* const list = open<PicList>("actionPicInfo");
    QTest::keyClick(list, Qt::Key_F5);
    ASSERT_FALSE(fake_serial::writes().empty());
    EXPECT_EQ(fake_serial::writes().back()[3], 0x07); // catalogue
    QTest::keyClick(list, Qt::Key_P, Qt::ControlModifier);
    EXPECT_EQ(fake_serial::writes().back()[3], 0x06); // capture
}

TEST_F(Keys, TellThemselvesInToolTips) {
    EXPECT_EQ(find<QWidget>(*window, "btn_heartbeat")->toolTip(), "按键：Ctrl+T");
    auto* const list = open<PicList>("actionPicInfo");
    EXPECT_EQ(find<QWidget>(*list, "btn_copy_list")->toolTip(),
              "复制为表格，可以粘贴到电子表格（Ctrl+Shift+C）");
}

TEST_F(Keys, EveryControlHasANameToBeReadAloud) {
    for (const char* const entry : menuWindows)
        trigger(*window, entry);
    int looked = 0;
    for (const QWidget* const top : QApplication::topLevelWidgets()) {
        for (const QWidget* const control : top->findChildren<QWidget*>()) {
            if (control->objectName().startsWith("qt_") || control->focusPolicy() == Qt::NoFocus ||
                control->inherits("QComboBoxListView") || control->inherits("QMenuBar") ||
                control->inherits("QMenu"))
                continue;
            const bool named = !control->accessibleDescription().isEmpty() ||
                               !control->accessibleName().isEmpty() ||
                               !control->property("text").toString().isEmpty();
            EXPECT_TRUE(named) << top->metaObject()->className() << ' ' << control->metaObject()->className()
                               << ' ' << control->objectName().toStdString();
            ++looked;
        }
    }
    EXPECT_GT(looked, 30);
}
