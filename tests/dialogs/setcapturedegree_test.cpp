// The window of the gyro's capture settings.
#include "dialogs/setcapturedegree.h"
#include "tests/dialogs/recordeddialogtest.h"

#include <QElapsedTimer>
#include <QLineEdit>

#include <atomic>

using namespace std::chrono_literals;

namespace {

const std::string readAngles = "AA 5A 01 02 01 00 00 00 0A F4 95";
const std::string readDirection = "AA 5A 01 02 01 00 00 00 0B D5 85";
const std::string readReserve = "AA 5A 01 02 01 00 00 00 0C 32 F5";
const std::string readGyro = "AA 5A 01 02 01 00 00 00 0D 13 E5";
const std::vector<std::string> readAll{readAngles, readDirection, readReserve, readGyro};

bool isChecked(const QWidget* window, const char* name) {
    return part<QAbstractButton>(window, name)->isChecked();
}

} // namespace

class SetCaptureDegreeTest : public RecordedDialogTest {
protected:
    SetCaptureDegreeTest() {
        m_clock.speedUp(20);
        m_clock.skipPauses();
        m_camera.hold(10, {{30, 60}});
        m_camera.hold(11, {{1}});
        m_camera.hold(12, {{}});
        m_camera.hold(13, {{1}});
    }

    SetCaptureDegree* openAndWait() {
        auto* const window = open<SetCaptureDegree>();
        settle();
        return window;
    }

    /// Debug lines after that of the first refresh.
    [[nodiscard]] Lines linesAfterOpening() const {
        Lines lines = DebugLog::plainLines();
        if (!lines.empty())
            lines.erase(lines.begin());
        return lines;
    }
};

TEST_F(SetCaptureDegreeTest, ReadsAllFourPropertiesWhenItOpens) {
    const QWidget* const window = openAndWait();
    EXPECT_EQ(requests(), readAll);
    EXPECT_EQ(m_clock.pauses(), std::vector<std::chrono::nanoseconds>(4, 100ms));
    EXPECT_EQ(DebugLog::plainLines(),
              Lines{"std::vector(30, 60) std::vector(1) std::vector() std::vector(1)"});
    EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度:30,60");
    EXPECT_EQ(textOf(window, "label_2"), "当前陀螺仪抓图方向:顺时针");
    EXPECT_EQ(textOf(window, "label_3"), "当前陀螺仪开启状态:开启");
    EXPECT_TRUE(isChecked(window, "rb_closewise"));
    EXPECT_TRUE(isChecked(window, "cb_open"));
    EXPECT_TRUE(part<QLineEdit>(window, "et_set1_0")->text().isEmpty());
    EXPECT_TRUE(part<QLineEdit>(window, "et_set1_1")->text().isEmpty());
}

TEST_F(SetCaptureDegreeTest, NeverRunsItsTimer) {
    const QWidget* const window = openAndWait();
    press(window, "btn_set1");
    QTest::qWait(20);
    ASSERT_NE(timerOf(window), nullptr);
    EXPECT_FALSE(timerOf(window)->isActive());
    EXPECT_EQ(timerOf(window)->interval(), 1000);
}

TEST_F(SetCaptureDegreeTest, ShowsDirectionsOtherThanOneAsAnticlockwise) {
    m_camera.hold(11, {{2}, {0}, {255, 1}});
    for (int i = 0; i < 3; ++i) {
        const QWidget* const window = openAndWait();
        EXPECT_EQ(textOf(window, "label_2"), "当前陀螺仪抓图方向:逆时针");
        EXPECT_TRUE(isChecked(window, "rb_anticlosewise"));
    }
}

TEST_F(SetCaptureDegreeTest, ShowsGyroStatesOtherThanOneAsOff) {
    m_camera.hold(13, {{2}, {0}, {255, 1}});
    for (int i = 0; i < 3; ++i) {
        const QWidget* const window = openAndWait();
        EXPECT_EQ(textOf(window, "label_3"), "当前陀螺仪开启状态:关闭");
        EXPECT_FALSE(isChecked(window, "cb_open"));
    }
}

TEST_F(SetCaptureDegreeTest, ShowsEveryFailedRead) {
    for (std::uint8_t id = 10; id <= 13; ++id)
        m_camera.answerReadsWith(id, {id, 1, 1, 1});
    const QWidget* const window = openAndWait();
    EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度:获取失败");
    EXPECT_EQ(textOf(window, "label_2"), "当前陀螺仪抓图方向:获取失败");
    EXPECT_EQ(textOf(window, "label_3"), "当前陀螺仪开启状态:获取失败");
    EXPECT_EQ(DebugLog::plainLines(), Lines{"std::vector() std::vector() std::vector() std::vector()"});
}

