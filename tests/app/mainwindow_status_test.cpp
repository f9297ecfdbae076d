// The status controls: requests and texts, with and without a link.
#include "app/mainwindow.h"
#include "dialogs/doorop.h"
#include "dialogs/setcameraprotocol.h"
#include "tests/fake/fakeserial.h"
#include "tests/support/answers.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"
#include "tests/support/recordedwindow.h"
#include "tests/support/windowactions.h"

#include <QApplication>
#include <QComboBox>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QThreadPool>

#include <gtest/gtest.h>

using namespace guitest;

namespace {

constexpr const char* heartbeatRequest = "AA 5A 01 01 01 00 00 00 00 5E FA";
constexpr const char* heartbeatAnswer = "AA 5A 01 01 01 00 00 00 01 7F EA";
constexpr const char* rebootRequest = "AA 5A 01 05 00 00 00 00 BB 68";
constexpr const char* rebootAnswer = "AA 5A 01 05 01 00 00 00 00 FF FC";
constexpr const char* resetRequest = "AA 5A 01 04 00 00 00 00 EA C2";
constexpr const char* resetAnswer = "AA 5A 01 04 01 00 00 00 00 5F B9";

const std::vector<const char*> otherEntries = {"actionaddress", "actionOriginCmdExtraAdd", "actionAbout"};

class MainWindowStatus : public RecordedWindow {
protected:
    MainWindowStatus() : RecordedWindow({"/dev/ttyA"}) {}

    void open() { click(*window, "btn_open"); }

    static std::vector<std::string> sent() {
        std::vector<std::string> frames;
        for (const fake_serial::Bytes& frame : fake_serial::writes())
            frames.push_back(fake_serial::hex(frame));
        return frames;
    }

    [[nodiscard]] bool lamp() const { return find<QRadioButton>(*window, "rb_heartbeat")->isChecked(); }
};

fake_serial::Bytes textBytes(const std::string& text) {
    return {text.begin(), text.end()};
}

void scriptVersions() {
    fake_serial::onWrite([](const fake_serial::Bytes& frame) {
        if (frame.size() < 9)
            return;
        const std::string value = frame[3] == 0xC2 ? "qv" : frame[8] == 0x02 ? "app" : "system";
        fake_serial::willRead(answers::property(frame[3], frame[8], value));
    });
}

} // namespace

TEST_F(MainWindowStatus, LightsTheLampOnAHeartbeat) {
    const DebugLog log;
    open();
    fake_serial::willRead(fake_serial::bytes(heartbeatAnswer));
    click(*window, "btn_heartbeat");
    EXPECT_EQ(sent(), std::vector<std::string>{heartbeatRequest});
    EXPECT_TRUE(lamp());
    EXPECT_TRUE(DebugLog::has("heartbeat result: true"));
}

TEST_F(MainWindowStatus, SwitchesTheLampOffWithoutAHeartbeat) {
    open();
    fake_serial::willRead(fake_serial::bytes(heartbeatAnswer));
    click(*window, "btn_heartbeat");
    ASSERT_TRUE(lamp());
    click(*window, "btn_heartbeat");
    EXPECT_FALSE(lamp());
    EXPECT_TRUE(find<QRadioButton>(*window, "rb_heartbeat")->isCheckable());
}

