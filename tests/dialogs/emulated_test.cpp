// The settings windows with the real serial library and a virtual camera.
#include "dialogs/setcameralocation.h"
#include "dialogs/setcapturedegree.h"
#include "dialogs/setpicrate.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"
#include "tests/dialogs/dialogtest.h"
#include "tests/support/testfront.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>

using namespace std::chrono_literals;

namespace {

using emulator::VirtualCamera;

constexpr std::uint8_t getProperty = 0x02;

std::vector<std::string> labels(const QWidget* window, int count) {
    std::vector<std::string> texts;
    for (int i = 1; i <= count; ++i)
        texts.push_back(textOf(window, QStringLiteral("label_%1").arg(i)));
    return texts;
}

const std::vector<std::string> captureTexts{"当前陀螺仪抓图角度:30,60", "当前陀螺仪抓图方向:顺时针",
                                            "当前陀螺仪开启状态:开启"};
const std::vector<std::string> captureFailed{"当前陀螺仪抓图角度:获取失败", "当前陀螺仪抓图方向:获取失败",
                                             "当前陀螺仪开启状态:获取失败"};
const std::vector<std::string> locationFirst{"当前俯仰角", "当前横滚角", "当前偏航角", "当前加速度"};

} // namespace

class EmulatedDialogTest : public DialogTest {
protected:
    EmulatedDialogTest() { openLink(m_front.portName()); }
    ~EmulatedDialogTest() override { endLinkAndWindows(); }

    void addFault(const char* text) {
        m_front.withCamera([text](VirtualCamera& camera) { camera.addFault(text); });
    }
    void refuseWriting(std::uint8_t id) {
        m_front.withCamera([id](VirtualCamera& camera) { camera.settings().refusedProperties.insert(id); });
    }
    std::vector<std::uint8_t> held(std::uint8_t id) {
        return m_front.withCamera([id](VirtualCamera& camera) { return camera.state().properties.at(id); });
    }
    std::size_t received(std::uint8_t code) {
        return m_front.withCamera([code](VirtualCamera& camera) { return camera.record().count(code); });
    }
    /// Every request arrived whole.
    void expectCleanLine() {
        m_front.withCamera([](VirtualCamera& camera) {
            EXPECT_EQ(camera.record().badFrames, 0U);
            EXPECT_EQ(camera.record().garbageBytes, 0U);
        });
    }

    TestFront m_front;
};

TEST_F(EmulatedDialogTest, AGeneratedSerialNumberIsStoredAndReadBack) {
    const QWidget* const window = open<SetSN>();
    press(window, "btn_getsn");
    EXPECT_EQ(textOf(window, "label_setsn"), "当前序列号:  SHELF000001");
    press(window, "btn_gensn");
    press(window, "btn_setsn");
    for (int i = 0; i < 7; ++i)
        tick(window);
    EXPECT_EQ(textOf(window, "label_hint"), "设置成功!");
    const std::string number = textOf(window, "et_setsn");
    EXPECT_EQ(number.size(), 16U);
    EXPECT_EQ(textOf(window, "label_setsn"), "当前序列号:  " + number);
    EXPECT_EQ(m_front.withCamera([](VirtualCamera& camera) { return camera.state().serialNumber; }), number);
    expectCleanLine();
}

TEST_F(EmulatedDialogTest, TheHeaterDutyIsStoredAndReadBack) {
    const QWidget* const window = open<SetPwmHeat>();
    part<QComboBox>(window, "cb_setheat")->setCurrentText("50");
    press(window, "btn_setheat");
    for (int i = 0; i < 3; ++i)
        tick(window);
    EXPECT_EQ(textOf(window, "label_setheat"), "当前占空比:  50");
    EXPECT_EQ(held(emulator::property::heaterDuty), std::vector<std::uint8_t>{50});
    expectCleanLine();
}

