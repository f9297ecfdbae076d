// Writing a setting and the countdown after it, in all three writing windows.
#include "dialogs/setpicrate.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"
#include "linkaccess/signs.h"
#include "tests/dialogs/recordeddialogtest.h"
#include "tests/support/stdoutcapture.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>

namespace {

struct WritingWindow {
    const char* name;
    const char* setButton;
    const char* getButton;
    const char* readLabel;
    std::vector<const char*> controls;
    std::uint8_t id;
    const char* value;
    const char* writeRequest;
    const char* readRequest;
    int seconds;
    const char* started;
    const char* countdown; // %1: the number
    const char* failed;
    const char* resultTag;
    const char* readBack;
    const char* readFailed;
};

const WritingWindow serialNumber{
    .name = "SetSN",
    .setButton = "btn_setsn",
    .getButton = "btn_getsn",
    .readLabel = "label_setsn",
    .controls = {"btn_setsn", "btn_getsn", "et_setsn"},
    .id = 3,
    .value = "0123456789abcdef",
    .writeRequest = "AA 5A 01 03 12 00 00 00 03 30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66 00 AB 6A",
    .readRequest = "AA 5A 01 02 01 00 00 00 03 DD 04",
    .seconds = 6,
    .started = "开始设置SN:0123456789abcdef",
    .countdown = "SN设置中，倒计时:%1秒,请勿断电!",
    .failed = "设置SN失败，请重试",
    .resultTag = "set sn result:",
    .readBack = "当前序列号:  0123456789abcdef",
    .readFailed = "当前序列号:  "};

const WritingWindow heaterDuty{.name = "SetPwmHeat",
                               .setButton = "btn_setheat",
                               .getButton = "btn_getheat",
                               .readLabel = "label_setheat",
                               .controls = {"btn_setheat", "btn_getheat", "et_setheat", "cb_setheat"},
                               .id = 15,
                               .value = "30",
                               .writeRequest = "AA 5A 01 03 02 00 00 00 0F 1E 97 5D",
                               .readRequest = "AA 5A 01 02 01 00 00 00 0F 51 C5",
                               .seconds = 2,
                               .started = "开始设置加热丝占空比:30",
                               .countdown = "设置中，倒计时:%1秒,请勿断电!",
                               .failed = "设置占空比失败，请重试",
                               .resultTag = "qt set heat result:",
                               .readBack = "当前占空比:  30",
                               .readFailed = "获取占空比失败"};

const WritingWindow compressionRate{.name = "SetPicRate",
                                    .setButton = "btn_setsn",
                                    .getButton = "btn_getsn",
                                    .readLabel = "label_setsn",
                                    .controls = {"btn_setsn", "btn_getsn", "et_setsn"},
                                    .id = 6,
                                    .value = "85",
                                    .writeRequest = "AA 5A 01 03 02 00 00 00 06 55 A0 1E",
                                    .readRequest = "AA 5A 01 02 01 00 00 00 06 78 54",
                                    .seconds = 2,
                                    .started = "开始设置图片压缩率:85",
                                    .countdown = "设置中，倒计时:%1秒,请勿断电!",
                                    .failed = "设置图片压缩率失败，请重试",
                                    .resultTag = "qt set rate result:",
                                    .readBack = "当前图片压缩率:  85",
                                    .readFailed = "获取图片压缩率失败"};

} // namespace

class SettingWriteTest : public RecordedDialogTest, public testing::WithParamInterface<const WritingWindow*> {
protected:
    [[nodiscard]] static const WritingWindow& kind() { return *GetParam(); }

    QWidget* openWindow() {
        if (&kind() == &serialNumber) {
            auto* const window = open<SetSN>();
            part<QLabel>(window, "et_setsn")->setText(kind().value);
            return window;
        }
        if (&kind() == &heaterDuty)
            return open<SetPwmHeat>();
        auto* const window = open<SetPicRate>();
        part<QLineEdit>(window, "et_setsn")->setText(kind().value);
        return window;
    }

