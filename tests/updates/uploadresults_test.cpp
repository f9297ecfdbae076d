// Uploads through the main window: requests, locked controls, texts, log lines.
#include "dialogs/setsn.h"
#include "link/protocol/uploads.h"
#include "tests/support/uploadwindow.h"

#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QMenuBar>
#include <QThread>
#include <QThreadPool>

#include <filesystem>

using namespace guitest;
using namespace std::chrono_literals;
using emulator::VirtualCamera;

namespace {

using Pauses = std::vector<std::chrono::milliseconds>;

class UploadResults : public UploadWindow {};

class EveryUpload : public UploadWindow, public testing::WithParamInterface<WindowUpload> {};

INSTANTIATE_TEST_SUITE_P(Every, EveryUpload,
                         testing::Values(appUpload, appUploadV1, systemUpload, modelUpload),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(EveryUpload, LocksTheExchangesUntilItsBox) {
    trigger(*window, "actionSnSet");
    QWidget* const dialog = openWindows<SetSN>().at(0);
    open();
    EXPECT_EQ(enabledExchanges(), allExchanges());
    start(GetParam());
    EXPECT_EQ(enabledExchanges(), QStringList());
    EXPECT_FALSE(dialog->isEnabled());
    EXPECT_TRUE(isEnabled(*window, "btn_open"));
    EXPECT_EQ(statusText(*window), "正在升级，请勿断电、勿拔线");
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    EXPECT_EQ(enabledExchanges(), allExchanges());
    EXPECT_TRUE(dialog->isEnabled());
    EXPECT_EQ(statusText(*window), "升级完成");
    EXPECT_TRUE(log.has(GetParam().secondProtocol ? "running 新 固件 v2.bin " + text(*window, "label_apppath")
                                                  : QString(GetParam().startLog)));
    EXPECT_EQ(record().count(GetParam().code), GetParam().secondProtocol ? 5U : 1U);
}

TEST_P(EveryUpload, ForgetsTheHeartbeatTest) {
    open();
    click(*window, "btn_heartbeat");
    const auto* const lamp = find<QWidget>(*window, "rb_heartbeat");
    ASSERT_TRUE(lamp->toolTip().contains("有应答"));
    start(GetParam());
    EXPECT_EQ(lamp->toolTip(), "还没有测试心跳");
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    EXPECT_EQ(lamp->toolTip(), "还没有测试心跳");
}

TEST_P(EveryUpload, GivesTheFocusBackToItsButton) {
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    open();
    fault(std::string("delay=100@") + GetParam().request + "#1");
    start(GetParam());
    ASSERT_EQ(window->focusWidget(), window.get());
    QTest::keyClick(window->windowHandle(), Qt::Key_Return);
    EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    EXPECT_EQ(window->focusWidget()->objectName(), GetParam().updateButton);
}

TEST_P(EveryUpload, CanBeRepeatedWithAnotherTask) {
    open();
    for (int round = 1; round <= 3; ++round) {
        start(GetParam());
        EXPECT_EQ(outcome(), "升级已完成，结果:true");
        QStringList classes;
        for (const QThread* const task : window->findChildren<QThread*>(Qt::FindDirectChildrenOnly)) {
            classes.append(task->metaObject()->className());
            EXPECT_TRUE(task->isFinished());
        }
        EXPECT_EQ(classes.size(), round) << "tasks live on as children";
    }
}

TEST_P(EveryUpload, FailsWithoutAnAnnouncementAnswer) {
    fault(std::string("hang-up=0@") + GetParam().request); // as silence, but at once
    open();
    start(GetParam());
    const std::string name = GetParam().name;
    EXPECT_EQ(outcome(), name == "App"      ? "升级已完成，结果:失败！"
                         : name == "System" ? "升级已完成，结果:失败！false"
                                            : "升级已完成，结果:false");
    EXPECT_EQ(enabledExchanges(), allExchanges());
    EXPECT_EQ(statusText(*window), "串口转接器已断开，请插好后关闭并重新打开串口");
    EXPECT_TRUE(log.has(name == "App"      ? "app main-ui result: false"
                        : name == "System" ? "fireware main-ui result: false"
                        : name == "Model"  ? "model main-ui result: false"
                                           : "appv1 update main-ui result: false"));
}

TEST_F(UploadResults, KeepTheWarningWhenTheMouseIsOnTheMenuBar) {
    open();
    fault("delay=100@systemUpdate");
    start(systemUpload);
    hoverEntries(*find<QMenuBar>(*window, "menubar"));
    EXPECT_EQ(statusText(*window), "正在升级，请勿断电、勿拔线");
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
}

TEST_F(UploadResults, AreShownForAnApplicationImage) {
    open();
    fault("verdict=1@appUpdate#1");
    start(appUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:失败！");
    EXPECT_EQ(record().count(0x01), 0U) << "no return wait";
    start(appUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    EXPECT_TRUE(log.has("app main-ui result: true"));
    EXPECT_TRUE(log.has("app-update heartbeatResult: true"));
    EXPECT_FALSE(log.has("get fileName 新 固件 v2.bin"));
    ASSERT_EQ(record().uploads.size(), 2U);
    EXPECT_TRUE(record().uploads[1].digestRight);
}

/// The camera answers heartbeats again after the image that it did not get whole.
TEST_F(UploadResults, TellAShortWriteOfASystemImage) {
    realPauses();
    camera.withCamera([](VirtualCamera& each) { each.settings().uploadSilence = 2500ms; });
    open();
    fault("stall=50,3500@systemUpdate");
    start(systemUpload, 60000);
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    EXPECT_EQ(statusText(*window), "升级没有成功：串口没有发完全部数据，请检查转接器和接线，稍后重新升级");
}

TEST_F(UploadResults, TellAShortWriteWithoutReturn) {
    open();
    fault("stall=50,3500@systemUpdate");
    fault("silent@heartbeat");
    start(systemUpload, 60000);
    EXPECT_EQ(outcome(), "升级已完成，结果:false");
    EXPECT_EQ(statusText(*window), "升级没有成功：串口没有发完全部数据，请检查转接器和接线，稍后重新升级");
}

TEST_F(UploadResults, AreShownForASecondProtocolApplication) {
    open();
    start(appUploadV1, 1300, false);
    EXPECT_EQ(outcome(), "升级已完成，结果:false") << "the camera wants data";
    start(appUploadV1);
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    EXPECT_TRUE(log.has("get fileName 新 固件 v2.bin"));
    EXPECT_TRUE(log.has("appv1 update main-ui result: false"));
    EXPECT_TRUE(log.has("appv1 update main-ui result: true"));
    EXPECT_EQ(record().count(0x01), 0U) << "no return wait";
    EXPECT_EQ(record().appV1.closingPackets, 11U);
    const auto frames = record().frames;
    EXPECT_EQ(protocol::ByteView(frames.at(0).payload).range(21, frames.at(0).payload.size()).toText(),
              "新 固件 v2.bin");
}

TEST_F(UploadResults, IgnoreTheCameraTypeForSystemAndModel) {
    useSecondProtocol(true);
    open();
    start(systemUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    start(modelUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    ASSERT_EQ(record().uploads.size(), 2U);
    EXPECT_TRUE(record().uploads[0].digestRight && record().uploads[1].digestRight);
}

TEST_F(UploadResults, AreShownForAModelWithAndWithoutAName) {
    open();
    start(modelUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    find<QLineEdit>(*window, "et_modelname")->setText("模型 v1");
    start(modelUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    fault("verdict=1@modelUpdate#1");
    fault("result=1@modelUpdate#2");
    start(modelUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:false");
    start(modelUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:false");
    EXPECT_TRUE(log.has("model main-ui result: true"));
    EXPECT_TRUE(log.has("model main-ui result: false"));
    const auto uploads = record().uploads;
    ASSERT_EQ(uploads.size(), 4U);
    EXPECT_EQ(uploads[0].name, "");
    EXPECT_EQ(uploads[1].name, "模型 v1");
    EXPECT_EQ(record().count(0x01), 0U) << "no return wait";
}

TEST_F(UploadResults, AreFailuresForAModelWithoutALink) {
    open();
    choose(modelUpload, writeFile("model.bin", 3));
    click(*window, "btn_open");
    EXPECT_TRUE(isEnabled(*window, "btn_modelupdate")) << "the only one that no link does not disable";
    click(*window, "btn_modelupdate");
    EXPECT_EQ(outcome(), "升级已完成，结果:false");
    EXPECT_FALSE(isEnabled(*window, "btn_heartbeat"));
    EXPECT_TRUE(isEnabled(*window, "btn_modelupdate"));
}

TEST_F(UploadResults, LeaveNothingLockedWithoutALink) {
    open();
    choose(modelUpload, writeFile("model.bin", 3));
    click(*window, "btn_open");
    click(*window, "btn_modelupdate");
    click(*window, "btn_open"); // before the task's result is looked at
    QTest::qWait(200);
    EXPECT_EQ(enabledExchanges(), allExchanges());
}

TEST_F(UploadResults, AreFalseForAVanishedFileBySecondProtocol) {
    open();
    useSecondProtocol(true);
    choose(appUploadV1, writeFile("vanishing.bin", 3));
    // The task logs its start before it opens the file.
    static QtMessageHandler collect = nullptr;
    collect =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& line) {
            if (line.startsWith("running"))
                QFile::remove("vanishing.bin");
            collect(type, context, line);
        });
    click(*window, appUploadV1.updateButton);
    EXPECT_EQ(outcome(), "升级已完成，结果:false");
    qInstallMessageHandler(collect);
    EXPECT_EQ(record().byteCount, 0U);
}

// --- the return wait ---------------------------------------------------------------------------------------

TEST_F(UploadResults, WaitForAnApplicationEightTimesTwoSeconds) {
    open();
    for (const int back : {1, 3, 8}) {
        camera.withCamera([](VirtualCamera& each) { each.clearRecord(); });
        camera.withCamera([](VirtualCamera& each) { each.faults().clear(); });
        fault("back-at=" + std::to_string(back) + "@appUpdate");
        const std::size_t before = longPauses().size();
        start(appUpload);
        EXPECT_EQ(outcome(), "升级已完成，结果:true") << back;
        const Pauses all = longPauses();
        EXPECT_EQ(Pauses(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()),
                  Pauses(static_cast<std::size_t>(1 + back), 2000ms))
            << "one behind the announcement, then one before each heartbeat";
        EXPECT_EQ(record().count(0x01), static_cast<std::size_t>(back));
    }
}

TEST_F(UploadResults, WaitForASystemImageFortyTimesThreeSeconds) {
    open();
    for (const int back : {2, 40}) {
        camera.withCamera([](VirtualCamera& each) { each.clearRecord(); });
        camera.withCamera([](VirtualCamera& each) { each.faults().clear(); });
        fault("back-at=" + std::to_string(back) + "@systemUpdate");
        const std::size_t before = longPauses().size();
        start(systemUpload);
        EXPECT_EQ(outcome(), "升级已完成，结果:true") << back;
        Pauses expected(static_cast<std::size_t>(1 + back), 3000ms);
        expected[0] = 2000ms;
        const Pauses all = longPauses();
        EXPECT_EQ(Pauses(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()), expected);
        EXPECT_EQ(record().count(0x01), static_cast<std::size_t>(back));
    }
    EXPECT_TRUE(log.has("fireware main-ui result: true"));
    EXPECT_TRUE(log.has("system-ota-update heartbeatResult: true"));
}

TEST_F(UploadResults, AreFalseWhenTheCameraNeverReturns) {
    open();
    fault("stay-down@appUpdate");
    fault("stay-down@systemUpdate");
    start(appUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:false");
    EXPECT_EQ(record().count(0x01), 8U);
    EXPECT_TRUE(log.has("app-update heartbeatResult: false"));
    EXPECT_EQ(enabledExchanges(), allExchanges());
    camera.withCamera([](VirtualCamera& each) { each.state().bootingUntil = {}; });
    start(systemUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:false");
    EXPECT_EQ(record().count(0x01), 48U);
    EXPECT_TRUE(log.has("system-ota-update heartbeatResult: false"));
}

TEST_F(UploadResults, LockTheExchangesDuringTheReturnWait) {
    open();
    fault("back-at=3@appUpdate");
    start(appUpload);
    QStringList texts;
    QStringList enabled;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &watch, [&] {
        const QString line = text(*window, "label_transfer");
        const bool shown = find<QWidget>(*window, "transferDisplay")->isVisible();
        if (!shown || !line.startsWith("等待摄像头重启"))
            return;
        enabled += enabledExchanges();
        if (!texts.contains(line))
            texts.append(line);
    });
    watch.start(10);
    BoxAnswerer boxes;
    ASSERT_TRUE(boxes.waitFor(1));
    watch.stop();
    ASSERT_FALSE(texts.isEmpty());
    EXPECT_EQ(texts.first(), "等待摄像头重启…（第 1 次，共 8 次）");
    EXPECT_EQ(enabled, QStringList());
    EXPECT_FALSE(find<QWidget>(*window, "transferDisplay")->isVisible());
}

/// Real pauses: 2 s after the announcement, then eight times 2 s and a heartbeat's 200 ms.
TEST_F(UploadResults, TakeTheirRealTimeUntilTheCameraIsGivenUp) {
    realPauses();
    open();
    fault("stay-down@appUpdate");
    QElapsedTimer time;
    time.start();
    start(appUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:false");
    EXPECT_GE(time.elapsed(), 2000 + 8 * (2000 + 200));
    EXPECT_LT(time.elapsed(), 2000 + 8 * (2000 + 200) + 3000);
    ASSERT_EQ(record().uploads.size(), 1U);
    EXPECT_EQ(record().uploads[0].earlyBytes, 0U);
}

// --- leaks -------------------------------------------------------------------------------------------------

std::ptrdiff_t entriesIn(const char* folder) {
    const std::filesystem::directory_iterator all(folder);
    return std::distance(begin(all), end(all));
}

TEST_F(UploadResults, LeakNothingInFiftyUploads) {
    QThreadPool::globalInstance()->setMaxThreadCount(
        1); // a second job would start a second thread on a busy machine
    open();
    choose(systemUpload, writeFile("image.bin", 1300));
    const auto uploadOnce = [this] {
        click(*window, "btn_firewareupdate");
        EXPECT_EQ(outcome(), "升级已完成，结果:true");
    };
    uploadOnce(); // the first return wait starts the pool's thread
    const std::ptrdiff_t descriptors = entriesIn("/proc/self/fd");
    const std::ptrdiff_t threads = entriesIn("/proc/self/task");
    for (int round = 0; round < 50; ++round)
        uploadOnce();
    EXPECT_TRUE(eventually([&] { return entriesIn("/proc/self/task") <= threads; })); // the last task ends
    EXPECT_EQ(entriesIn("/proc/self/fd"), descriptors);
    EXPECT_EQ(record().uploads.size(), 51U);
}

} // namespace
