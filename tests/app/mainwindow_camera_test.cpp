// The main window, the real serial library and a virtual camera on a pseudo-terminal.
#include "dialogs/doorop.h"
#include "pictures/piclist.h"
#include "tests/support/camerawindow.h"
#include "tests/support/printing.h"
#include "tests/support/windowactions.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QThreadPool>

#include <gtest/gtest.h>

using namespace guitest;
using emulator::CameraRecord;
using emulator::CameraState;
using emulator::VirtualCamera;

namespace {

class MainWindowAndCamera : public testing::Test, protected CameraWindow {
protected:
    MainWindowAndCamera() : CameraWindow(emulator::settingsForType(emulator::CameraType::ostra)) {}

    ~MainWindowAndCamera() override {
        window.reset();
        // The window never sends a broken frame.
        EXPECT_EQ(record().badFrames, 0U);
        EXPECT_EQ(record().garbageBytes, 0U);
    }

    bool heartbeat() {
        click(*window, "btn_heartbeat");
        return find<QRadioButton>(*window, "rb_heartbeat")->isChecked();
    }
    /// The text of the versions once the query is over.
    QString versions() {
        click(*window, "btn_appversion");
        EXPECT_TRUE(eventually([this] { return text(*window, "tv_appversion") != "。。。。"; }));
        return text(*window, "tv_appversion");
    }
    QString modelInfo() {
        click(*window, "btn_modelinfo");
        return text(*window, "label_modelinfo");
    }
    QString gyro() {
        BoxAnswerer boxes;
        click(*window, "btn_gyro");
        return boxes.seen().at(0).text;
    }
    QString confirmed(const char* entry) {
        BoxAnswerer boxes(QMessageBox::Yes);
        trigger(*window, entry);
        return boxes.seen().at(1).text;
    }
};

} // namespace

TEST_F(MainWindowAndCamera, OpensTestsClosesAndOpensAgain) {
    for (int round = 0; round < 3; ++round) {
        open();
        EXPECT_TRUE(heartbeat()) << round;
        close();
        EXPECT_FALSE(find<QRadioButton>(*window, "rb_heartbeat")->isChecked());
    }
    EXPECT_EQ(record().count(0x01), 3U);
}

TEST_F(MainWindowAndCamera, ShowsAnswersOfTheCamera) {
    camera.withCamera([](VirtualCamera& each) {
        each.state().appVersion = "9.8.7";
        each.state().systemVersion = "6.5.4";
        each.state().qvVersion = "qv 3.2.1";
        each.state().modelInfo = "model_v9 货架";
    });
    open();
    EXPECT_EQ(versions(), "SDK版本:9.8.7\n系统版本:6.5.4\nQV-APP版本:qv 3.2.1");
    EXPECT_EQ(modelInfo(), "模型信息:model_v9 货架");
    EXPECT_EQ(gyro(), "陀螺仪测试成功");
    camera.withCamera([](VirtualCamera& each) { each.state().gyroText = "3fail"; });
    EXPECT_EQ(gyro(), "陀螺仪测试失败:3fail");
}

TEST_F(MainWindowAndCamera, RebootsTheCameraAndFindsItAgain) {
    camera.withCamera(
        [](VirtualCamera& each) { each.settings().rebootTime = std::chrono::milliseconds(600); });
    open();
    EXPECT_EQ(confirmed("actionReboot"), "重启摄像头成功，请稍等摄像头进行重启");
    EXPECT_EQ(record().count(0x05), 1U);
    EXPECT_FALSE(heartbeat()) << "silent while it restarts";
    EXPECT_TRUE(eventually([this] { return heartbeat(); }));
}

TEST_F(MainWindowAndCamera, ResetsTheCameraToItsFactorySettings) {
    camera.withCamera([](VirtualCamera& each) {
        each.settings().factoryResetTime = std::chrono::milliseconds(300);
        each.state().properties[emulator::property::heaterDuty] = {60};
    });
    open();
    EXPECT_EQ(confirmed("actionResetFactory"), "初始化成功,请稍等10秒待摄像头初始化");
    EXPECT_EQ(record().count(0x04), 1U);
    EXPECT_EQ(state().properties[emulator::property::heaterDuty], emulator::Bytes{30});
}

TEST_F(MainWindowAndCamera, ReportsARefusedRebootAndReset) {
    fault("result=1@reboot");
    fault("result=1@reset");
    open();
    EXPECT_EQ(confirmed("actionReboot"), "摄像头重启失败");
    EXPECT_EQ(confirmed("actionResetFactory"), "初始化失败");
}

TEST_F(MainWindowAndCamera, OpensAndClosesTheDoor) {
    open();
    trigger(*window, "actionOpenCloseDoor");
    const DoorOp& door = *openWindows<DoorOp>().at(0);
    for (const char* const name : {"btn_open", "btn_open", "btn_close"})
        click(door, name);
    ASSERT_TRUE(eventually([this] { return state().doorLog.size() == 3; }));
    const auto events = state().doorLog;
    EXPECT_TRUE(events[0].open && events[1].open && !events[2].open);
    for (const auto& event : events)
        EXPECT_TRUE(event.sequenceRight);
    EXPECT_EQ(events[0].sequence, 0);
    EXPECT_TRUE(heartbeat()) << "no answer of the door is left behind";
}

