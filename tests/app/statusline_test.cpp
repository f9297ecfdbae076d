// Texts of the status bar, with the recording library and a vanishing device.
#include "app/mainwindow.h"
#include "app/statusline.h"
#include "link/camerasp.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"
#include "tests/support/recordedwindow.h"
#include "tests/support/windowactions.h"

#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QStatusBar>

#include <gtest/gtest.h>

#include <chrono>

using namespace guitest;
using namespace std::chrono_literals;

namespace {

constexpr const char* heartbeatAnswer = "AA 5A EE 01 01 00 00 00 01 75 78";
constexpr const char* goneText = "串口转接器已断开，请插好后关闭并重新打开串口";

class StatusBar : public RecordedWindow {};

/// A status line without a main window.
struct Line {
    QStatusBar bar;
    StatusLine line{&bar};

    static std::shared_ptr<const LinkUse> use(const QString& name, std::chrono::milliseconds age,
                                              bool blocking) {
        return std::make_shared<const LinkUse>(
            LinkUse{name, std::chrono::steady_clock::now() - age, blocking});
    }
};

} // namespace

TEST_F(StatusBar, ShowsTheOpenPortAtItsRightEnd) {
    EXPECT_EQ(text(*window, "label_link"), "串口未打开");
    click(*window, "btn_open");
    EXPECT_EQ(text(*window, "label_link"), "COM3，460800，从机地址 1");
    click(*window, "btn_open");
    EXPECT_EQ(text(*window, "label_link"), "串口未打开");
}

TEST_F(StatusBar, ShowsTheRateOfTheOpenPort) {
    find<QComboBox>(*window, "sel_baund")->setCurrentText("115200");
    click(*window, "btn_open");
    chooseCameraType(*window, "rb_quenta");
    EXPECT_EQ(find<QComboBox>(*window, "sel_baund")->currentText(), "230400");
    EXPECT_EQ(text(*window, "label_link"), "COM3，115200，从机地址 3");
    click(*window, "btn_open");
    click(*window, "btn_open");
    EXPECT_EQ(text(*window, "label_link"), "COM3，230400，从机地址 3");
}

TEST_F(StatusBar, ShowsTheOpenedPort) {
    click(*window, "btn_open");
    find<QComboBox>(*window, "sel_ports")->setItemText(0, "COM4"); // the list has changed since
    chooseCameraType(*window, "rb_quenta");
    EXPECT_EQ(text(*window, "label_link"), "COM3，460800，从机地址 3");
}

TEST_F(StatusBar, BeginsWithTheRateWhenNoPortWasChosen) {
    find<QComboBox>(*window, "sel_ports")->clear();
    click(*window, "btn_open");
    EXPECT_EQ(text(*window, "label_link"), "460800，从机地址 1");
}

TEST_F(StatusBar, KeepsItsTextWhenTheMouseIsOnTheMenuBar) {
    click(*window, "btn_open");
    const QString before = statusLine(*window);
    const auto* const bar = find<QMenuBar>(*window, "menubar");
    hoverEntries(*bar);
    EXPECT_EQ(statusLine(*window), before);
    QTest::mouseMove(window->windowHandle(), window->rect().center());
    EXPECT_EQ(statusLine(*window), before);
}

TEST_F(StatusBar, KeepsItsTextWhenTheMouseIsOnAMenu) {
    click(*window, "btn_open");
    const QString before = statusLine(*window);
    const auto* const bar = find<QMenuBar>(*window, "menubar");
    for (QAction* const entry : bar->actions()) {
        const QPoint place = bar->actionGeometry(entry).center();
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, bar->mapTo(window.get(), place));
        ASSERT_TRUE(QTest::qWaitForWindowExposed(entry->menu()));
        hoverEntries(*entry->menu());
        EXPECT_EQ(statusLine(*window), before) << entry->text().toStdString();
        QTest::keyClick(entry->menu(), Qt::Key_Escape);
        EXPECT_EQ(statusLine(*window), before) << entry->text().toStdString();
    }
}

TEST_F(StatusBar, ShowsTheLastOutcomeWithTheTimeOfDay) {
    click(*window, "btn_open");
    fake_serial::willRead(fake_serial::bytes(heartbeatAnswer));
    click(*window, "btn_heartbeat");
    EXPECT_EQ(statusText(*window), "测试心跳：完成");
    const QString line = statusLine(*window);
    EXPECT_TRUE(QRegularExpression("^\\d\\d:\\d\\d:\\d\\d  ").match(line).hasMatch()) << line.toStdString();
    click(*window, "btn_heartbeat");
    EXPECT_EQ(statusText(*window), "测试心跳：没有应答，请检查接线、从机地址和波特率");
}

TEST_F(StatusBar, ReportsAMissingAdapterUntilItIsBack) {
    click(*window, "btn_open");
    fake_serial::throwOn("write");
    click(*window, "btn_heartbeat");
    EXPECT_EQ(statusText(*window), goneText);
    click(*window, "btn_modelinfo");
    EXPECT_EQ(statusText(*window), goneText);
    click(*window, "btn_open");
    EXPECT_EQ(statusText(*window), "串口已关闭");
    fake_serial::reset();
    click(*window, "btn_open");
    EXPECT_EQ(statusText(*window), "已打开 COM3");
    click(*window, "btn_heartbeat");
    EXPECT_EQ(statusText(*window), "测试心跳：没有应答，请检查接线、从机地址和波特率");
}

TEST_F(StatusBar, ReportsNoAdapterWhenNoPortIsChosen) {
    window.reset();
    fake_serial::setPorts({});
    window = std::make_unique<MainWindow>();
    click(*window, "btn_open");
    click(*window, "btn_heartbeat");
    EXPECT_EQ(statusText(*window), "测试心跳：没有打开任何串口，请关闭串口，选择串口后再打开");
}

TEST(StatusLine, ShowsABlockingActionBeforeItBlocks) {
    Line status;
    status.line.useBegan(Line::use("拍照", 0ms, true));
    EXPECT_EQ(status.bar.currentMessage(), "正在拍照…");
}

TEST(StatusLine, ShowsAJobAndItsSecondsAfterHalfASecond) {
    Line status;
    const auto job = Line::use("拍照", 0ms, false);
    status.line.useBegan(job);
    EXPECT_EQ(status.bar.currentMessage(), "");
    EXPECT_TRUE(eventually([&] { return status.bar.currentMessage() == "正在拍照…（0 秒）"; }));
    EXPECT_TRUE(eventually([&] { return status.bar.currentMessage() == "正在拍照…（1 秒）"; }));
    status.line.useEnded(*job, {});
    EXPECT_TRUE(QRegularExpression("^\\d\\d:\\d\\d:\\d\\d  拍照：完成（用时 1\\.\\d 秒）$")
                    .match(status.bar.currentMessage())
                    .hasMatch())
        << status.bar.currentMessage().toStdString();
}

TEST(StatusLine, ForgetsAJobThatEndedWithoutAMessage) {
    Line status;
    auto job = Line::use("读取设置", 800ms, false);
    status.line.useBegan(job);
    EXPECT_TRUE(eventually([&] { return !status.bar.currentMessage().isEmpty(); }));
    job.reset();
    EXPECT_TRUE(eventually([&] { return status.bar.currentMessage().isEmpty(); }));
}

TEST(StatusLine, ShowsNothingOfUnnamedActions) {
    Line status;
    const auto use = Line::use(QString(), 900ms, false);
    status.line.useBegan(use);
    QTest::qWait(400);
    status.line.useEnded(*use, {{CommandEnd::noAnswer}});
    EXPECT_EQ(status.bar.currentMessage(), "");
}
