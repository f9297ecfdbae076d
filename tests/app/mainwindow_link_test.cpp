// Opening and closing the link, with failures.
#include "app/mainwindow.h"
#include "dialogs/doorop.h"
#include "tests/fake/fakeserial.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"
#include "tests/support/recordedwindow.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/windowactions.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>

#include <gtest/gtest.h>
#include <serial/serial.h>

#include <algorithm>
#include <cerrno>

using namespace guitest;

namespace {

constexpr const char* needLink[] = {"btn_heartbeat",    "rb_heartbeat",       "btn_appversion",
                                    "btn_takepic",      "btn_apppath",        "btn_appupdate",
                                    "btn_firewarepath", "btn_firewareupdate", "label_modelinfo",
                                    "btn_modelinfo",    "btn_modelpath",      "et_modelname"};

class MainWindowLink : public RecordedWindow {
protected:
    MainWindowLink() : RecordedWindow({"/dev/ttyA", "/dev/ttyB"}) {}

    void expectClosed() const {
        EXPECT_EQ(text(*window, "btn_open"), "打开串口");
        EXPECT_TRUE(isEnabled(*window, "sel_ports"));
        EXPECT_TRUE(isEnabled(*window, "sel_baund"));
        for (const char* const name : needLink)
            EXPECT_FALSE(isEnabled(*window, name)) << name;
        EXPECT_FALSE(find<QRadioButton>(*window, "rb_heartbeat")->isChecked());
    }

    void expectOpen() const {
        EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
        EXPECT_FALSE(isEnabled(*window, "sel_ports"));
        EXPECT_FALSE(isEnabled(*window, "sel_baund"));
        for (const char* const name : needLink)
            EXPECT_TRUE(isEnabled(*window, name)) << name;
    }
};

std::vector<std::string> opened() {
    std::vector<std::string> found;
    for (const std::string& call : fake_serial::calls()) {
        if (call.starts_with("open "))
            found.push_back(call);
    }
    return found;
}

} // namespace

TEST_F(MainWindowLink, OpensTheChosenPortAtTheChosenRate) {
    const DebugLog log;
    find<QComboBox>(*window, "sel_ports")->setCurrentText("/dev/ttyB");
    find<QComboBox>(*window, "sel_baund")->setCurrentText("115200");
    click(*window, "btn_open");
    ASSERT_EQ(opened().size(), 1U);
    EXPECT_TRUE(opened().front().starts_with("open /dev/ttyB 115200 ")) << opened().front();
    EXPECT_TRUE(DebugLog::has("/dev/ttyB 115200"));
    EXPECT_TRUE(fake_serial::writes().empty()) << "opening sends nothing";
    expectOpen();
    for (const char* const name : {"btn_gyro", "btn_modelupdate", "btn_test", "btn_open"})
        EXPECT_TRUE(isEnabled(*window, name)) << name;
}

TEST_F(MainWindowLink, OpensAPortThatWasAddedToTheListLater) {
    choosePort(*window, "/dev/pts/7");
    click(*window, "btn_open");
    ASSERT_EQ(opened().size(), 1U);
    EXPECT_TRUE(opened().front().starts_with("open /dev/pts/7 460800 "));
}

TEST_F(MainWindowLink, ClosesAndOpensAgainAtAnotherRate) {
    const StdoutCapture out;
    click(*window, "btn_open");
    click(*window, "btn_open");
    expectClosed();
    EXPECT_EQ(fake_serial::count("close"), 1);
    EXPECT_TRUE(out.has("in ~CameraSp"));
    find<QComboBox>(*window, "sel_baund")->setCurrentText("9600");
    click(*window, "btn_open");
    expectOpen();
    ASSERT_EQ(opened().size(), 2U);
    EXPECT_TRUE(opened().back().starts_with("open /dev/ttyA 9600 "));
    const std::vector<std::string> lines = out.lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "in ~CameraSp"), 1);
}

TEST_F(MainWindowLink, ClosingClearsTheVersionsAndTheLamp) {
    click(*window, "btn_open");
    fake_serial::willRead(fake_serial::bytes("AA 5A 01 01 01 00 00 00 01 7F EA"));
    click(*window, "btn_heartbeat");
    ASSERT_TRUE(find<QRadioButton>(*window, "rb_heartbeat")->isChecked());
    find<QLabel>(*window, "tv_appversion")->setText("SDK");
    click(*window, "btn_open");
    EXPECT_EQ(text(*window, "tv_appversion"), "");
    expectClosed();
}

TEST_F(MainWindowLink, ThrowsWhenOpeningFails) {
    fake_serial::failOpening(ENOENT);
    auto* const button = find<QPushButton>(*window, "btn_open");
    EXPECT_THROW(button->click(), serial::IOException);
    expectClosed();
}

TEST_F(MainWindowLink, ShowsAFailedOpeningInBoxAndStatusBar) {
    fake_serial::failOpening(ENOENT);
    BoxAnswerer boxes;
    clickThatThrows(*window, "btn_open");
    expectClosed();
    ASSERT_TRUE(boxes.waitFor(1));
    EXPECT_TRUE(boxes.seen()[0].text.startsWith("打开串口失败：")) << boxes.seen()[0].text.toStdString();
    EXPECT_TRUE(boxes.seen()[0].text.contains("串口不存在或已拔出"));
    EXPECT_FALSE(boxes.seen()[0].text.contains("No such file or directory"));
    EXPECT_TRUE(boxes.seen()[0].details.contains("No such file or directory"));
    EXPECT_EQ(statusText(*window), boxes.seen()[0].text);
    fake_serial::failOpening(0);
    click(*window, "btn_open");
    expectOpen();
}