TEST_F(SetCaptureDegreeTest, GreysValuesThatWereNotRead) {
    const QWidget* const window = openAndWait();
    const auto isGrey = [window](const char* name) {
        return part<QWidget>(window, name)->property("outdated").toBool();
    };
    EXPECT_FALSE(isGrey("rb_closewise") || isGrey("rb_anticlosewise") || isGrey("cb_open"));
    m_camera.fallSilent();
    press(window, "btn_get2");
    press(window, "btn_get3");
    settle();
    EXPECT_TRUE(isGrey("rb_closewise") && isGrey("rb_anticlosewise") && isGrey("cb_open"));
    EXPECT_FALSE(part<QWidget>(window, "cb_open")->toolTip().isEmpty());
    press(window, "cb_open"); // a choice of the user
    press(window, "rb_anticlosewise");
    EXPECT_FALSE(isGrey("rb_closewise") || isGrey("rb_anticlosewise") || isGrey("cb_open"));
    EXPECT_TRUE(part<QWidget>(window, "cb_open")->toolTip().isEmpty());
}

TEST_F(SetCaptureDegreeTest, FailsShortAnswersAndIgnoresExtraBytes) {
    m_camera.hold(10, {{30}, {255, 0, 7, 7}});
    const QWidget* const window = openAndWait();
    EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度:获取失败");
    press(window, "btn_get1");
    settle();
    EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度:255,0");
    for (const PropertyCamera::Bytes& payload : {PropertyCamera::Bytes{}, {10}, {10, 0}}) {
        m_camera.answerReadsWith(10, payload);
        part<QLabel>(window, "label_1")->clear();
        press(window, "btn_get1");
        settle();
        EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度:获取失败");
    }
}

TEST_F(SetCaptureDegreeTest, FailsEverywhereWithoutALink) {
    closeLink();
    const QWidget* const window = openAndWait();
    EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度:获取失败");
    EXPECT_EQ(textOf(window, "label_2"), "当前陀螺仪抓图方向:获取失败");
    EXPECT_EQ(textOf(window, "label_3"), "当前陀螺仪开启状态:获取失败");
    for (const char* button : {"btn_set1", "btn_set2", "btn_set3", "btn_get1", "btn_get2", "btn_get3"})
        press(window, button);
    QTest::qWait(600);
    settle();
    EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度:获取失败");
    EXPECT_TRUE(requests().empty());
}

TEST_F(SetCaptureDegreeTest, GetButtonReadsItsOwnItemWithoutPause) {
    struct Row {
        const char* button;
        const char* label;
        std::string request;
        const char* shown;
        const char* logged;
    };
    const Row rows[] = {
        {"btn_get1", "label_1", readAngles, "当前陀螺仪抓图角度:30,60",
         "std::vector(30, 60) std::vector() std::vector() std::vector()"},
        {"btn_get2", "label_2", readDirection, "当前陀螺仪抓图方向:顺时针",
         "std::vector() std::vector(1) std::vector() std::vector()"},
        {"btn_get3", "label_3", readGyro, "当前陀螺仪开启状态:开启",
         "std::vector() std::vector() std::vector() std::vector(1)"},
    };
    const QWidget* const window = openAndWait();
    const std::size_t pauses = m_clock.pauses().size();
    for (const Row& row : rows) {
        for (const char* label : {"label_1", "label_2", "label_3"})
            part<QLabel>(window, label)->setText("old");
        forgetRequests();
        press(window, row.button);
        settle();
        EXPECT_EQ(requests(), std::vector<std::string>{row.request});
        EXPECT_EQ(DebugLog::count(row.logged), 1);
        for (const char* label : {"label_1", "label_2", "label_3"})
            EXPECT_EQ(textOf(window, label), std::string(label) == row.label ? row.shown : "old");
    }
    EXPECT_EQ(m_clock.pauses().size(), pauses);
}

TEST_F(SetCaptureDegreeTest, ItemThreeIsReadAndLoggedButNotShown) {
    m_camera.hold(12, {{9, 8}});
    SetCaptureDegree* const window = openAndWait();
    forgetRequests();
    for (const char* label : {"label_1", "label_2", "label_3"})
        part<QLabel>(window, label)->setText("old");
    window->doGetInfo(false, SetCaptureDegree::reserveItem);
    settle();
    EXPECT_EQ(requests(), std::vector<std::string>{readReserve});
    EXPECT_EQ(DebugLog::count("std::vector() std::vector() std::vector(9, 8) std::vector()"), 1);
    for (const char* label : {"label_1", "label_2", "label_3"})
        EXPECT_EQ(textOf(window, label), "old");
}

