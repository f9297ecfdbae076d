// The button "重新打开" after an adapter was unplugged and plugged in again, against the recording library.
#include "app/adapters.h"
#include "tests/app/listedports.h"
#include "tests/support/printing.h"
#include "tests/support/recordedwindow.h"

#include <QComboBox>
#include <QPushButton>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

using namespace guitest;

namespace {

constexpr const char* idWithoutSerial = "USB VID:PID=1a86:7523";

class Reopening : public ListedPorts {
protected:
    /// A window with an open link to the first port.
    void open(Ports ports) {
        start(std::move(ports));
        click(*window, "btn_open");
        ASSERT_EQ(text(*window, "btn_open"), "关闭串口");
    }

    /// Unplugs the adapter; the window notices at its next command.
    void unplug(Ports left = {}) {
        fake_serial::setPorts(std::move(left));
        fake_serial::throwOn("write");
        click(*window, "btn_heartbeat");
        ASSERT_EQ(statusText(*window), "串口转接器已断开，请插好后关闭并重新打开串口");
    }

    void plug(Ports ports) {
        fake_serial::reset();
        fake_serial::setPorts(std::move(ports));
    }

    [[nodiscard]] bool isOffered() const {
        const auto* const button = find<QPushButton>(*window, "btn_reopen");
        EXPECT_EQ(button->isVisible(), button->focusPolicy() != Qt::NoFocus);
        return button->isVisible();
    }
    [[nodiscard]] bool waitForOffer(bool offered = true) const {
        return eventually([this, offered] { return isOffered() == offered; });
    }
    [[nodiscard]] bool waitForText(const QString& words) const {
        return eventually([this, words] { return statusText(*window) == words; });
    }
    /// True if no list is asked for in the time of several.
    [[nodiscard]] bool listsNothing() const {
        const std::size_t before = clock.timers().size();
        QTest::qWait(500);
        return clock.timers().size() == before;
    }

    [[nodiscard]] QString chosen() const { return find<QComboBox>(*window, "sel_ports")->currentText(); }
    [[nodiscard]] static std::string lastOpening() {
        std::string last;
        for (const std::string& call : fake_serial::calls()) {
            if (call.starts_with("open "))
                last = call;
        }
        return last;
    }
};

} // namespace

TEST_F(Reopening, IsNotOfferedBeforeTheAdapterIsBack) {
    open({adapterPort("COM3")});
    EXPECT_FALSE(isOffered());
    unplug();
    waitForLists();
    EXPECT_FALSE(isOffered());
}

TEST_F(Reopening, IsOfferedWhenTheAdapterIsBack) {
    open({adapterPort("COM3")});
    unplug();
    waitForLists();
    plug({adapterPort("COM3")});
    EXPECT_TRUE(waitForOffer());
    EXPECT_EQ(statusText(*window), "转接器已插好（COM3），请点击“重新打开”");
    EXPECT_EQ(text(*window, "btn_open"), "关闭串口") << "nothing opens by itself";
    EXPECT_EQ(lastOpening(), "");
}

TEST_F(Reopening, OpensLikeTheOpenButton) {
    open({adapterPort("COM3")});
    find<QComboBox>(*window, "sel_baund")->setCurrentText("115200");
    unplug();
    plug({adapterPort("COM3")});
    ASSERT_TRUE(waitForOffer());
    const DebugLog log;
    click(*window, "btn_reopen");
    EXPECT_TRUE(DebugLog::has("COM3 115200"));
    EXPECT_TRUE(lastOpening().starts_with("open COM3 115200 ")) << lastOpening();
    EXPECT_EQ(fake_serial::count("close"), 1);
    EXPECT_TRUE(fake_serial::writes().empty());
    EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
    EXPECT_EQ(statusText(*window), "已打开 COM3");
    EXPECT_TRUE(isEnabled(*window, "btn_heartbeat"));
    EXPECT_FALSE(isOffered());
}

TEST_F(Reopening, FindsTheAdapterUnderAnotherName) {
    open({adapterPort("COM3"), adapterPort("COM4", "n/a")});
    unplug({adapterPort("COM4", "n/a")});
    plug({adapterPort("COM4", "n/a"), adapterPort("COM7")});
    ASSERT_TRUE(waitForOffer());
    click(*window, "btn_reopen");
    EXPECT_EQ(chosen(), "COM7");
    EXPECT_EQ(text(*window, "label_link"), "COM7，460800，从机地址 1");
}

TEST_F(Reopening, IsOfferedAfterTheLinkWasClosed) {
    open({adapterPort("COM3")});
    unplug();
    click(*window, "btn_open");
    ASSERT_EQ(text(*window, "btn_open"), "打开串口");
    plug({adapterPort("COM7")});
    ASSERT_TRUE(waitForOffer());
    click(*window, "btn_reopen");
    EXPECT_EQ(statusText(*window), "已打开 COM7");
}

TEST_F(Reopening, IsNotOfferedForAnotherAdapterOfTheSameName) {
    open({adapterPort("COM3")});
    unplug();
    plug({adapterPort("COM3", "USB VID:PID=0403:6001 SNR=B2")});
    waitForLists();
    EXPECT_FALSE(isOffered());
}

TEST_F(Reopening, GoesByTheNameWithoutAHardwareId) {
    open({adapterPort("COM3", "n/a"), adapterPort("COM4", "n/a")});
    unplug({adapterPort("COM4", "n/a")});
    waitForLists();
    EXPECT_FALSE(isOffered());
    plug({adapterPort("COM3", "n/a"), adapterPort("COM4", "n/a")});
    EXPECT_TRUE(waitForOffer());
    EXPECT_EQ(statusText(*window), "转接器已插好（COM3），请点击“重新打开”");
}