TEST_F(MainWindowAndCamera, StartsTheDoorsSequenceAgainWithANewLink) {
    trigger(*window, "actionOpenCloseDoor");
    const DoorOp& door = *openWindows<DoorOp>().at(0);
    open();
    click(door, "btn_open");
    click(door, "btn_open");
    close();
    open();
    click(door, "btn_close");
    ASSERT_TRUE(eventually([this] { return state().doorLog.size() == 3; }));
    EXPECT_EQ(state().doorLog[1].sequence, 1);
    EXPECT_EQ(state().doorLog[2].sequence, 0);
}

TEST_F(MainWindowAndCamera, ReachesACameraOfEveryTypeAtItsAddress) {
    const std::vector<std::pair<const char*, emulator::CameraType>> types = {
        {"rb_ost", emulator::CameraType::ostra},
        {"rb_dvl", emulator::CameraType::dorvel},
        {"rb_dx", emulator::CameraType::salesStatic},
        {"rb_dx_dt", emulator::CameraType::salesDynamic},
        {"rb_quenta", emulator::CameraType::quenta}};
    for (const auto& [button, type] : types) {
        adopt(emulator::settingsForType(type));
        chooseCameraType(*window, button);
        open();
        EXPECT_TRUE(heartbeat()) << button;
        close();
    }
    EXPECT_EQ(record().foreignFrames, 0U);
    EXPECT_EQ(find<QComboBox>(*window, "sel_baund")->currentText(), "230400");
}

TEST_F(MainWindowAndCamera, GetsNoHeartbeatFromAnotherAddress) {
    open();
    EXPECT_TRUE(heartbeat());
    chooseCameraType(*window, "rb_dvl");
    EXPECT_FALSE(heartbeat());
    EXPECT_EQ(record().foreignFrames, 1U);
    chooseCameraType(*window, "rb_ost");
    EXPECT_TRUE(heartbeat());
}

TEST_F(MainWindowAndCamera, AsksAJsonCameraForItsVersion) {
    adopt(emulator::settingsForType(emulator::CameraType::quenta));
    camera.withCamera([](VirtualCamera& each) { each.state().jsonVersion = "4.4.4"; });
    chooseCameraType(*window, "rb_quenta");
    open();
    EXPECT_EQ(versions(), "APP版本:4.4.4");
    camera.withCamera([](VirtualCamera& each) { each.state().jsonPropertyText = R"({"version":)"; });
    EXPECT_EQ(versions(), "解析失败:unterminated object");
    camera.withCamera([](VirtualCamera& each) { each.state().jsonPropertyText = R"({"result":0})"; });
    EXPECT_EQ(versions(), "APP版本:");
    fault("silent");
    EXPECT_EQ(versions(), "解析失败:illegal value");
}

TEST_F(MainWindowAndCamera, SetsThePictureOffsetAndResetsItOnCancel) {
    adopt([] {
        auto settings = emulator::settingsForType(emulator::CameraType::ostra);
        settings.pictureOffset = 7;
        return settings;
    }());
    open();
    const auto answerInput = [this](bool accept) {
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, &timer, [accept] {
            auto* const input = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
            if (input == nullptr)
                return;
            input->setIntValue(7);
            accept ? input->accept() : input->reject();
        });
        timer.start(5);
        trigger(*window, "actionOriginCmdExtraAdd");
    };
    const auto deletions = [this](std::uint8_t code) {
        const std::size_t before = record().count(code);
        click(*window, "btn_takepic"); // begins with deleting all pictures
        EXPECT_TRUE(eventually([this] { return isEnabled(*window, "btn_takepic"); }, 15000));
        return record().count(code) - before;
    };
    answerInput(true);
    EXPECT_EQ(deletions(0x08 + 7), 1U);
    answerInput(false);
    EXPECT_EQ(deletions(0x08), 1U) << "cancelling sets 0";
    answerInput(true);
    close();
    open();
    EXPECT_EQ(deletions(0x08), 1U) << "a new link starts without an offset";
}

// --- faults ------------------------------------------------------------------------------------------------