TEST_F(EmulatedDialogTest, TheCompressionRateIsStoredAndReadBack) {
    const QWidget* const window = open<SetPicRate>();
    part<QLineEdit>(window, "et_setsn")->setText("300");
    press(window, "btn_setsn");
    for (int i = 0; i < 3; ++i)
        tick(window);
    EXPECT_EQ(textOf(window, "label_setsn"), "当前图片压缩率:  44");
    EXPECT_EQ(held(emulator::property::compressionRate), std::vector<std::uint8_t>{44});
    expectCleanLine();
}

TEST_F(EmulatedDialogTest, RefusedWriteChangesNothing) {
    refuseWriting(emulator::property::heaterDuty);
    const QWidget* const heat = open<SetPwmHeat>();
    part<QComboBox>(heat, "cb_setheat")->setCurrentText("60");
    press(heat, "btn_setheat");
    EXPECT_EQ(textOf(heat, "label_hint"), "设置占空比失败，请重试");
    EXPECT_EQ(held(emulator::property::heaterDuty), std::vector<std::uint8_t>{30});
}

TEST_F(EmulatedDialogTest, UnansweredWriteFailsAfterTenTries) {
    addFault("silent");
    const QWidget* const rate = open<SetPicRate>();
    part<QLineEdit>(rate, "et_setsn")->setText("10");
    QElapsedTimer time;
    time.start();
    press(rate, "btn_setsn");
    EXPECT_EQ(textOf(rate, "label_hint"), "设置图片压缩率失败，请重试");
    EXPECT_NEAR(static_cast<double>(time.elapsed()), 500.0, 200.0); // ten tries of 50 ms
    press(rate, "btn_getsn");
    EXPECT_EQ(textOf(rate, "label_setsn"), "获取图片压缩率失败");
}

TEST_F(EmulatedDialogTest, ReadsSlowAnswersAndFailsBrokenOnes) {
    const QWidget* const window = open<SetPwmHeat>();
    for (const char* fault : {"truncate=9#1", "stray=1#1"}) {
        SCOPED_TRACE(fault);
        m_front.withCamera([fault](VirtualCamera& camera) {
            camera.faults() = {};
            camera.addFault(fault);
        });
        press(window, "btn_getheat");
        EXPECT_EQ(textOf(window, "label_setheat"), "获取占空比失败");
    }
    m_front.withCamera([](VirtualCamera& camera) {
        camera.faults() = {};
        camera.settings().answerDelay = 200ms;
    });
    press(window, "btn_getheat");
    EXPECT_EQ(textOf(window, "label_setheat"), "当前占空比:  30");
}

TEST_F(EmulatedDialogTest, CaptureSettingsAreReadWithPauses) {
    QElapsedTimer time;
    time.start();
    const QWidget* const window = open<SetCaptureDegree>();
    ASSERT_TRUE(QTest::qWaitFor([&] { return labels(window, 3) == captureTexts; }));
    EXPECT_GE(time.elapsed(), 400);
    const auto frames = m_front.withCamera([](VirtualCamera& camera) { return camera.record().frames; });
    ASSERT_EQ(frames.size(), 4U);
    for (std::size_t i = 1; i < frames.size(); ++i)
        EXPECT_GE(frames[i].at - frames[i - 1].at, 95ms);
    expectCleanLine();
}

TEST_F(EmulatedDialogTest, WrittenCaptureSettingsAreReadBack) {
    const QWidget* const window = open<SetCaptureDegree>();
    settle();
    part<QLineEdit>(window, "et_set1_0")->setText("15");
    part<QLineEdit>(window, "et_set1_1")->setText("75");
    press(window, "btn_set1");
    EXPECT_TRUE(QTest::qWaitFor([&] { return textOf(window, "label_1") == "当前陀螺仪抓图角度:15,75"; }));
    press(window, "rb_anticlosewise");
    press(window, "btn_set2");
    EXPECT_TRUE(QTest::qWaitFor([&] { return textOf(window, "label_2") == "当前陀螺仪抓图方向:逆时针"; }));
    refuseWriting(emulator::property::gyroOn);
    press(window, "cb_open");
    press(window, "btn_set3");
    EXPECT_TRUE(QTest::qWaitFor([&] { return part<QAbstractButton>(window, "cb_open")->isChecked(); }));
    EXPECT_EQ(textOf(window, "label_3"), "当前陀螺仪开启状态:开启");
    expectCleanLine();
}