    /// Number of enabled controls.
    static std::size_t enabledControls(const QWidget* window) {
        std::size_t count = 0;
        for (const char* name : kind().controls)
            count += part<QWidget>(window, name)->isEnabled() ? 1U : 0U;
        return count;
    }

    static std::string countdownText(int seconds) {
        return QString(kind().countdown).arg(seconds).toStdString();
    }

    /// All ticks except the last, which shows success.
    static void countDownToZero(const QWidget* window) {
        for (int seconds = kind().seconds; seconds > 0; --seconds) {
            tick(window);
            EXPECT_EQ(textOf(window, "label_hint"), countdownText(seconds));
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Windows, SettingWriteTest,
                         testing::Values(&serialNumber, &heaterDuty, &compressionRate),
                         [](const auto& tested) { return std::string(tested.param->name); });

TEST_P(SettingWriteTest, LocksControlsCountsDownAndReadsBack) {
    const StdoutCapture output;
    QWidget* const window = openWindow();
    press(window, kind().setButton);
    EXPECT_EQ(requests(), std::vector<std::string>{kind().writeRequest});
    EXPECT_EQ(textOf(window, "label_hint"), kind().started);
    EXPECT_TRUE(output.has(std::string(kind().resultTag) + "1"));
    EXPECT_EQ(enabledControls(window), 0U);
    EXPECT_TRUE(timerOf(window)->isActive());
    EXPECT_EQ(timerOf(window)->interval(), 1000);

    countDownToZero(window);
    EXPECT_EQ(enabledControls(window), 0U);
    tick(window);
    EXPECT_EQ(textOf(window, "label_hint"), "设置成功!");
    EXPECT_EQ(enabledControls(window), kind().controls.size());
    EXPECT_FALSE(timerOf(window)->isActive());
    EXPECT_EQ(requests(), (std::vector<std::string>{kind().writeRequest, kind().readRequest}));
    EXPECT_EQ(textOf(window, kind().readLabel), kind().readBack);
}

TEST_P(SettingWriteTest, ShowsASignAndWhatIsLeftOfTheCountdown) {
    QWidget* const window = openWindow();
    const auto* const mark = part<SignMark>(window, "mark_outcome");
    const auto* const bar = part<QProgressBar>(window, "bar_countdown");
    EXPECT_EQ(mark->sign(), Sign::none);
    EXPECT_FALSE(bar->isVisible());
    press(window, kind().setButton);
    EXPECT_EQ(mark->sign(), Sign::waiting);
    EXPECT_TRUE(bar->isVisible());
    countDownToZero(window);
    EXPECT_EQ(bar->value(), 1);
    EXPECT_EQ(bar->maximum(), kind().seconds);
    tick(window);
    EXPECT_EQ(mark->sign(), Sign::success);
    EXPECT_FALSE(bar->isVisible());
}

TEST_P(SettingWriteTest, ShowsTheSignOfAFailure) {
    fake_serial::throwOn("write");
    QWidget* const window = openWindow();
    press(window, kind().setButton);
    EXPECT_EQ(part<SignMark>(window, "mark_outcome")->sign(), Sign::failure);
    EXPECT_FALSE(part<QProgressBar>(window, "bar_countdown")->isVisible());
}

TEST_P(SettingWriteTest, StartsTheNextCountdownFromItsFirstSecondAgain) {
    QWidget* const window = openWindow();
    for (int round = 0; round < 2; ++round) {
        press(window, kind().setButton);
        countDownToZero(window);
        tick(window);
        EXPECT_EQ(textOf(window, "label_hint"), "设置成功!");
    }
}

TEST_P(SettingWriteTest, EnablesTheControlsAfterABadAnswer) {
    auto stray = answers::frame(3, {kind().id, 0});
    stray.push_back(0xEE);
    const std::vector<PropertyCamera::Bytes> answers{
        answers::frame(3, {kind().id, 1}), {}, {0xAA, 0x5A, 0x01, 0x03, 0x02}, {0xAA}, stray};
    for (const auto& answer : answers) {
        SCOPED_TRACE(fake_serial::hex(answer));
        m_camera.answerWritesWith(answer);
        const StdoutCapture output;
        QWidget* const window = openWindow();
        press(window, kind().setButton);
        EXPECT_EQ(textOf(window, "label_hint"), kind().failed);
        EXPECT_TRUE(output.has(std::string(kind().resultTag) + "0"));
        EXPECT_EQ(enabledControls(window), kind().controls.size());
        EXPECT_FALSE(timerOf(window)->isActive());
    }
}

TEST_P(SettingWriteTest, FailsWhenThePortThrows) {
    fake_serial::throwOn("write");
    QWidget* const window = openWindow();
    press(window, kind().setButton);
    EXPECT_EQ(textOf(window, "label_hint"), kind().failed);
    press(window, kind().getButton);
    EXPECT_EQ(textOf(window, kind().readLabel), kind().readFailed);
}

TEST_P(SettingWriteTest, FailsWithoutALink) {
    closeLink();
    const StdoutCapture output;
    QWidget* const window = openWindow();
    press(window, kind().setButton);
    EXPECT_EQ(textOf(window, "label_hint"), kind().failed);
    EXPECT_TRUE(output.has(std::string(kind().resultTag) + "0"));
    EXPECT_EQ(enabledControls(window), kind().controls.size());
    press(window, kind().getButton);
    EXPECT_EQ(textOf(window, kind().readLabel), kind().readFailed);
    EXPECT_TRUE(requests().empty());
}

TEST_P(SettingWriteTest, TickWhileHiddenOnlyStopsTheTimer) {
    QWidget* const window = openWindow();
    press(window, kind().setButton);
    tick(window);
    window->hide();
    tick(window);
    EXPECT_FALSE(timerOf(window)->isActive());
    EXPECT_EQ(textOf(window, "label_hint"), countdownText(kind().seconds));
    EXPECT_EQ(enabledControls(window), 0U);

    window->show();
    EXPECT_EQ(enabledControls(window), 0U);
    EXPECT_FALSE(timerOf(window)->isActive());
    tick(window); // the counter has not moved
    EXPECT_EQ(textOf(window, "label_hint"), countdownText(kind().seconds - 1));
    EXPECT_EQ(requests().size(), 1U);
}

TEST_P(SettingWriteTest, MayBeClosedInMidCountdown) {
    const QPointer<QWidget> window = openWindow();
    press(window, kind().setButton);
    tick(window);
    timerOf(window)->setInterval(0); // the next tick is due at once
    window->close();
    QTest::qWait(20);
    EXPECT_TRUE(window.isNull());
    EXPECT_EQ(requests().size(), 1U);
}

TEST_P(SettingWriteTest, FailsTheReadBackAfterTheLinkClosed) {
    QWidget* const window = openWindow();
    press(window, kind().setButton);
    tick(window);
    closeLink();
    for (int rest = 0; rest < kind().seconds; ++rest)
        tick(window);
    EXPECT_EQ(textOf(window, "label_hint"), "设置成功!");
    EXPECT_EQ(textOf(window, kind().readLabel), kind().readFailed);
    EXPECT_EQ(enabledControls(window), kind().controls.size());
    EXPECT_EQ(requests().size(), 1U);
}

TEST_P(SettingWriteTest, ReadsBackOverTheLinkThatIsOpenThen) {
    QWidget* const window = openWindow();
    press(window, kind().setButton);
    closeLink();
    openLink("COM8");
    countDownToZero(window);
    tick(window);
    EXPECT_EQ(textOf(window, kind().readLabel), kind().readBack);
}

TEST_P(SettingWriteTest, DelaysTheReadBackWhileTheClientIsBusy) {
    QWidget* const window = openWindow();
    press(window, kind().setButton);
    m_borrowers.front().borrower->setExchangeAllowed(false);
    countDownToZero(window);
    tick(window);
    tick(window);
    EXPECT_EQ(requests().size(), 1U);
    EXPECT_EQ(textOf(window, "label_hint"), countdownText(1));
    m_borrowers.front().borrower->setExchangeAllowed(true);
    tick(window);
    EXPECT_EQ(textOf(window, "label_hint"), "设置成功!");
    EXPECT_EQ(textOf(window, kind().readLabel), kind().readBack);
}

TEST_P(SettingWriteTest, RestoresTheFocusWithTheControls) {
    QWidget* const window = openWindow();
    auto* const button = part<QAbstractButton>(window, kind().setButton);
    button->setFocus();
    ASSERT_EQ(window->focusWidget(), button);
    press(window, kind().setButton);
    EXPECT_NE(window->focusWidget(), button);
    countDownToZero(window);
    tick(window);
    EXPECT_EQ(window->focusWidget(), button);
}

TEST_P(SettingWriteTest, GivesTheFocusToNoOtherControl) {
    for (const auto key : {Qt::Key_Return, Qt::Key_Space}) {
        QWidget* const window = openWindow();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
        auto* const button = part<QPushButton>(window, kind().setButton);
        button->setAutoDefault(true); // as the main window does, so that Return presses it
        button->setFocus();
        QTest::keyClick(window->windowHandle(), key);
        EXPECT_TRUE(timerOf(window)->isActive());
        EXPECT_TRUE(window->focusWidget() == nullptr || window->focusWidget() == window);
        QTest::keyClick(window->windowHandle(), key);
        if (&kind() == &serialNumber) {
            EXPECT_EQ(textOf(window, "et_setsn"), kind().value) << "no other number was generated";
        }
    }
}

TEST_P(SettingWriteTest, LeavesTheFocusWhereTheUserMovesIt) {
    QWidget* const window = openWindow();
    auto* const button = part<QAbstractButton>(window, kind().setButton);
    QLineEdit other(window);
    other.show();
    button->setFocus();
    press(window, kind().setButton);
    other.setFocus();
    countDownToZero(window);
    tick(window);
    EXPECT_EQ(window->focusWidget(), &other);
}

TEST_P(SettingWriteTest, RestoresTheFocusAfterAnotherUser) {
    QWidget* const window = openWindow();
    auto* const button = part<QAbstractButton>(window, kind().setButton);
    button->setFocus();
    press(window, kind().setButton);
    m_borrowers.front().borrower->setExchangeAllowed(false);
    m_borrowers.front().borrower->setExchangeAllowed(true);
    countDownToZero(window);
    tick(window);
    EXPECT_EQ(window->focusWidget(), button);
}

TEST_P(SettingWriteTest, WorksInTenWindowsAtOnce) {
    std::vector<QWidget*> windows;
    for (int i = 0; i < 10; ++i)
        windows.push_back(openWindow());
    for (QWidget* window : windows)
        press(window, kind().setButton);
    for (QWidget* window : windows) {
        countDownToZero(window);
        tick(window);
        EXPECT_EQ(textOf(window, kind().readLabel), kind().readBack);
    }
    EXPECT_EQ(requests().size(), 20U);
}

TEST(SettingWriteTiming, SucceedsOnTheThirdTickOfASecondEach) {
    const PropertyCamera camera;
    CameraSp client("COM7", 460800U);
    SetPwmHeat window(nullptr, &client);
    window.show();
    press(&window, "btn_setheat");
    QElapsedTimer time;
    time.start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return textOf(&window, "label_hint") == "设置成功!"; }, 6000));
    EXPECT_NEAR(static_cast<double>(time.elapsed()), 3000.0, 500.0);
    EXPECT_EQ(textOf(&window, "label_setheat"), "当前占空比:  30");
}
