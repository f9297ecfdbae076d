// Finding cameras in the window, with virtual cameras.
#include "dialogs/doorop.h"
#include "tests/aids/findertest.h"
#include "tests/support/camerawindow.h"
#include "tests/support/printing.h"
#include "tests/support/windowactions.h"

#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <random>

using namespace guitest;
using namespace findertest;
using namespace std::chrono_literals;

namespace {

class FinderTest : public testing::Test, protected CameraWindow {
protected:
    FinderTest() : CameraWindow(emulator::settingsForType(emulator::CameraType::ostra)) {
        moveCamera(5);
        find<QComboBox>(*window, "sel_ports")->addItem(port());
    }
    ~FinderTest() override {
        window.reset();
        QThreadPool::globalInstance()->waitForDone();
        EXPECT_EQ(record().badFrames, 0U);
    }

    [[nodiscard]] QString port() const { return QString::fromStdString(camera.portName()); }
    void moveCamera(std::uint8_t address) {
        camera.withCamera([address](emulator::VirtualCamera& each) { each.settings().address = address; });
    }
    CameraFinderWindow& finderOfPort() const {
        CameraFinderWindow& finder = openFinder(*window);
        checkOnly(finder, "list_ports", {port()});
        checkOnly(finder, "list_rates", {"460800"});
        return finder;
    }
    bool beats() const {
        click(*window, "btn_heartbeat");
        return find<QRadioButton>(*window, "rb_heartbeat")->isChecked();
    }
};

} // namespace

TEST_F(FinderTest, FindsAnUnusualAddressAndUsesIt) {
    CameraFinderWindow& finder = finderOfPort();
    click(finder, "rb_all");
    click(finder, "btn_start");
    ASSERT_TRUE(eventually([&] { return rows(finder, "table_found").size() == 1; }, 20000));
    EXPECT_EQ(rows(finder, "table_found"), QStringList(port() + " 460800 5（05）"));
    EXPECT_FALSE(isEnabled(finder, "btn_start")) << "the search goes on";
    click(finder, "btn_use");
    EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
    EXPECT_TRUE(beats());
}

TEST_F(FinderTest, FindsNoCameraThatStaysSilent) {
    fault("silent");
    CameraFinderWindow& finder = finderOfPort();
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    EXPECT_EQ(rows(finder, "table_found"), QStringList());
}

TEST_F(FinderTest, LateAnswerIsNoCamera) {
    moveCamera(1);
    fault("late@heartbeat");
    CameraFinderWindow& finder = finderOfPort();
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    EXPECT_EQ(rows(finder, "table_found"), QStringList());
}

TEST_F(FinderTest, WindowsWorkDuringASearchOnTheLink) {
    moveCamera(1);
    open();
    CameraFinderWindow& finder = openFinder(*window);
    click(finder, "rb_all");
    click(finder, "btn_start");
    ASSERT_TRUE(eventually([&] { return rows(finder, "table_found").size() == 1; }, 20000));
    // A request whose heartbeat timed out may answer late: the next command waits for that.
    EXPECT_TRUE(eventually([this] { return beats(); }));
    click(*window, "btn_modelinfo");
    EXPECT_EQ(text(*window, "label_modelinfo"), "模型信息:" + QString::fromStdString(state().modelInfo));
    click(finder, "btn_stop");
    ASSERT_TRUE(hasEnded(finder));
}

TEST_F(FinderTest, LinkClosesAtAnyMomentOfASearch) {
    open();
    CameraFinderWindow& finder = openFinder(*window);
    click(finder, "rb_all");
    std::mt19937 random(11);
    for (int round = 0; round < 8; ++round) {
        SCOPED_TRACE(round);
        click(finder, "btn_start");
        QTest::qWait(static_cast<int>(random() % 600));
        close();
        EXPECT_TRUE(isEnabled(finder, "btn_start"));
        open();
    }
    moveCamera(1);
    EXPECT_TRUE(beats());
}

TEST_F(FinderTest, LinkOpensAtAnyMomentOfASearch) {
    CameraFinderWindow& finder = finderOfPort();
    click(finder, "rb_all");
    moveCamera(1);
    std::mt19937 random(13);
    for (int round = 0; round < 8; ++round) {
        SCOPED_TRACE(round);
        click(finder, "btn_start");
        QTest::qWait(static_cast<int>(random() % 600));
        open();
        EXPECT_TRUE(beats());
        close();
    }
}

TEST_F(FinderTest, RemovedAdapterEndsTheSearch) {
    CameraFinderWindow& finder = finderOfPort();
    click(finder, "rb_all");
    click(finder, "btn_start");
    ASSERT_TRUE(eventually([&] { return record().byteCount > 0; }));
    camera.vanish();
    ASSERT_TRUE(hasEnded(finder));
    EXPECT_NE(text(finder, "label_failures"), "");
}

TEST_F(FinderTest, ProgramEndsDuringASearch) {
    CameraFinderWindow& finder = finderOfPort();
    click(finder, "rb_all");
    click(finder, "btn_start");
    ASSERT_TRUE(eventually([&] { return record().byteCount > 0; }));
    window.reset();
    QThreadPool::globalInstance()->waitForDone();
    QTest::qWait(20);
}