TEST_F(MainWindowLink, AdvisesOnEachKindOfFailure) {
    const std::vector<std::pair<int, const char*>> advice = {
        {ENOENT, "串口不存在或已拔出"},   {ENXIO, "串口不存在或已拔出"},      {EBUSY, "串口正被其他程序占用"},
        {EACCES, "没有使用该串口的权限"}, {EPERM, "没有使用该串口的权限"},    {ENOTTY, "所选设备不是串口"},
        {EISDIR, "所选设备不是串口"},     {EMFILE, "请检查转接器和所选串口"},
    };
    BoxAnswerer boxes;
    std::size_t count = 0;
    for (const auto& [errorNumber, expected] : advice) {
        fake_serial::failOpening(errorNumber);
        clickThatThrows(*window, "btn_open");
        ASSERT_TRUE(boxes.waitFor(++count)) << errorNumber;
        EXPECT_TRUE(boxes.seen().back().text.contains(expected)) << boxes.seen().back().text.toStdString();
        expectClosed();
    }
}

TEST_F(MainWindowLink, ShowsOneBoxForAThousandFailedOpenings) {
    fake_serial::failOpening(ENOENT);
    auto* const button = find<QPushButton>(*window, "btn_open");
    BoxAnswerer boxes;
    for (int attempt = 0; attempt < 1000; ++attempt)
        clickThatThrows(*window, "btn_open");
    ASSERT_TRUE(boxes.waitFor(1));
    QTest::qWait(50);
    EXPECT_EQ(boxes.seen().size(), 1U);
    expectClosed();
    EXPECT_FALSE(button->isDown());
    fake_serial::failOpening(0);
    click(*window, "btn_open");
    expectOpen();
}

TEST_F(MainWindowLink, OpensALinkThatAnswersNothingWhenThereIsNoPort) {
    find<QComboBox>(*window, "sel_ports")->clear();
    click(*window, "btn_open");
    expectOpen();
    EXPECT_EQ(statusText(*window), "没有可用串口");
    fake_serial::throwOn("write");
    click(*window, "btn_heartbeat");
    EXPECT_FALSE(find<QRadioButton>(*window, "rb_heartbeat")->isChecked());
    click(*window, "btn_open");
    expectClosed();
}

TEST_F(MainWindowLink, ClosesThePortWhenTheWindowIsClosed) {
    click(*window, "btn_open");
    window->close();
    EXPECT_EQ(fake_serial::count("close"), 1);
    expectClosed();
    window.reset();
    EXPECT_EQ(fake_serial::count("close"), 1);
}

TEST_F(MainWindowLink, ClosesThePortWhenTheWindowIsDestroyed) {
    click(*window, "btn_open");
    window.reset();
    EXPECT_EQ(fake_serial::count("close"), 1);
}

TEST_F(MainWindowLink, DestroysItsOtherWindows) {
    trigger(*window, "actionOpenCloseDoor");
    trigger(*window, "actionaddress");
    trigger(*window, "actionAbout");
    ASSERT_EQ(openWindows<QWidget>().size(), 4U);
    window.reset();
    EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
}

TEST_F(MainWindowLink, ClosesItsOtherWindowsWhenItIsClosed) {
    trigger(*window, "actionOpenCloseDoor");
    trigger(*window, "actionAbout");
    window->close();
    for (const QWidget* const widget : QApplication::topLevelWidgets())
        EXPECT_FALSE(widget->isVisible()) << widget->metaObject()->className();
}

TEST_F(MainWindowLink, LendsTheClientToWindowsThatStayOpen) {
    trigger(*window, "actionOpenCloseDoor");
    const auto doors = openWindows<DoorOp>();
    ASSERT_EQ(doors.size(), 1U);
    EXPECT_EQ(statusText(*window), "请先打开串口");
    click(*window, "btn_open");
    click(*doors[0], "btn_open");
    EXPECT_EQ(fake_serial::writes().size(), 1U) << "attached when the link opened";
    click(*window, "btn_open");
    click(*doors[0], "btn_open");
    EXPECT_EQ(fake_serial::writes().size(), 1U) << "detached when it closed";
    EXPECT_EQ(statusText(*window), "请先打开串口");
    click(*window, "btn_open");
    click(*doors[0], "btn_close");
    EXPECT_EQ(fake_serial::writes().size(), 2U) << "attached to the next link";
    EXPECT_EQ(fake_serial::count("close"), 1);
}

TEST_F(MainWindowLink, ForgetsWindowsThatWereClosed) {
    trigger(*window, "actionOpenCloseDoor");
    openWindows<DoorOp>().at(0)->close();
    ASSERT_TRUE(eventually([] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return openWindows<DoorOp>().empty();
    }));
    click(*window, "btn_open");
    click(*window, "btn_open");
    expectClosed();
}

TEST_F(MainWindowLink, SendsNothingForTheTestButton) {
    const DebugLog log;
    click(*window, "btn_open");
    click(*window, "btn_test");
    EXPECT_TRUE(fake_serial::writes().empty());
    EXPECT_TRUE(DebugLog::has("test"));
}
