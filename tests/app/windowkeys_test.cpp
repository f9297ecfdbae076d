// The keyboard in the windows of the menu.
#include "app/mainwindow.h"
#include "dialogs/doorop.h"
#include "dialogs/setsn.h"
#include "pictures/piclist.h"
#include "tests/support/guitest.h"
#include "tests/support/recordedwindow.h"

#include <QPushButton>

#include <gtest/gtest.h>

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
};

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