TEST_F(EmulatedDialogTest, MountingIsShownInTheOrderOfTheReports) {
    m_front.withCamera([](VirtualCamera& camera) {
        camera.state().orientation[1].answer = emulator::OrientationItem::Answer::sentinel;
        camera.state().orientation[2].answer = emulator::OrientationItem::Answer::tooShort;
    });
    const QWidget* const window = open<SetCameraLocation>();
    settle();
    EXPECT_EQ(labels(window, 4), (std::vector<std::string>{"当前仰俯角:45", "当前横滚角:不支持,获取失败",
                                                           "当前偏航角:不支持,获取失败", "当前加速度:981"}));
    EXPECT_EQ(DebugLog::count("got no location"), 1);
}

TEST_F(EmulatedDialogTest, SilentCameraDoesNotBlockTheWindows) {
    addFault("silent");
    const QWidget* const window = open<SetCaptureDegree>();
    QElapsedTimer time;
    qint64 longest = 0;
    // The pool waits two and a half seconds; the user interface never blocks.
    const bool failed = QTest::qWaitFor(
        [&] {
            longest = std::max(longest, time.isValid() ? time.elapsed() : 0);
            time.start();
            return labels(window, 3) == captureFailed;
        },
        8000);
    EXPECT_TRUE(failed);
    EXPECT_LT(longest, 300);
}

TEST_F(EmulatedDialogTest, ClosingTheLinkEndsAFetchInOneTimeout) {
    addFault("silent");
    const QWidget* const capture = open<SetCaptureDegree>();
    const QWidget* const location = open<SetCameraLocation>();
    ASSERT_TRUE(QTest::qWaitFor([this] { return received(getProperty) > 0; }));
    QElapsedTimer time;
    time.start();
    closeLink();
    EXPECT_LT(time.elapsed(), 300);
    settle();
    EXPECT_EQ(labels(capture, 3).front(), "当前陀螺仪抓图角度");
    EXPECT_EQ(labels(location, 4), locationFirst);
}

TEST_F(EmulatedDialogTest, NextLinkServesOpenWindows) {
    const QWidget* const window = open<SetCaptureDegree>();
    closeLink();
    settle();
    QTest::qWait(200); // late answers to the old link must not reach the new one
    openLink(m_front.portName());
    for (const char* button : {"btn_get1", "btn_get2", "btn_get3"}) {
        press(window, button);
        settle();
    }
    EXPECT_EQ(labels(window, 3), captureTexts);
}

TEST_F(EmulatedDialogTest, PulledAdapterFailsTheCommands) {
    m_front.vanish();
    const QWidget* const location = open<SetCameraLocation>();
    settle();
    EXPECT_EQ(labels(location, 4).back(), "当前加速度:不支持,获取失败");
    const QWidget* const rate = open<SetPicRate>();
    part<QLineEdit>(rate, "et_setsn")->setText("10");
    press(rate, "btn_setsn");
    EXPECT_EQ(textOf(rate, "label_hint"), "设置图片压缩率失败，请重试");
}

TEST_F(EmulatedDialogTest, TenWindowsOfAKindFetchOneAfterTheOther) {
    std::vector<const QWidget*> captures;
    std::vector<const QWidget*> locations;
    for (int i = 0; i < 10; ++i) {
        captures.push_back(open<SetCaptureDegree>());
        locations.push_back(open<SetCameraLocation>());
    }
    settle();
    for (const QWidget* window : captures)
        EXPECT_EQ(labels(window, 3), captureTexts);
    for (const QWidget* window : locations) {
        EXPECT_EQ(labels(window, 4), (std::vector<std::string>{"当前仰俯角:45", "当前横滚角:3",
                                                               "当前偏航角:120", "当前加速度:981"}));
    }
    expectCleanLine();
}