TEST_F(MainWindowStatus, ShowsVersionsAndLocksExchanges) {
    scriptVersions();
    const DebugLog log;
    trigger(*window, "actionOpenCloseDoor");
    const DoorOp* const door = openWindows<DoorOp>().at(0);
    open();
    click(*window, "btn_appversion");
    EXPECT_EQ(text(*window, "tv_appversion"), "。。。。");
    for (const char* const name : exchangeControls)
        EXPECT_FALSE(isEnabled(*window, name)) << name;
    EXPECT_EQ(exchangingEntries(*window).size(), 10);
    for (const QString& name : exchangingEntries(*window))
        EXPECT_FALSE(find<QAction>(*window, qPrintable(name))->isEnabled()) << qPrintable(name);
    for (const char* const name : otherEntries)
        EXPECT_TRUE(find<QAction>(*window, name)->isEnabled()) << name;
    EXPECT_FALSE(isEnabled(*window, "sel_ports"));
    EXPECT_FALSE(door->isEnabled());
    EXPECT_TRUE(isEnabled(*window, "btn_open"));

    ASSERT_TRUE(eventually([&] { return text(*window, "tv_appversion") != "。。。。"; }));
    EXPECT_EQ(text(*window, "tv_appversion"), "SDK版本:app\n系统版本:system\nQV-APP版本:qv");
    EXPECT_EQ(sent(), (std::vector<std::string>{"AA 5A 01 02 01 00 00 00 02 FC 14",
                                                "AA 5A 01 02 01 00 00 00 15 2A 76",
                                                "AA 5A 01 C2 01 00 00 00 D4 77 01"}));
    EXPECT_TRUE(DebugLog::has("app   version1 system  version2 qv   version3"));
    for (const char* const name : exchangeControls)
        EXPECT_TRUE(isEnabled(*window, name)) << name;
    for (const QString& name : exchangingEntries(*window))
        EXPECT_TRUE(find<QAction>(*window, qPrintable(name))->isEnabled()) << qPrintable(name);
    EXPECT_TRUE(door->isEnabled());
    EXPECT_FALSE(isEnabled(*window, "sel_ports"));
}

TEST_F(MainWindowStatus, LeavesMissingVersionsEmpty) {
    open();
    click(*window, "btn_appversion");
    ASSERT_TRUE(eventually([&] { return text(*window, "tv_appversion") != "。。。。"; }));
    EXPECT_EQ(text(*window, "tv_appversion"), "SDK版本:\n系统版本:\nQV-APP版本:");
}

TEST_F(MainWindowStatus, DropsVersionsWhoseLinkWasClosed) {
    scriptVersions();
    open();
    click(*window, "btn_appversion");
    click(*window, "btn_open");
    EXPECT_EQ(text(*window, "btn_open"), "打开串口");
    QThreadPool::globalInstance()->waitForDone();
    QTest::qWait(50);
    EXPECT_EQ(text(*window, "tv_appversion"), "");
    EXPECT_TRUE(isEnabled(*window, "sel_ports"));
    EXPECT_FALSE(isEnabled(*window, "btn_heartbeat"));
    EXPECT_TRUE(isEnabled(*window, "btn_gyro"));
    EXPECT_TRUE(isEnabled(*window, "btn_modelupdate"));
    EXPECT_TRUE(find<QAction>(*window, "actionReboot")->isEnabled());
}

TEST_F(MainWindowStatus, DropsVersionsOfAnEarlierLink) {
    scriptVersions();
    open();
    click(*window, "btn_appversion");
    click(*window, "btn_open");
    click(*window, "btn_open");
    QThreadPool::globalInstance()->waitForDone();
    QTest::qWait(50);
    EXPECT_EQ(text(*window, "tv_appversion"), "");
    EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
    EXPECT_TRUE(isEnabled(*window, "btn_heartbeat"));
}

TEST_F(MainWindowStatus, MayBeDestroyedDuringTheVersionQuery) {
    scriptVersions();
    open();
    click(*window, "btn_appversion");
    window.reset();
    EXPECT_EQ(fake_serial::count("close"), 1);
    QThreadPool::globalInstance()->waitForDone();
    QTest::qWait(20);
    EXPECT_EQ(fake_serial::count("close"), 1);
}

TEST_F(MainWindowStatus, AsksCamerasOfType3ForTheirVersionOverJson) {
    const DebugLog log;
    chooseCameraType(*window, "rb_quenta");
    open();
    fake_serial::willRead(answers::json(R"({"result":0,"version":"1.0.3"})"));
    click(*window, "btn_appversion");
    EXPECT_EQ(text(*window, "tv_appversion"), "APP版本:1.0.3");
    ASSERT_EQ(fake_serial::writes().size(), 1U);
    EXPECT_EQ(fake_serial::writes()[0].size(), 72U);
    EXPECT_EQ(fake_serial::writes()[0][0], 0x01);
    const QStringList lines = DebugLog::lines();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const QString& line) {
        return line.startsWith("quenta-jintai-version:") && line.contains("1.0.3");
    }));
    EXPECT_TRUE(isEnabled(*window, "btn_heartbeat"));
}

