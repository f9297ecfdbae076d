// The window that shows how the camera is mounted.
#include "dialogs/horizon.h"
#include "dialogs/setcameralocation.h"
#include "tests/dialogs/recordeddialogtest.h"

using namespace std::chrono_literals;

namespace {

const std::string readOrientation = "AA 5A 01 02 01 00 00 00 10 8F 26";

std::vector<std::string> labels(const QWidget* window) {
    return {textOf(window, "label_1"), textOf(window, "label_2"), textOf(window, "label_3"),
            textOf(window, "label_4")};
}

const std::vector<std::string> firstTexts{"当前俯仰角", "当前横滚角", "当前偏航角", "当前加速度"};

} // namespace

class SetCameraLocationTest : public RecordedDialogTest {
protected:
    SetCameraLocationTest() { m_clock.skipPauses(); }
};

TEST_F(SetCameraLocationTest, ShowsTheAnswersOfFourReadsInOrder) {
    m_camera.hold(16, {{45, 0, 0, 0}, {0, 1, 0, 0}, {0xFF, 0xFF, 0xFF, 0xFF}, {1, 0, 0, 0x80, 9, 9}});
    const QWidget* const window = open<SetCameraLocation>();
    settle();
    EXPECT_EQ(requests(), std::vector<std::string>(4, readOrientation));
    EXPECT_EQ(m_clock.pauses(), std::vector<std::chrono::nanoseconds>(4, 100ms));
    EXPECT_EQ(DebugLog::plainLines(),
              (Lines{"std::vector(45, 0, 0, 0)", "std::vector(0, 1, 0, 0)", "std::vector(255, 255, 255, 255)",
                     "std::vector(1, 0, 0, 128, 9, 9)"}));
    EXPECT_EQ(labels(window), (std::vector<std::string>{"当前仰俯角:45", "当前横滚角:256",
                                                        "当前偏航角:4294967295", "当前加速度:2147483649"}));
}

TEST_F(SetCameraLocationTest, TakesUpperBytesFFFF7FAsNoLocation) {
    m_camera.hold(
        16, {{0, 0xFF, 0xFF, 0x7F}, {0xFF, 0xFF, 0xFF, 0x7F}, {0, 0xFF, 0xFF, 0x7E}, {0, 0xFE, 0xFF, 0x7F}});
    const QWidget* const window = open<SetCameraLocation>();
    settle();
    EXPECT_EQ(labels(window),
              (std::vector<std::string>{"当前仰俯角:不支持,获取失败", "当前横滚角:不支持,获取失败",
                                        "当前偏航角:2130706176", "当前加速度:2147483136"}));
    EXPECT_EQ(DebugLog::count("got no location"), 2);
}

TEST_F(SetCameraLocationTest, DistinguishesFailuresFromNoLocation) {
    m_camera.hold(16, {{0xFF, 0xFF, 0x7F}, {}, {1}, {0xFF, 0xFF, 0xFF}});
    const std::vector<std::string> failed{"当前仰俯角:不支持,获取失败", "当前横滚角:不支持,获取失败",
                                          "当前偏航角:不支持,获取失败", "当前加速度:不支持,获取失败"};
    const QWidget* window = open<SetCameraLocation>();
    settle();
    EXPECT_EQ(labels(window), failed);
    m_camera.answerReadsWith(16, {16, 1, 45, 0, 0, 0});
    window = open<SetCameraLocation>();
    settle();
    EXPECT_EQ(labels(window), failed);
    m_camera.fallSilent();
    window = open<SetCameraLocation>();
    settle();
    EXPECT_EQ(labels(window), failed);
    EXPECT_EQ(DebugLog::count("got no location"), 0);
}

TEST_F(SetCameraLocationTest, DoesNothingWithoutALink) {
    closeLink();
    const QWidget* const window = open<SetCameraLocation>();
    settle();
    EXPECT_EQ(labels(window), firstTexts);
    EXPECT_TRUE(DebugLog::plainLines().empty());
    EXPECT_TRUE(requests().empty());
}

TEST_F(SetCameraLocationTest, NeverRunsItsTimerAndConnectsNoButton) {
    const QWidget* const window = open<SetCameraLocation>();
    settle();
    forgetRequests();
    for (const char* button : {"btn_1", "btn_2", "btn_3", "btn_4", "btn_setsn"})
        press(window, button);
    settle();
    EXPECT_TRUE(requests().empty());
    ASSERT_NE(timerOf(window), nullptr);
    EXPECT_FALSE(timerOf(window)->isActive());
    EXPECT_EQ(timerOf(window)->interval(), 1000);
}