TEST_F(SetCaptureDegreeTest, AFailedGyroReadLeavesTheCheckBoxAsItIs) {
    const QWidget* const window = openAndWait();
    ASSERT_TRUE(isChecked(window, "cb_open"));
    m_camera.fallSilent();
    press(window, "btn_get3");
    settle();
    EXPECT_EQ(textOf(window, "label_3"), "当前陀螺仪开启状态:获取失败");
    EXPECT_TRUE(isChecked(window, "cb_open"));
}

TEST_F(SetCaptureDegreeTest, SendsTheLowBytesOfAnyAngles) {
    struct Row {
        QString angleA;
        QString angleB;
        std::string request;
        const char* logged;
    };
    const std::string zeros = "AA 5A 01 03 03 00 00 00 0A 00 00 B5 6F";
    const Row rows[] = {
        {"30", "60", "AA 5A 01 03 03 00 00 00 0A 1E 3C 16 B8", "30 60"},
        {"300", "", "AA 5A 01 03 03 00 00 00 0A 2C 00 3E 2C", "300 0"},
        {"abc", "３０", zeros, "0 0"},
        {"-256", "99999999999999999999", zeros, "-256 0"},
    };
    const QWidget* const window = openAndWait();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.logged);
        forgetRequests();
        part<QLineEdit>(window, "et_set1_0")->setText(row.angleA);
        part<QLineEdit>(window, "et_set1_1")->setText(row.angleB);
        press(window, "btn_set1");
        EXPECT_EQ(requests(), std::vector<std::string>{row.request});
        EXPECT_EQ(DebugLog::count(row.logged), 1);
    }
}

TEST_F(SetCaptureDegreeTest, ReturnInEitherAngleSetsBoth) {
    const QWidget* const window = openAndWait();
    forgetRequests();
    part<QLineEdit>(window, "et_set1_0")->setText("30");
    part<QLineEdit>(window, "et_set1_1")->setText("60");
    for (const char* edit : {"et_set1_0", "et_set1_1"})
        QTest::keyClick(part<QLineEdit>(window, edit), Qt::Key_Return);
    EXPECT_EQ(requests(), std::vector<std::string>(2, "AA 5A 01 03 03 00 00 00 0A 1E 3C 16 B8"));
}

TEST_F(SetCaptureDegreeTest, SendsAnticlockwiseUnlessClockwiseIsChosen) {
    m_camera.fallSilent();
    const QWidget* const window = openAndWait();
    const std::string clockwise = "AA 5A 01 03 02 00 00 00 0B 01 8D 72";
    const std::string anticlockwise = "AA 5A 01 03 02 00 00 00 0B 00 AC 62";
    forgetRequests();
    press(window, "btn_set2");
    press(window, "rb_closewise");
    press(window, "btn_set2");
    press(window, "rb_anticlosewise");
    press(window, "btn_set2");
    EXPECT_EQ(requests(), (std::vector<std::string>{anticlockwise, clockwise, anticlockwise}));
    EXPECT_EQ(linesAfterOpening(), (Lines{"false false", "true false", "false true"}));
}

TEST_F(SetCaptureDegreeTest, SendsTheGyroSwitch) {
    m_camera.fallSilent();
    const QWidget* const window = openAndWait();
    forgetRequests();
    press(window, "cb_open");
    press(window, "btn_set3");
    press(window, "cb_open");
    press(window, "btn_set3");
    EXPECT_EQ(requests(), (std::vector<std::string>{"AA 5A 01 03 02 00 00 00 0D 01 2B D8",
                                                    "AA 5A 01 03 02 00 00 00 0D 00 0A C8"}));
    EXPECT_EQ(linesAfterOpening(), (Lines{"true", "false"}));
}

TEST_F(SetCaptureDegreeTest, ReadsTheItemHalfASecondAfterAnyWrite) {
    struct Row {
        const char* button;
        std::string request;
    };
    const Row rows[] = {{"btn_set1", readAngles}, {"btn_set2", readDirection}, {"btn_set3", readGyro}};
    const QWidget* const window = openAndWait();
    m_camera.answerWritesWith(answers::frame(3, {10, 1}));
    for (const Row& row : rows) {
        forgetRequests();
        press(window, row.button);
        ASSERT_TRUE(QTest::qWaitFor([this] { return requests().size() == 2; }, 3000));
        EXPECT_EQ(m_clock.timers().back(), 500ms);
        EXPECT_EQ(requests().back(), row.request);
        settle();
    }
    EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度:30,60");
}

TEST_F(SetCaptureDegreeTest, ShowsTheCameraValueAfterAnAcceptedWrite) {
    const QWidget* const window = openAndWait();
    part<QLineEdit>(window, "et_set1_0")->setText("7");
    part<QLineEdit>(window, "et_set1_1")->setText("300");
    press(window, "btn_set1");
    EXPECT_TRUE(QTest::qWaitFor([&] { return textOf(window, "label_1") == "当前陀螺仪抓图角度:7,44"; }));
}