TEST_F(MainWindowStatus, ShowsErrorsOfAJsonAnswer) {
    struct Case {
        std::string answer;
        QString shown;
    };
    const std::vector<Case> cases = {
        {R"({"result":{"version":"2.1"}})", "APP版本:2.1"},
        {R"({"result":0})", "APP版本:"},
        {R"({"version":12})", "APP版本:12"},
        {R"([1,2])", "APP版本:"},
        {R"({"version":)", "解析失败:unterminated object"},
        {R"({"version" "1"})", "解析失败:missing name separator"},
    };
    chooseCameraType(*window, "rb_quenta");
    open();
    for (const Case& each : cases) {
        fake_serial::willRead(answers::json(each.answer));
        click(*window, "btn_appversion");
        EXPECT_EQ(text(*window, "tv_appversion"), each.shown) << each.answer;
    }
    click(*window, "btn_appversion"); // no answer at all
    EXPECT_EQ(text(*window, "tv_appversion"), "解析失败:illegal value");
}

TEST_F(MainWindowStatus, ShowsTheModelInformation) {
    const DebugLog log;
    open();
    fake_serial::willRead(answers::property(0xC2, 0xCC, "model_v7"));
    click(*window, "btn_modelinfo");
    EXPECT_EQ(sent(), std::vector<std::string>{"AA 5A 01 C2 01 00 00 00 CC 4E 92"});
    EXPECT_EQ(text(*window, "label_modelinfo"), "模型信息:model_v7");
    EXPECT_TRUE(DebugLog::has("modelInfo: model_v7"));
    click(*window, "btn_modelinfo");
    EXPECT_EQ(text(*window, "label_modelinfo"), "模型信息:");
}

TEST_F(MainWindowStatus, ReportsThePassedGyroTest) {
    open();
    fake_serial::willRead(textBytes("3success"));
    BoxAnswerer boxes;
    click(*window, "btn_gyro");
    ASSERT_EQ(boxes.seen().size(), 1U);
    EXPECT_EQ(boxes.seen()[0].title, "");
    EXPECT_EQ(boxes.seen()[0].text, "陀螺仪测试成功");
    EXPECT_EQ(boxes.seen()[0].icon, QMessageBox::Information);
    EXPECT_EQ(sent(), std::vector<std::string>{"AA 5A 01 0F 01 00 00 00 03 9E 4A"});
}

TEST_F(MainWindowStatus, ShowsAnyOtherGyroTestAnswer) {
    const std::vector<std::string> answers = {"3fail", "success", "3success ", "", "失败"};
    open();
    BoxAnswerer boxes;
    for (const std::string& each : answers) {
        if (each.empty())
            fake_serial::willTimeOut();
        else
            fake_serial::willRead(textBytes(each));
        click(*window, "btn_gyro");
        EXPECT_EQ(boxes.seen().back().text, "陀螺仪测试失败:" + QString::fromStdString(each));
        EXPECT_EQ(boxes.seen().back().title, "");
    }
    EXPECT_EQ(boxes.seen().size(), answers.size());
}

namespace {

struct Confirmed {
    const char* entry;
    const char* title;
    const char* question;
    const char* request;
    const char* goodAnswer;
    const char* success;
    const char* failure;
};

void PrintTo(const Confirmed& command, std::ostream* out) {
    *out << command.entry;
}

class MainWindowConfirmed : public MainWindowStatus, public testing::WithParamInterface<Confirmed> {};

const Confirmed confirmedCommands[] = {
    {"actionReboot", "确认重启", "是否重启摄像头？", rebootRequest, rebootAnswer,
     "重启摄像头成功，请稍等摄像头进行重启", "摄像头重启失败"},
    {"actionResetFactory", "确认初始化", "是否初始化摄像头？", resetRequest, resetAnswer,
     "初始化成功,请稍等10秒待摄像头初始化", "初始化失败"},
};

} // namespace

INSTANTIATE_TEST_SUITE_P(RebootAndReset, MainWindowConfirmed, testing::ValuesIn(confirmedCommands),
                         [](const auto& each) { return std::string(each.param.entry).substr(6); });