TEST_F(SetCameraLocationTest, ReadsAgainByTheRefreshButton) {
    m_camera.hold(16, {{1, 0, 0, 0}, {2, 0, 0, 0}, {3, 0, 0, 0}, {4, 0, 0, 0}});
    const QWidget* const window = open<SetCameraLocation>();
    settle();
    press(window, "btn_refresh");
    settle();
    EXPECT_EQ(requests(), std::vector<std::string>(8, readOrientation));
    EXPECT_EQ(textOf(window, "label_4"), "当前加速度:4");
}

TEST_F(SetCameraLocationTest, GreysTheValuesOfAnEarlierLink) {
    m_camera.hold(16, {{1, 0, 0, 0}, {2, 0, 0, 0}, {3, 0, 0, 0}, {4, 0, 0, 0}});
    const QWidget* const window = open<SetCameraLocation>();
    settle();
    const auto* const label = part<QLabel>(window, "label_4");
    const QColor read = label->palette().color(QPalette::WindowText);
    closeLink();
    press(window, "btn_refresh");
    EXPECT_EQ(label->text(), "当前加速度:4");
    EXPECT_NE(label->palette().color(QPalette::WindowText), read);
    EXPECT_FALSE(label->toolTip().isEmpty());
    EXPECT_FALSE(part<Horizon>(window, "view_horizon")->attitude().has_value());
    openLink("COM9");
    press(window, "btn_refresh");
    settle();
    EXPECT_EQ(label->palette().color(QPalette::WindowText), read);
    EXPECT_TRUE(label->toolTip().isEmpty());
}

TEST_F(SetCameraLocationTest, DrawsAnglesOfAtMostATurn) {
    m_camera.hold(16, {{45, 0, 0, 0}, {0xF6, 0xFF, 0xFF, 0xFF}, {90, 0, 0, 0}, {0, 0, 0, 9}});
    auto* const drawing = part<Horizon>(open<SetCameraLocation>(), "view_horizon");
    settle();
    ASSERT_TRUE(drawing->attitude().has_value());
    EXPECT_EQ(drawing->attitude()->pitch, 45);
    EXPECT_EQ(drawing->attitude()->roll, -10);
    EXPECT_EQ(drawing->attitude()->yaw, 90);
}

TEST_F(SetCameraLocationTest, DrawsNothingOfOtherNumbers) {
    m_camera.hold(16, {{45, 0, 0, 0}, {0x69, 1, 0, 0}, {90, 0, 0, 0}, {0, 0, 0, 0}}); // 361
    auto* const drawing = part<Horizon>(open<SetCameraLocation>(), "view_horizon");
    settle();
    EXPECT_FALSE(drawing->attitude().has_value());
}

TEST_F(SetCameraLocationTest, TenAtOnceReadTheirOwnQuantities) {
    m_camera.hold(16, {{1, 0, 0, 0}, {2, 0, 0, 0}, {3, 0, 0, 0}, {4, 0, 0, 0}});
    std::vector<const QWidget*> windows;
    for (int i = 0; i < 10; ++i)
        windows.push_back(open<SetCameraLocation>());
    settle();
    for (const QWidget* window : windows) {
        EXPECT_EQ(labels(window),
                  (std::vector<std::string>{"当前仰俯角:1", "当前横滚角:2", "当前偏航角:3", "当前加速度:4"}));
    }
}

class SetCameraLocationInMidFetch : public SetCameraLocationTest {
protected:
    SetCameraLocationInMidFetch() {
        m_camera.hold(16, {{45, 0, 0, 0}});
        m_clock.hold();
    }
};

TEST_F(SetCameraLocationInMidFetch, EndsItsReadingWhenItIsClosed) {
    const QPointer<QWidget> window = open<SetCameraLocation>();
    ASSERT_TRUE(m_clock.waitForFirst());
    window->close();
    QTest::qWait(20);
    EXPECT_TRUE(window.isNull());
    EXPECT_EQ(DebugLog::count("cameraLocationUi destroyed"), 1);
    m_clock.release();
    settle();
    EXPECT_EQ(requests().size(), 1U);
}

TEST_F(SetCameraLocationInMidFetch, DropsTheResultOfAClosedLink) {
    const QWidget* const window = open<SetCameraLocation>();
    ASSERT_TRUE(m_clock.waitForFirst());
    m_borrowers.front().borrower->attachClient(nullptr);
    m_client->requestStop();
    m_clock.release();
    closeLink();
    settle();
    EXPECT_EQ(requests().size(), 1U);
    EXPECT_EQ(labels(window), firstTexts);
}
