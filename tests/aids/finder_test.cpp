// Finding cameras in the window, on the recording library.
#include "tests/aids/findertest.h"
#include "tests/support/printing.h"
#include "tests/support/recordedwindow.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/windowactions.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QThreadPool>

#include <atomic>
#include <cerrno>
#include <future>

using namespace guitest;
using namespace findertest;
using namespace std::chrono_literals;

namespace {

const char* const answerOfTwo = "AA 5A 02 01 01 00 00 00 01 FD 32";

class Finder : public RecordedWindow {
protected:
    Finder() : RecordedWindow({"/dev/ttyA", "/dev/ttyB"}) {}
    ~Finder() override {
        window.reset();
        QThreadPool::globalInstance()->waitForDone();
    }

    /// The camera answers requests to this address.
    static void answerAddress(std::uint8_t address) {
        fake_serial::onWrite([address](const fake_serial::Bytes& request) {
            if (request.at(2) == address)
                fake_serial::willRead(fake_serial::bytes(answerOfTwo));
        });
    }
    /// Chooses one port and the first rate.
    CameraFinderWindow& open() const {
        CameraFinderWindow& finder = openFinder(*window);
        checkOnly(finder, "list_ports", {"/dev/ttyB"});
        checkOnly(finder, "list_rates", {"460800"});
        return finder;
    }

    StdoutCapture out;
};

/// Holds every write until release(), or for a limited time.
class HeldLine {
public:
    HeldLine() {
        fake_serial::onWrite([this, freed = m_freed.get_future().share()](const auto&) {
            m_held = true;
            freed.wait_for(5s);
        });
    }
    bool waitUntilHeld() const {
        return eventually([this] { return m_held.load(); });
    }
    void release() { m_freed.set_value(); }

private:
    std::promise<void> m_freed;
    std::atomic<bool> m_held{false};
};

std::vector<std::string> callsOf(const std::string& name) {
    std::vector<std::string> found;
    for (const std::string& call : fake_serial::calls()) {
        if (call.starts_with(name))
            found.push_back(call);
    }
    return found;
}

} // namespace

TEST_F(Finder, OffersPortsAndUsualRatesFirst) {
    const CameraFinderWindow& finder = openFinder(*window);
    EXPECT_EQ(choices(finder, "list_ports", true), QStringList({"/dev/ttyA", "/dev/ttyB"}));
    EXPECT_EQ(choices(finder, "list_rates", false), QStringList({"460800", "230400", "115200", "9600"}));
    EXPECT_EQ(choices(finder, "list_rates", true), QStringList({"460800", "230400"}));
    EXPECT_EQ(text(finder, "rb_usual"), "常用：01、EE、03、02");
    EXPECT_FALSE(isEnabled(finder, "btn_use"));
    EXPECT_FALSE(isEnabled(finder, "btn_stop"));
}

TEST_F(Finder, SendsNothingUntilStarted) {
    openFinder(*window);
    QTest::qWait(50);
    EXPECT_TRUE(fake_serial::calls().empty());
    EXPECT_NE(statusText(*window), "请先打开串口") << "it needs no link";
}

TEST_F(Finder, SendsOneHeartbeatToEachUsualAddress) {
    CameraFinderWindow& finder = open();
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    std::vector<std::string> sent;
    for (const fake_serial::Bytes& request : fake_serial::writes())
        sent.push_back(fake_serial::hex(request));
    EXPECT_EQ(sent, (std::vector<std::string>{
                        "AA 5A 01 01 01 00 00 00 00 5E FA", "AA 5A EE 01 01 00 00 00 00 54 68",
                        "AA 5A 03 01 01 00 00 00 00 BD 9A", "AA 5A 02 01 01 00 00 00 00 DC 22"}));
    ASSERT_EQ(callsOf("open").size(), 1U);
    EXPECT_TRUE(callsOf("open")[0].starts_with("open /dev/ttyB 460800 "));
    EXPECT_EQ(fake_serial::count("close"), 1);
    EXPECT_EQ(state(finder), "没有摄像头应答，请检查电源和接线，或选择全部地址和波特率");
}