TEST_F(Reopening, TakesTheOneOfTwoAlikeThatIsNew) {
    open({adapterPort("COM3", idWithoutSerial), adapterPort("COM4", idWithoutSerial)});
    unplug({adapterPort("COM4", idWithoutSerial)});
    waitForLists();
    EXPECT_FALSE(isOffered());
    plug({adapterPort("COM4", idWithoutSerial), adapterPort("COM5", idWithoutSerial)});
    ASSERT_TRUE(waitForOffer());
    click(*window, "btn_reopen");
    EXPECT_EQ(statusText(*window), "已打开 COM5");
}

TEST_F(Reopening, RefusesToGuessBetweenTwoAlike) {
    open({adapterPort("COM3", idWithoutSerial)});
    unplug();
    plug({adapterPort("COM5", idWithoutSerial), adapterPort("COM6", idWithoutSerial)});
    EXPECT_TRUE(waitForText("有几个相同的转接器，请关闭串口，选择串口后再打开"));
    EXPECT_FALSE(isOffered());
}

TEST_F(Reopening, IsWithdrawnWhenTheAdapterIsGoneAgain) {
    open({adapterPort("COM3")});
    unplug();
    plug({adapterPort("COM3")});
    ASSERT_TRUE(waitForOffer());
    fake_serial::setPorts({});
    EXPECT_TRUE(waitForOffer(false));
    EXPECT_EQ(statusText(*window), "转接器又断开了，请重新插好");
    plug({adapterPort("COM3")});
    EXPECT_TRUE(waitForOffer());
}

TEST_F(Reopening, TellsTheChoiceWhenTheAdapterIsGoneAgain) {
    open({adapterPort("COM3"), adapterPort("COM4", "n/a")});
    unplug({adapterPort("COM4", "n/a")});
    click(*window, "btn_open");
    plug({adapterPort("COM3"), adapterPort("COM4", "n/a")});
    ASSERT_TRUE(waitForOffer());
    fake_serial::setPorts({adapterPort("COM4", "n/a")});
    EXPECT_TRUE(waitForOffer(false));
    EXPECT_EQ(statusText(*window), "所选转接器不在，改选 COM4，请核对");
}

TEST_F(Reopening, LeavesTheFocusAtTheOpenButtonWhenWithdrawn) {
    open({adapterPort("COM3")});
    unplug();
    plug({adapterPort("COM3")});
    ASSERT_TRUE(waitForOffer());
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    find<QPushButton>(*window, "btn_reopen")->setFocus();
    fake_serial::setPorts({});
    ASSERT_TRUE(waitForOffer(false));
    EXPECT_EQ(window->focusWidget(), window.get()) << "a second key press presses nothing";
    QTest::keyClick(window.get(), Qt::Key_Tab);
    EXPECT_EQ(window->focusWidget(), find<QPushButton>(*window, "btn_open"));
}

TEST_F(Reopening, IsWithdrawnWhenTheUserPicksAnotherPort) {
    open({adapterPort("COM3"), adapterPort("COM4", "n/a")});
    unplug({adapterPort("COM4", "n/a")});
    click(*window, "btn_open");
    plug({adapterPort("COM3"), adapterPort("COM4", "n/a")});
    ASSERT_TRUE(waitForOffer());
    QTest::keyClick(find<QComboBox>(*window, "sel_ports"), Qt::Key_Down);
    EXPECT_EQ(chosen(), "COM4");
    EXPECT_FALSE(isOffered());
    waitForLists();
    EXPECT_FALSE(isOffered());
}

TEST_F(Reopening, IsWithdrawnWhenTheLinkIsOpenedOtherwise) {
    open({adapterPort("COM3")});
    unplug();
    click(*window, "btn_open");
    plug({adapterPort("COM3")});
    ASSERT_TRUE(waitForOffer());
    click(*window, "btn_open");
    EXPECT_EQ(statusText(*window), "已打开 COM3");
    EXPECT_FALSE(isOffered());
    EXPECT_TRUE(listsNothing());
}

TEST_F(Reopening, StaysOfferedWhenOpeningFails) {
    open({adapterPort("COM3")});
    unplug();
    plug({adapterPort("COM3")});
    ASSERT_TRUE(waitForOffer());
    fake_serial::failOpening(EBUSY);
    BoxAnswerer boxes;
    clickThatThrows(*window, "btn_reopen");
    ASSERT_TRUE(boxes.waitFor(1));
    EXPECT_EQ(text(*window, "btn_open"), "打开串口");
    EXPECT_TRUE(waitForOffer());
    EXPECT_TRUE(statusText(*window).startsWith("打开串口失败："));
    fake_serial::failOpening(0);
    click(*window, "btn_reopen");
    EXPECT_EQ(statusText(*window), "已打开 COM3");
}

TEST_F(Reopening, ListsNoPortsWhileALinkIsOpen) {
    open({adapterPort("COM3")});
    EXPECT_TRUE(listsNothing());
    unplug();
    waitForLists();
}

TEST_F(Reopening, MayBeClosedWhileAnAdapterIsLost) {
    open({adapterPort("COM3")});
    unplug();
    window->close();
    plug({adapterPort("COM3")});
    EXPECT_TRUE(listsNothing());
    EXPECT_TRUE(find<QPushButton>(*window, "btn_reopen")->isHidden());
}

TEST(AdapterTrack, CountsAnAlikeAdapterOnceItWasGone) {
    const PortEntry own{"COM3", {}, "A"};
    const PortEntry other{"COM4", {}, "A"};
    AdapterTrack track("COM3", {own, other});
    EXPECT_EQ(track.candidates({other}), QStringList());
    EXPECT_EQ(track.candidates({}), QStringList());
    EXPECT_EQ(track.candidates({other}), QStringList("COM4"));
}
