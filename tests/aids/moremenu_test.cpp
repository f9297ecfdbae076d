// The button "更多" and its menu.
#include "aids/checkupwindow.h"
#include "dialogs/doorop.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"
#include "tests/support/recordedwindow.h"

#include <QDesktopServices>
#include <QMenu>
#include <QPushButton>
#include <QStatusBar>

using namespace guitest;

namespace {

class MoreMenuTest : public RecordedWindow {
protected:
    [[nodiscard]] QMenu* menu() const { return find<QMenu>(*window, "menu_more"); }
};

/// Counts the files that are opened.
class FileCounter final : public QObject {
    Q_OBJECT

public:
    FileCounter() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "show"); }
    ~FileCounter() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    int count = 0;

public slots:
    void show(const QUrl&) { ++count; }
};

} // namespace

TEST_F(MoreMenuTest, IsTheLastOfTheStatusBar) {
    const auto* const button = find<QPushButton>(*window, "btn_more");
    EXPECT_EQ(button->text(), "更多");
    EXPECT_EQ(button->parentWidget(), find<QStatusBar>(*window, "statusbar"));
    EXPECT_GT(button->x(), find<QWidget>(*window, "label_link")->x());
}

TEST_F(MoreMenuTest, ListsItsEntries) {
    QStringList texts;
    for (const QAction* const entry : menu()->actions())
        texts.append(entry->text());
    EXPECT_EQ(texts, QStringList({"查找摄像头", "一键检查", "通信记录", "使用手册"}));
}

TEST_F(MoreMenuTest, OpensAboveTheButton) {
    click(*window, "btn_more");
    ASSERT_TRUE(menu()->isVisible());
    const auto* const button = find<QPushButton>(*window, "btn_more");
    EXPECT_LE(menu()->geometry().bottom(), button->mapToGlobal(QPoint(0, button->height())).y());
    menu()->close();
}

TEST_F(MoreMenuTest, KeysOpenAnEntry) {
    find<QPushButton>(*window, "btn_more")->setFocus();
    QTest::keyClick(find<QWidget>(*window, "btn_more"), Qt::Key_Return);
    ASSERT_TRUE(menu()->isVisible());
    QTest::keyClick(menu(), Qt::Key_Down);
    QTest::keyClick(menu(), Qt::Key_Down);
    QTest::keyClick(menu(), Qt::Key_Return);
    EXPECT_EQ(openWindows<CheckupWindow>().size(), 1U);
}

TEST_F(MoreMenuTest, F1OpensTheManual) {
    const FileCounter files;
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QTest::keyClick(window.get(), Qt::Key_F1);
    EXPECT_EQ(files.count, 1);
}

TEST_F(MoreMenuTest, F1OpensTheManualFromOtherWindows) {
    const FileCounter files;
    trigger(*window, "actionOpenCloseDoor");
    DoorOp* const door = openWindows<DoorOp>().at(0);
    door->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(door));
    QTest::keyClick(door, Qt::Key_F1);
    EXPECT_EQ(files.count, 1);
}

TEST_F(MoreMenuTest, OpensAndSendsNothingByItself) {
    QTest::qWait(150);
    EXPECT_TRUE(fake_serial::calls().empty());
    trigger(*window, "actionCheckup");
    EXPECT_TRUE(fake_serial::calls().empty());
}

TEST_F(MoreMenuTest, CheckupWithoutALinkAsksForOne) {
    trigger(*window, "actionCheckup");
    const CheckupWindow& checkup = *openWindows<CheckupWindow>().at(0);
    click(checkup, "btn_start");
    EXPECT_EQ(text(checkup, "label_verdict"), "请先打开串口");
    EXPECT_EQ(statusText(*window), "请先打开串口");
    EXPECT_TRUE(isEnabled(checkup, "btn_start"));
}

#include "moremenu_test.moc"