TEST_F(Finder, TriesAllAddressesOnRequest) {
    CameraFinderWindow& finder = open();
    click(finder, "rb_all");
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    EXPECT_EQ(fake_serial::writes().size(), 256U);
    EXPECT_EQ(state(finder), "没有摄像头应答，请检查电源和接线");
}

TEST_F(Finder, SearchesEachPortAtEachRate) {
    CameraFinderWindow& finder = openFinder(*window);
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    EXPECT_EQ(callsOf("open").size(), 4U);
    EXPECT_EQ(fake_serial::writes().size(), 16U);
}

TEST_F(Finder, AsksForAPortAndARate) {
    CameraFinderWindow& finder = openFinder(*window);
    checkOnly(finder, "list_ports", {});
    click(finder, "btn_start");
    EXPECT_EQ(state(finder), "请至少选择一个串口和一个波特率");
    EXPECT_TRUE(fake_serial::calls().empty());
}

TEST_F(Finder, ListsWhoAnswersTwice) {
    answerAddress(2);
    CameraFinderWindow& finder = open();
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    EXPECT_EQ(rows(finder, "table_found"), QStringList("/dev/ttyB 460800 2（02）"));
    EXPECT_EQ(state(finder), "找到 1 台，选中一行，点击“使用”");
    EXPECT_TRUE(isEnabled(finder, "btn_use")) << "the first row is chosen";
}

TEST_F(Finder, UseTakesPortRateAndAddressOver) {
    answerAddress(2);
    CameraFinderWindow& finder = openFinder(*window);
    checkOnly(finder, "list_ports", {"/dev/ttyB"});
    checkOnly(finder, "list_rates", {"115200"});
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    click(finder, "btn_use");
    EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
    EXPECT_EQ(text(*window, "label_link"), "/dev/ttyB，115200，从机地址 2");
    EXPECT_EQ(text(*window, "label_slaveinfo"), "当前从机地址:2");
    EXPECT_EQ(find<QComboBox>(*window, "sel_ports")->currentText(), "/dev/ttyB");
    EXPECT_EQ(find<QComboBox>(*window, "sel_baund")->currentText(), "115200");
    click(*window, "btn_heartbeat");
    EXPECT_EQ(fake_serial::hex(fake_serial::writes().back()), "AA 5A 02 01 01 00 00 00 00 DC 22");
}

TEST_F(Finder, UseOnTheOpenPortSetsTheAddressOnly) {
    answerAddress(2);
    click(*window, "btn_open");
    CameraFinderWindow& finder = openFinder(*window);
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    EXPECT_EQ(rows(finder, "table_found"), QStringList("/dev/ttyA 460800 2（02）"));
    click(finder, "btn_use");
    EXPECT_EQ(text(*window, "label_link"), "/dev/ttyA，460800，从机地址 2");
    EXPECT_EQ(fake_serial::count("close"), 0);
    EXPECT_EQ(callsOf("open").size(), 1U);
}

TEST_F(Finder, UseReplacesTheOpenLink) {
    answerAddress(2);
    CameraFinderWindow& finder = open();
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    find<QComboBox>(*window, "sel_ports")->setCurrentText("/dev/ttyA");
    click(*window, "btn_open");
    ASSERT_EQ(text(*window, "label_link"), "/dev/ttyA，460800，从机地址 1");
    click(finder, "btn_use");
    EXPECT_EQ(text(*window, "label_link"), "/dev/ttyB，460800，从机地址 2");
    EXPECT_EQ(fake_serial::count("close"), 2);
}

TEST_F(Finder, UseOfALostPortReportsItAsOpeningDoes) {
    answerAddress(2);
    CameraFinderWindow& finder = open();
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    fake_serial::failOpening(ENOENT);
    BoxAnswerer boxes;
    clickThatThrows(finder, "btn_use");
    ASSERT_TRUE(boxes.waitFor(1));
    EXPECT_TRUE(boxes.seen()[0].text.startsWith("打开串口失败：")) << boxes.seen()[0].text.toStdString();
    EXPECT_EQ(text(*window, "btn_open"), "打开串口");
}