namespace {

class MainWindowAndFault : public MainWindowAndCamera, public testing::WithParamInterface<const char*> {};

std::string faultName(const testing::TestParamInfo<const char*>& info) {
    std::string name = info.param;
    std::erase_if(name, [](char letter) { return !std::isalnum(static_cast<unsigned char>(letter)); });
    return name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Fatal, MainWindowAndFault,
                         testing::Values("silent", "truncate=1", "truncate=5", "stray=2", "length=+1",
                                         "length=3", "delay=2000", "payload=0"),
                         faultName);

TEST_P(MainWindowAndFault, WorksAgainAfterEveryFault) {
    camera.withCamera([](VirtualCamera& each) { each.settings().rebootTime = std::chrono::milliseconds(1); });
    open();
    for (const char* const command :
         {"@heartbeat", "@getModelInfo", "@getAppVersion", "@getSystemVersion", "@getQvVersion", "@reset"})
        fault((std::string(GetParam()) + command).c_str());
    EXPECT_FALSE(heartbeat());
    EXPECT_EQ(modelInfo(), "模型信息:");
    EXPECT_EQ(versions(), "SDK版本:\n系统版本:\nQV-APP版本:");
    clearFaults();
    const bool late = std::string(GetParam()).starts_with("delay");
    QTest::qWait(late ? 2200 : 100); // late bytes of the fault arrive
    EXPECT_TRUE(heartbeat()) << "throws away what is left on the line";
    EXPECT_EQ(modelInfo(), "模型信息:model_v1 2024-01-31");
}

TEST_F(MainWindowAndCamera, WorksAgainWhenAVanishedDeviceIsBack) {
    open();
    ASSERT_TRUE(heartbeat());
    camera.vanish();
    QElapsedTimer time;
    time.start();
    EXPECT_FALSE(heartbeat());
    EXPECT_EQ(modelInfo(), "模型信息:");
    EXPECT_EQ(versions(), "SDK版本:\n系统版本:\nQV-APP版本:");
    EXPECT_EQ(gyro(), "陀螺仪测试失败:");
    EXPECT_EQ(confirmed("actionReboot"), "摄像头重启失败");
    EXPECT_LT(time.elapsed(), 3000);
    close();
    camera.comeBack();
    open();
    EXPECT_TRUE(heartbeat());
}

TEST_F(MainWindowAndCamera, ReopensAVanishedPortWhenItIsBack) {
    const std::string link = "ttyCamera";
    camera.linkAt(link);
    choosePort(*window, QString::fromStdString(link));
    camera.vanish();
    BoxAnswerer boxes;
    clickThatThrows(*window, "btn_open");
    ASSERT_TRUE(boxes.waitFor(1));
    EXPECT_TRUE(boxes.seen()[0].text.contains("串口不存在或已拔出"));
    EXPECT_EQ(text(*window, "btn_open"), "打开串口");
    camera.comeBack();
    click(*window, "btn_open");
    EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
    EXPECT_TRUE(heartbeat());
}

TEST_F(MainWindowAndCamera, SurvivesADeviceThatVanishesDuringAQuery) {
    fault("silent");
    open();
    click(*window, "btn_appversion");
    QTest::qWait(60);
    camera.vanish();
    EXPECT_TRUE(eventually([this] { return text(*window, "tv_appversion") != "。。。。"; }));
    EXPECT_EQ(text(*window, "tv_appversion"), "SDK版本:\n系统版本:\nQV-APP版本:");
    EXPECT_TRUE(isEnabled(*window, "btn_heartbeat"));
}

// --- ending the link while it is used ----------------------------------------------------------------------

TEST_F(MainWindowAndCamera, ClosesTheLinkQuicklyDuringTheVersionQuery) {
    fault("silent");
    open();
    click(*window, "btn_appversion");
    QTest::qWait(30);
    QElapsedTimer time;
    time.start();
    close();
    EXPECT_LT(time.elapsed(), 200) << "one timeout of the query is 50 ms";
    clearFaults();
    open();
    QTest::qWait(100);
    EXPECT_EQ(text(*window, "tv_appversion"), "") << "the dropped result stays dropped";
    EXPECT_EQ(versions(), "SDK版本:2.3.1\n系统版本:5.10.8\nQV-APP版本:qv 1.4.0");
}

TEST_F(MainWindowAndCamera, MayBeClosedAndDestroyedDuringTheVersionQuery) {
    fault("silent");
    open();
    click(*window, "btn_appversion");
    QTest::qWait(30);
    window->close();
    EXPECT_EQ(text(*window, "btn_open"), "打开串口");
    window.reset();
    QThreadPool::globalInstance()->waitForDone();
    QTest::qWait(20);
    EXPECT_LE(record().count(0x02), 1U);
}

TEST_F(MainWindowAndCamera, SurvivesClosingAtAnyTimeOfTheVersionQuery) {
    for (int delay = 0; delay < 160; delay += 8) {
        open();
        click(*window, "btn_appversion");
        QTest::qWait(delay);
        close();
        EXPECT_EQ(text(*window, "tv_appversion"), "") << delay;
    }
    open();
    EXPECT_TRUE(heartbeat());
}

TEST_F(MainWindowAndCamera, CountsTheSecondsOfACommandThatBlocks) {
    QStringList messages;
    const QObject listener;
    QObject::connect(window->statusBar(), &QStatusBar::messageChanged, &listener,
                     [&](const QString& text) { messages.append(text); });
    open();
    camera.withCamera([](VirtualCamera& each) { each.addFault("delay=2500@capture"); });
    trigger(*window, "actionPicInfo");
    click(*openWindows<PicList>().at(0), "btn_takepic");
    EXPECT_TRUE(messages.contains("正在拍照…"));
    // Counts between two reads of a second each: at least once.
    EXPECT_FALSE(messages.filter("正在拍照…（").isEmpty()) << messages.join("; ").toStdString();
    EXPECT_TRUE(statusText(*window).startsWith("拍照：完成")) << statusText(*window).toStdString();
    window->close();
}
