// Closing the link or the window while an upload or a return wait runs.
#include "tests/support/uploadwindow.h"

#include <QElapsedTimer>
#include <QMessageBox>

using namespace guitest;
using namespace std::chrono_literals;
using emulator::VirtualCamera;

namespace {

constexpr const char* questionTitle = "升级尚未结束";
constexpr const char* questionText = "现在关闭会中断升级，摄像头可能要重新升级后才能使用。确定要关闭吗？";

/// A step of an upload, reached by a fault, and the time limit of ending it there.
struct Moment {
    const char* name;
    const WindowUpload* upload;
    const char* fault;
    bool realPauses;
    int afterMs;
    int longestMs; ///< one library timeout and 100 ms
};

void PrintTo(const Moment& moment, std::ostream* out) {
    *out << moment.name;
}

const std::vector<Moment>& moments() {
    static const std::vector<Moment> all{
        {"AnnouncementRead", &systemUpload, "silent@systemUpdate", false, 300, 1100},
        {"AnnouncementPause", &appUpload, "no-verdict@appUpdate", true, 700, 100},
        {"Write", &systemUpload, "stall=0,0@systemUpdate", false, 1500, 1100},
        {"Verdict", &modelUpload, "no-verdict@modelUpdate", false, 700, 1100},
        {"SecondProtocol", &appUploadV1, "silent@packetV1", false, 6000, 300},
        {"ReturnWaitPause", &systemUpload, "stay-down@systemUpdate", true, 3500, 100},
        {"ReturnWaitHeartbeat", &systemUpload, "stay-down@systemUpdate", false, 1000, 300},
    };
    return all;
}

class BreakingOff : public UploadWindow, public testing::WithParamInterface<Moment> {
protected:
    /// Starts the upload and waits for the step.
    void reach(const Moment& moment) {
        if (moment.realPauses)
            realPauses();
        open();
        fault(moment.fault);
        start(*moment.upload, 60000);
        QTest::qWait(moment.afterMs);
        ASSERT_EQ(enabledExchanges(), QStringList()) << "the upload is over already";
    }
    [[nodiscard]] bool portHeld() const { return isOpenByTool(camera.portName()); }
    void expectEnded(const QElapsedTimer& time, const BoxAnswerer& boxes) {
        constexpr int machineSlackMs = 500;
        EXPECT_LT(time.elapsed(), GetParam().longestMs + machineSlackMs);
        EXPECT_FALSE(portHeld());
        EXPECT_EQ(text(*window, "btn_open"), "打开串口");
        EXPECT_FALSE(find<QWidget>(*window, "transferDisplay")->isVisible());
        QTest::qWait(300); // a result would be shown now
        ASSERT_EQ(boxes.seen().size(), 1U);
        EXPECT_EQ(boxes.seen()[0].title, questionTitle);
        EXPECT_EQ(boxes.seen()[0].text, questionText);
        EXPECT_EQ(boxes.seen()[0].icon, static_cast<int>(QMessageBox::Question));
    }
};

INSTANTIATE_TEST_SUITE_P(At, BreakingOff, testing::ValuesIn(moments()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(BreakingOff, ByTheButtonEndsWithinOneTimeout) {
    reach(GetParam());
    EXPECT_TRUE(portHeld());
    const BoxAnswerer boxes(QMessageBox::Yes);
    QElapsedTimer time;
    time.start();
    click(*window, "btn_open");
    expectEnded(time, boxes);
}

TEST_P(BreakingOff, ByTheButtonBesideTheProgressEndsWithinOneTimeout) {
    reach(GetParam());
    const BoxAnswerer boxes(QMessageBox::Yes);
    QElapsedTimer time;
    time.start();
    click(*window, "btn_stop_transfer");
    expectEnded(time, boxes);
}

TEST_P(BreakingOff, ByClosingTheWindowEndsWithinOneTimeout) {
    reach(GetParam());
    const BoxAnswerer boxes(QMessageBox::Yes);
    QElapsedTimer time;
    time.start();
    EXPECT_TRUE(window->close());
    expectEnded(time, boxes);
}

TEST_P(BreakingOff, ByDestroyingTheWindowEndsWithinOneTimeout) {
    reach(GetParam());
    QElapsedTimer time;
    time.start();
    window.reset();
    constexpr int machineSlackMs = 500;
    EXPECT_LT(time.elapsed(), GetParam().longestMs + machineSlackMs);
    EXPECT_FALSE(portHeld());
}

class KeepingOn : public UploadWindow {
protected:
    /// Closes by the button, by the window and by the button beside the progress; answers No.
    void refuseToClose() {
        const BoxAnswerer boxes(QMessageBox::No);
        click(*window, "btn_open");
        EXPECT_FALSE(window->close());
        click(*window, "btn_stop_transfer");
        ASSERT_EQ(boxes.seen().size(), 3U);
        EXPECT_EQ(boxes.seen()[0].text, questionText);
        EXPECT_EQ(boxes.seen()[1].text, questionText);
        EXPECT_EQ(boxes.seen()[2].text, questionText);
        EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
        EXPECT_TRUE(window->isVisible());
        EXPECT_EQ(enabledExchanges(), QStringList());
    }
};

TEST_F(KeepingOn, ContinuesTheUploadOnNo) {
    open();
    fault("verdict-delay=1500@modelUpdate");
    start(modelUpload);
    QTest::qWait(100);
    refuseToClose();
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    EXPECT_TRUE(record().uploads.at(0).digestRight);
}

TEST_F(KeepingOn, ContinuesTheReturnWaitOnNo) {
    open();
    fault("back-at=6@systemUpdate");
    start(systemUpload);
    ASSERT_TRUE(eventually([this] { return log.has("fireware main-ui result: true"); }));
    refuseToClose();
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
}

TEST_F(KeepingOn, AsksNothingAfterTheUpload) {
    open();
    start(modelUpload);
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    const BoxAnswerer boxes;
    click(*window, "btn_open");
    EXPECT_TRUE(window->close());
    EXPECT_EQ(boxes.seen().size(), 0U);
}

TEST_F(KeepingOn, UploadsOnANewLinkAfterABreak) {
    open();
    fault("stall=50,1500@modelUpdate#1");
    camera.withCamera([](VirtualCamera& each) { each.settings().uploadSilence = 200ms; });
    start(modelUpload, 60000);
    QTest::qWait(400);
    {
        const BoxAnswerer boxes(QMessageBox::Yes);
        click(*window, "btn_open");
    }
    QTest::qWait(2500); // the camera gives up the broken upload
    camera.withCamera([](VirtualCamera& each) { each.settings().uploadSilence = 5s; });
    open();
    EXPECT_EQ(enabledExchanges(), allExchanges());
    start(modelUpload, 60000);
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    const auto uploads = record().uploads;
    ASSERT_EQ(uploads.size(), 2U);
    EXPECT_FALSE(uploads[0].complete);
    EXPECT_TRUE(uploads[1].digestRight);
}

TEST_F(KeepingOn, ShowsTheResultOverAnOpenQuestion) {
    open();
    fault("verdict-delay=400@modelUpdate");
    start(modelUpload);
    QTest::qWait(50);
    QTimer answerLate; // No, when the upload's own box has been seen
    QStringList texts;
    QObject::connect(&answerLate, &QTimer::timeout, &answerLate, [&] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr || (texts.isEmpty() && box->text() == questionText))
            return;
        texts.append(box->text());
        box->done(box->text() == questionText ? QMessageBox::No : QMessageBox::Ok);
    });
    answerLate.start(5);
    click(*window, "btn_open");
    EXPECT_EQ(texts, (QStringList{"升级已完成，结果:true", questionText}));
    EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
}

} // namespace