TEST_F(Finder, TellsAPortThatCannotBeOpened) {
    fake_serial::failOpening(EBUSY);
    CameraFinderWindow& finder = open();
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    const QString failures = text(finder, "label_failures");
    EXPECT_TRUE(failures.startsWith("/dev/ttyB：打开串口失败：")) << failures.toStdString();
    EXPECT_TRUE(failures.contains("串口正被其他程序占用")) << failures.toStdString();
}

TEST_F(Finder, StopEndsTheSearch) {
    HeldLine held;
    CameraFinderWindow& finder = open();
    click(finder, "btn_start");
    ASSERT_TRUE(held.waitUntilHeld());
    click(finder, "btn_stop");
    EXPECT_FALSE(isEnabled(finder, "btn_stop"));
    held.release();
    ASSERT_TRUE(hasEnded(finder));
    EXPECT_EQ(state(finder), "已停止，找到 0 台");
    EXPECT_EQ(fake_serial::writes().size(), 1U);
    EXPECT_EQ(fake_serial::count("close"), 1);
}

TEST_F(Finder, ShowsProgressWhileItSearches) {
    HeldLine held;
    CameraFinderWindow& finder = open();
    click(finder, "btn_start");
    ASSERT_TRUE(held.waitUntilHeld());
    EXPECT_TRUE(eventually([&] { return state(finder) == "已试 1 / 4 次，找到 0 台"; }))
        << state(finder).toStdString();
    EXPECT_TRUE(find<QWidget>(finder, "bar_progress")->isVisible());
    held.release();
    ASSERT_TRUE(hasEnded(finder));
    EXPECT_FALSE(find<QWidget>(finder, "bar_progress")->isVisible());
}

TEST_F(Finder, OpeningTheLinkEndsTheSearchFirst) {
    HeldLine held;
    CameraFinderWindow& finder = open();
    find<QComboBox>(*window, "sel_ports")->setCurrentText("/dev/ttyB");
    click(finder, "btn_start");
    ASSERT_TRUE(held.waitUntilHeld());
    std::thread releaser([&] {
        std::this_thread::sleep_for(50ms);
        held.release();
    });
    click(*window, "btn_open");
    releaser.join();
    std::vector<std::string> ports;
    for (const std::string& call : fake_serial::calls()) {
        if (call.starts_with("open ") || call == "close")
            ports.push_back(call.substr(0, call.find(' ')));
    }
    EXPECT_EQ(ports, (std::vector<std::string>{"open", "close", "open"}));
    EXPECT_EQ(state(finder), "串口已打开或关闭，查找已停止");
}

TEST_F(Finder, ClosedWindowLeavesThePortBeforeTheLinkOpens) {
    HeldLine held;
    CameraFinderWindow& finder = open();
    find<QComboBox>(*window, "sel_ports")->setCurrentText("/dev/ttyB");
    click(finder, "btn_start");
    ASSERT_TRUE(held.waitUntilHeld());
    finder.close();
    ASSERT_TRUE(eventually([] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return openWindows<CameraFinderWindow>().empty();
    }));
    std::thread releaser([&] {
        std::this_thread::sleep_for(50ms);
        held.release();
    });
    click(*window, "btn_open");
    releaser.join();
    EXPECT_EQ(fake_serial::count("close"), 1);
    EXPECT_EQ(callsOf("open").size(), 2U);
}

TEST_F(Finder, WithALinkSearchesItsPortAndRateOnly) {
    find<QComboBox>(*window, "sel_baund")->setCurrentText("9600");
    click(*window, "btn_open");
    CameraFinderWindow& finder = openFinder(*window);
    EXPECT_FALSE(isEnabled(finder, "group_ports"));
    EXPECT_FALSE(isEnabled(finder, "group_rates"));
    EXPECT_EQ(text(finder, "label_scope"), "串口已打开，只查找 /dev/ttyA（波特率 9600）。");
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    EXPECT_EQ(callsOf("open").size(), 1U);
    EXPECT_EQ(fake_serial::writes().size(), 4U);
}

