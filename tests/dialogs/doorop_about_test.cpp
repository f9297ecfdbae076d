// The door window and the About window.
#include "app/mainwindow.h"
#include "dialogs/aboutdialog.h"
#include "dialogs/doorop.h"
#include "tests/fake/fakeserial.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"
#include "tests/support/recordedwindow.h"

#include <QApplication>
#include <QFrame>
#include <QLabel>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <ctime>

using namespace guitest;

namespace {

class DoorAndAbout : public RecordedWindow {
protected:
    DoorOp& openDoorWindow() {
        trigger(*window, "actionOpenCloseDoor");
        return *openWindows<DoorOp>().at(0);
    }
};

std::uint32_t sentTime(const fake_serial::Bytes& frame) {
    std::uint32_t seconds = 0;
    for (std::size_t index = 0; index < 4; ++index)
        seconds |= static_cast<std::uint32_t>(frame.at(9 + index)) << (8 * index);
    return seconds;
}

} // namespace

TEST_F(DoorAndAbout, DoorWindowHasItsFormAndTitle) {
    const DoorOp& door = openDoorWindow();
    EXPECT_EQ(door.objectName(), "DoorOp");
    EXPECT_EQ(door.windowTitle(), "开关门");
    EXPECT_EQ(door.size(), QSize(300, 150));
    EXPECT_EQ(text(door, "label"), "开关门");
    EXPECT_EQ(find<QLabel>(door, "label")->alignment(), Qt::AlignCenter);
    EXPECT_TRUE(find<QLabel>(door, "label")->autoFillBackground());
    const auto* const frame = find<QFrame>(door, "frame");
    EXPECT_EQ(frame->minimumHeight(), 36);
    EXPECT_EQ(frame->frameShape(), QFrame::StyledPanel);
    EXPECT_EQ(frame->frameShadow(), QFrame::Raised);
    EXPECT_EQ(frame->layout()->objectName(), "horizontalLayout");
    EXPECT_EQ(door.layout()->objectName(), "verticalLayout");
    EXPECT_EQ(text(door, "btn_open"), "开门");
    EXPECT_EQ(text(door, "btn_close"), "关门");
}

TEST_F(DoorAndAbout, DoorWindowIsDeletedWhenClosed) {
    DoorOp& door = openDoorWindow();
    EXPECT_TRUE(door.isWindow());
    EXPECT_FALSE(door.isModal());
    EXPECT_EQ(door.parentWidget(), window.get());
    EXPECT_TRUE(door.testAttribute(Qt::WA_DeleteOnClose));
    const QPointer<DoorOp> watched(&door);
    door.close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(watched, nullptr);
}

TEST_F(DoorAndAbout, EachClickSendsOneDoorCommand) {
    click(*window, "btn_open");
    const DoorOp& door = openDoorWindow();
    const auto before = static_cast<std::uint32_t>(std::time(nullptr));
    for (const char* const name : {"btn_open", "btn_open", "btn_close"})
        click(door, name);
    const auto frames = fake_serial::writes();
    ASSERT_EQ(frames.size(), 3U);
    const std::uint8_t directions[] = {1, 1, 0};
    for (std::size_t index = 0; index < frames.size(); ++index) {
        ASSERT_EQ(frames[index].size(), 16U);
        EXPECT_EQ(frames[index][3], 0xCD);
        EXPECT_EQ(frames[index][8], directions[index]);
        EXPECT_EQ(frames[index][13], index) << "the sequence number";
        EXPECT_LE(sentTime(frames[index]) - before, 2U);
    }
    EXPECT_EQ(fake_serial::count("read"), 0) << "no answer is waited for";
    EXPECT_TRUE(isEnabled(door, "btn_open"));
    EXPECT_TRUE(isEnabled(door, "btn_close"));
}

TEST_F(DoorAndAbout, DoesNothingWithoutALink) {
    const DoorOp& door = openDoorWindow();
    click(door, "btn_open");
    click(door, "btn_close");
    EXPECT_TRUE(fake_serial::writes().empty());
    EXPECT_EQ(statusText(*window), "请先打开串口");
}

TEST_F(DoorAndAbout, DoorWindowLogsNothingWhenDestroyed) {
    DoorOp& door = openDoorWindow();
    const DebugLog log;
    door.close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(DebugLog::lines(), QStringList());
}

TEST_F(DoorAndAbout, AboutNamesToolMakerAndVersion) {
    const DebugLog log;
    trigger(*window, "actionAbout");
    EXPECT_TRUE(DebugLog::has("about"));
    const AboutDialog& about = *openWindows<AboutDialog>().at(0);
    EXPECT_EQ(about.windowTitle(), "关于");
    EXPECT_EQ(about.size(), QSize(400, 150));
    EXPECT_EQ(about.parent(), nullptr);
    EXPECT_FALSE(about.isModal());
    EXPECT_TRUE(about.testAttribute(Qt::WA_DeleteOnClose));
    EXPECT_EQ(about.layout()->objectName(), "vlayout1");
    const auto labels = about.findChildren<QLabel*>();
    ASSERT_EQ(labels.size(), 2);
    EXPECT_EQ(labels[0]->text(), "摄像头测试工具");
    EXPECT_EQ(labels[0]->font().pointSize(), 12);
    EXPECT_TRUE(qobject_cast<QFrame*>(labels[0]->parentWidget())->autoFillBackground());
    EXPECT_EQ(labels[1]->text(), "版权所有：Tessaly\nVersion:" CAMERA_TOOL_VERSION);
    for (const QLabel* const label : labels)
        EXPECT_EQ(label->alignment(), Qt::AlignCenter);
}

TEST_F(DoorAndAbout, AboutIgnoresItsParent) {
    const AboutDialog about(window.get());
    EXPECT_EQ(about.parent(), nullptr);
}

TEST_F(DoorAndAbout, AboutSpreadsItsRowsWithThreeSpacers) {
    const AboutDialog about;
    const QLayout* const layout = about.layout();
    int spacers = 0;
    for (int index = 0; index < layout->count(); ++index) {
        if (const QSpacerItem* const spacer = layout->itemAt(index)->spacerItem()) {
            ++spacers;
            EXPECT_TRUE(spacer->expandingDirections().testFlag(Qt::Vertical));
        }
    }
    EXPECT_EQ(spacers, 3);
}

TEST_F(DoorAndAbout, AskingTwiceShowsTwoIndependentWindows) {
    trigger(*window, "actionAbout");
    trigger(*window, "actionAbout");
    const auto windows = openWindows<AboutDialog>();
    ASSERT_EQ(windows.size(), 2U);
    windows[0]->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(openWindows<AboutDialog>().size(), 1U);
}