TEST_F(SetCaptureDegreeTest, DelaysTheReadBackWhileTheClientIsBusy) {
    const QWidget* const window = openAndWait();
    press(window, "btn_set3");
    forgetRequests();
    m_borrowers.front().borrower->setExchangeAllowed(false);
    QTest::qWait(700);
    EXPECT_TRUE(requests().empty());
    m_borrowers.front().borrower->setExchangeAllowed(true);
    EXPECT_TRUE(QTest::qWaitFor([this] { return requests() == std::vector{readGyro}; }));
}

TEST_F(SetCaptureDegreeTest, MayBeClosedBetweenWriteAndReadBack) {
    QWidget* const window = openAndWait();
    press(window, "btn_set1");
    forgetRequests();
    window->close();
    QTest::qWait(600);
    EXPECT_TRUE(requests().empty());
    EXPECT_EQ(DebugLog::count("captureDegreeUi destroyed"), 1);
}

TEST_F(SetCaptureDegreeTest, FailsTheReadBackAfterTheLinkClosed) {
    const QWidget* const window = openAndWait();
    press(window, "btn_set1");
    closeLink();
    EXPECT_TRUE(QTest::qWaitFor([&] { return textOf(window, "label_1") == "当前陀螺仪抓图角度:获取失败"; }));
}

class SetCaptureDegreeInMidFetch : public SetCaptureDegreeTest {
protected:
    SetCaptureDegreeInMidFetch() { m_clock.hold(); }
};

TEST_F(SetCaptureDegreeInMidFetch, StaysResponsive) {
    const QWidget* const window = open<SetCaptureDegree>();
    ASSERT_TRUE(m_clock.waitForFirst());
    auto* const edit = part<QLineEdit>(window, "et_set1_0");
    QTest::keyClicks(edit, "12");
    EXPECT_EQ(edit->text(), "12");
    EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度");
    m_clock.release();
    settle();
    EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度:30,60");
}

TEST_F(SetCaptureDegreeInMidFetch, EndsItsReadingWhenItIsClosed) {
    const QPointer<QWidget> window = open<SetCaptureDegree>();
    ASSERT_TRUE(m_clock.waitForFirst());
    window->close();
    QTest::qWait(20);
    EXPECT_TRUE(window.isNull());
    m_clock.release();
    settle();
    EXPECT_EQ(requests().size(), 1U);
}

TEST_F(SetCaptureDegreeInMidFetch, ShowsTheResultWhileHidden) {
    QWidget* const window = open<SetCaptureDegree>();
    ASSERT_TRUE(m_clock.waitForFirst());
    window->hide();
    m_clock.release();
    settle();
    EXPECT_EQ(textOf(window, "label_3"), "当前陀螺仪开启状态:开启");
}

TEST_F(SetCaptureDegreeInMidFetch, DropsTheResultOfAClosedLink) {
    const QWidget* const window = open<SetCaptureDegree>();
    ASSERT_TRUE(m_clock.waitForFirst());
    m_borrowers.front().borrower->attachClient(nullptr);
    m_client->requestStop();
    m_clock.release();
    closeLink();
    settle();
    EXPECT_EQ(requests(), std::vector{readAngles});
    EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度");
}

TEST_F(SetCaptureDegreeTest, ClosingTheLinkEndsAFetchInItsPause) {
    m_clock.speedUp(1);
    m_clock.pauseForReal();
    for (int i = 0; i < 10; ++i)
        open<SetCaptureDegree>();
    ASSERT_TRUE(QTest::qWaitFor([this] { return !requests().empty(); }));
    QElapsedTimer time;
    time.start();
    closeLink();
    EXPECT_LT(time.elapsed(), 1000); // ten full refreshes have four seconds of pauses
}

TEST_F(SetCaptureDegreeTest, TenAtOnceReadOneAfterTheOther) {
    std::vector<const QWidget*> windows;
    std::vector<std::string> expected;
    for (int i = 0; i < 10; ++i) {
        windows.push_back(open<SetCaptureDegree>());
        expected.insert(expected.end(), readAll.begin(), readAll.end());
    }
    settle();
    EXPECT_EQ(requests(), expected);
    for (const QWidget* window : windows) {
        EXPECT_EQ(textOf(window, "label_1"), "当前陀螺仪抓图角度:30,60");
        EXPECT_EQ(textOf(window, "label_2"), "当前陀螺仪抓图方向:顺时针");
        EXPECT_EQ(textOf(window, "label_3"), "当前陀螺仪开启状态:开启");
    }
}