TEST_F(Finder, CommandsDuringASearchKeepTheirAddress) {
    click(*window, "btn_open");
    HeldLine held;
    CameraFinderWindow& finder = openFinder(*window);
    click(finder, "rb_all");
    click(finder, "btn_start");
    ASSERT_TRUE(held.waitUntilHeld());
    held.release();
    ASSERT_TRUE(eventually([&] { return fake_serial::writes().size() > 8; }));
    click(*window, "btn_modelinfo");
    click(finder, "btn_stop");
    ASSERT_TRUE(hasEnded(finder));
    std::size_t commands = 0;
    for (const fake_serial::Bytes& request : fake_serial::writes()) {
        if (request.at(3) == 0x01)
            continue;
        ++commands;
        EXPECT_EQ(request.at(2), 0x01) << fake_serial::hex(request);
    }
    EXPECT_GT(commands, 0U);
    EXPECT_EQ(text(*window, "label_link"), "/dev/ttyA，460800，从机地址 1");
}

TEST_F(Finder, ClosingTheLinkEndsTheSearch) {
    click(*window, "btn_open");
    CameraFinderWindow& finder = openFinder(*window);
    click(finder, "rb_all");
    click(finder, "btn_start");
    ASSERT_TRUE(eventually([] { return !fake_serial::writes().empty(); }));
    click(*window, "btn_open");
    EXPECT_EQ(text(*window, "btn_open"), "打开串口");
    EXPECT_TRUE(isEnabled(finder, "btn_start"));
    EXPECT_TRUE(isEnabled(finder, "group_ports"));
    EXPECT_EQ(state(finder), "串口已打开或关闭，查找已停止");
    const std::size_t sent = fake_serial::writes().size();
    QTest::qWait(50);
    EXPECT_EQ(fake_serial::writes().size(), sent);
}

TEST_F(Finder, TellsALostPortOfTheLink) {
    click(*window, "btn_open");
    CameraFinderWindow& finder = openFinder(*window);
    fake_serial::throwOn("write");
    click(finder, "btn_start");
    ASSERT_TRUE(hasEnded(finder));
    EXPECT_NE(text(finder, "label_failures"), "");
}

// --- the link of the status bar ----------------------------------------------------------------------------

TEST_F(Finder, UnansweredCommandOffersIt) {
    EXPECT_TRUE(find<QWidget>(*window, "link_search")->isHidden());
    click(*window, "btn_open");
    click(*window, "btn_heartbeat");
    EXPECT_EQ(statusText(*window), "测试心跳：没有应答，请检查接线、从机地址和波特率");
    EXPECT_EQ(text(*window, "link_search"), "查找摄像头");
    click(*window, "link_search");
    EXPECT_EQ(openWindows<CameraFinderWindow>().size(), 1U);
}

TEST_F(Finder, NextMessageTakesTheOfferBack) {
    click(*window, "btn_open");
    click(*window, "btn_heartbeat");
    ASSERT_TRUE(find<QWidget>(*window, "link_search")->isVisible());
    fake_serial::willRead(fake_serial::bytes(answerOfTwo));
    click(*window, "btn_heartbeat");
    EXPECT_FALSE(find<QWidget>(*window, "link_search")->isVisible());
    EXPECT_EQ(find<QWidget>(*window, "link_search")->focusPolicy(), Qt::NoFocus);
}

TEST_F(Finder, LostAdapterOffersNoSearch) {
    click(*window, "btn_open");
    fake_serial::throwOn("write");
    click(*window, "btn_heartbeat");
    EXPECT_FALSE(find<QWidget>(*window, "link_search")->isVisible());
}

TEST_F(Finder, OpensOnce) {
    openFinder(*window);
    trigger(*window, "actionFindCamera");
    EXPECT_EQ(openWindows<CameraFinderWindow>().size(), 1U);
}