TEST_P(MainWindowConfirmed, SendsNothingOnNo) {
    open();
    BoxAnswerer boxes(QMessageBox::No);
    trigger(*window, GetParam().entry);
    ASSERT_EQ(boxes.seen().size(), 1U);
    EXPECT_EQ(boxes.seen()[0].title, GetParam().title);
    EXPECT_EQ(boxes.seen()[0].text, GetParam().question);
    EXPECT_EQ(boxes.seen()[0].icon, QMessageBox::Question);
    QStringList buttons = boxes.seen()[0].buttons;
    buttons.sort();
    EXPECT_EQ(buttons,
              QStringList({QString::number(QMessageBox::No, 16), QString::number(QMessageBox::Yes, 16)}));
    EXPECT_TRUE(fake_serial::writes().empty());
}

TEST_P(MainWindowConfirmed, SendsTheCommandOnYes) {
    open();
    fake_serial::willRead(fake_serial::bytes(GetParam().goodAnswer));
    BoxAnswerer boxes(QMessageBox::Yes);
    trigger(*window, GetParam().entry);
    ASSERT_EQ(boxes.seen().size(), 2U);
    EXPECT_EQ(boxes.seen()[1].title, "");
    EXPECT_EQ(boxes.seen()[1].text, GetParam().success);
    EXPECT_EQ(sent(), std::vector<std::string>{GetParam().request});
}

TEST_P(MainWindowConfirmed, ReportsFailure) {
    open();
    BoxAnswerer boxes(QMessageBox::Yes);
    trigger(*window, GetParam().entry);
    ASSERT_EQ(boxes.seen().size(), 2U);
    EXPECT_EQ(boxes.seen()[1].title, "");
    EXPECT_EQ(boxes.seen()[1].text, GetParam().failure);
}

TEST_P(MainWindowConfirmed, FailsWithoutALinkAfterTheQuestion) {
    BoxAnswerer boxes(QMessageBox::Yes);
    trigger(*window, GetParam().entry);
    ASSERT_EQ(boxes.seen().size(), 2U);
    EXPECT_EQ(boxes.seen()[1].text, GetParam().failure);
    EXPECT_EQ(statusText(*window), "请先打开串口");
}

TEST_F(MainWindowStatus, FailsTheGyroTestWithoutALink) {
    BoxAnswerer boxes;
    click(*window, "btn_gyro");
    ASSERT_EQ(boxes.seen().size(), 1U);
    EXPECT_EQ(boxes.seen()[0].text, "陀螺仪测试失败:");
    EXPECT_EQ(statusText(*window), "请先打开串口");
}

namespace {

/// Answers the next input dialog; notes how it looked.
struct InputAnswerer {
    explicit InputAnswerer(std::function<void(QInputDialog&)> answerDialog) {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this, answerDialog = std::move(answerDialog)] {
            if (auto* const dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget())) {
                title = dialog->windowTitle();
                prompt = dialog->labelText();
                value = dialog->intValue();
                minimum = dialog->intMinimum();
                maximum = dialog->intMaximum();
                step = dialog->intStep();
                answerDialog(*dialog);
            }
        });
        timer.start(5);
    }

    QTimer timer;
    QString title;
    QString prompt;
    int value = -1;
    int minimum = -1;
    int maximum = -1;
    int step = -1;
};

void accept(QInputDialog& dialog, const char* typed) {
    auto* const field = dialog.findChild<QSpinBox*>();
    field->selectAll();
    QTest::keyClicks(field, typed);
    dialog.accept();
}

} // namespace

TEST_F(MainWindowStatus, AsksForThePictureOffset) {
    const InputAnswerer input([](QInputDialog& dialog) { dialog.reject(); });
    trigger(*window, "actionOriginCmdExtraAdd");
    EXPECT_EQ(input.title, "设置附加值");
    EXPECT_EQ(input.prompt, "请输入需要附加到图片命令的值");
    EXPECT_EQ(input.value, 0);
    EXPECT_EQ(input.minimum, 0);
    EXPECT_EQ(input.maximum, 250);
    EXPECT_EQ(input.step, 1);
}

TEST_F(MainWindowStatus, TakesAPictureOffsetOfAtMost250) {
    const InputAnswerer input([](QInputDialog& dialog) {
        auto* const field = dialog.findChild<QSpinBox*>();
        field->selectAll();
        QTest::keyClicks(field, "251");
        EXPECT_EQ(field->text(), "25") << "the third digit is refused";
        dialog.reject();
    });
    trigger(*window, "actionOriginCmdExtraAdd");
    EXPECT_EQ(input.maximum, 250);
}

TEST_F(MainWindowStatus, KeepsGoingWhenAnOffsetIsEnteredWithoutALink) {
    const InputAnswerer input([](QInputDialog& dialog) { accept(dialog, "7"); });
    trigger(*window, "actionOriginCmdExtraAdd");
    EXPECT_EQ(input.value, 0);
    open();
    EXPECT_TRUE(fake_serial::writes().empty());
}

TEST_F(MainWindowStatus, SendsTheChosenAddressWithTheFirstFrame) {
    chooseCameraType(*window, "rb_dvl");
    open();
    fake_serial::willRead(fake_serial::bytes("AA 5A EE 01 01 00 00 00 01 75 78"));
    click(*window, "btn_heartbeat");
    EXPECT_EQ(sent(), std::vector<std::string>{"AA 5A EE 01 01 00 00 00 00 54 68"});
    EXPECT_TRUE(lamp());
    click(*window, "btn_open");
    click(*window, "btn_open");
    click(*window, "btn_heartbeat");
    EXPECT_EQ(sent().back(), "AA 5A EE 01 01 00 00 00 00 54 68") << "applied again after opening again";
}

TEST_F(MainWindowStatus, AppliesTheAddressToAnOpenLinkAtOnce) {
    open();
    chooseCameraType(*window, "rb_dx_dt");
    click(*window, "btn_heartbeat");
    EXPECT_EQ(sent(), std::vector<std::string>{"AA 5A 02 01 01 00 00 00 00 DC 22"});
    EXPECT_EQ(fake_serial::count("close"), 0) << "the link stays as it is";
}

TEST_F(MainWindowStatus, ShowsTheAddressInDecimalAndChoosesTheRateOfTheType) {
    const auto* const rates = find<QComboBox>(*window, "sel_baund");
    chooseCameraType(*window, "rb_quenta");
    EXPECT_EQ(text(*window, "label_slaveinfo"), "当前从机地址:3");
    EXPECT_EQ(rates->currentText(), "230400");
    find<QComboBox>(*window, "sel_baund")->setCurrentText("9600");
    chooseCameraType(*window, "rb_dvl");
    EXPECT_EQ(text(*window, "label_slaveinfo"), "当前从机地址:238");
    EXPECT_EQ(rates->currentText(), "460800");
    open();
    EXPECT_TRUE(fake_serial::calls().front().starts_with("open /dev/ttyA 460800 "));
}

TEST_F(MainWindowStatus, ChoosesTheRateAlsoWhenTheAddressWindowIsOnlyClosed) {
    find<QComboBox>(*window, "sel_baund")->setCurrentText("9600");
    trigger(*window, "actionaddress");
    SetCameraProtocol* const dialog = openWindows<SetCameraProtocol>().at(0);
    click(*dialog, "rb_quenta");
    dialog->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(find<QComboBox>(*window, "sel_baund")->currentText(), "460800");
    EXPECT_EQ(text(*window, "label_slaveinfo"), "当前从机地址:1");
}

TEST_F(MainWindowStatus, SurvivesALinkWhoseDeviceIsGone) {
    open();
    for (const char* const call : {"setTimeout", "write", "read", "flush", "flushInput"})
        fake_serial::throwOn(call);
    click(*window, "btn_heartbeat");
    EXPECT_FALSE(lamp());
    click(*window, "btn_modelinfo");
    EXPECT_EQ(text(*window, "label_modelinfo"), "模型信息:");
    click(*window, "btn_appversion");
    ASSERT_TRUE(eventually([&] { return text(*window, "tv_appversion") != "。。。。"; }));
    EXPECT_EQ(text(*window, "tv_appversion"), "SDK版本:\n系统版本:\nQV-APP版本:");
    BoxAnswerer boxes(QMessageBox::Yes);
    trigger(*window, "actionReboot");
    EXPECT_EQ(boxes.seen().back().text, "摄像头重启失败");
    click(*window, "btn_open");
    EXPECT_EQ(text(*window, "btn_open"), "打开串口");
}
