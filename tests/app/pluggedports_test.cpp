// Adapters that are plugged in and unplugged while no link is open, against the recording library.
#include "app/portchoice.h"
#include "tests/app/listedports.h"
#include "tests/support/printing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace guitest;

namespace {

class PluggedPorts : public ListedPorts {
protected:
    void start(Ports ports) {
        ListedPorts::start(std::move(ports));
        choice = find<PortChoice>(*window, "sel_ports");
    }

    /// Changes the ports and waits until the window has listed them.
    void plug(Ports ports) {
        fake_serial::setPorts(std::move(ports));
        waitForLists();
    }
    /// As a user does with the keyboard.
    void chooseNext() const { QTest::keyClick(choice, Qt::Key_Down); }
    [[nodiscard]] QString chosen() const { return choice->currentText(); }

    PortChoice* choice = nullptr;
};

/// Gives the adapters of a system new names, again and again.
class Renumbering {
public:
    explicit Renumbering(std::vector<std::string> ids) : m_ids(std::move(ids)) {}

    /// Ports in the order of the adapters, and one that keeps its name.
    Ports next() {
        std::shuffle(m_numbers.begin(), m_numbers.end(), m_random);
        Ports ports{adapterPort("/dev/ttyS0", "n/a")};
        for (std::size_t adapter = 0; adapter < m_ids.size(); ++adapter)
            ports.push_back(adapterPort("/dev/ttyUSB" + std::to_string(m_numbers[adapter]), m_ids[adapter]));
        return ports;
    }

private:
    std::vector<std::string> m_ids;
    std::vector<int> m_numbers{0, 1, 2, 3, 4, 5, 6, 7};
    std::mt19937 m_random{1};
};

constexpr int renumberings = 100;

} // namespace

TEST_F(PluggedPorts, ANewAdapterIsChosen) {
    start({adapterPort("COM1", "n/a")});
    plug({adapterPort("COM1", "n/a"), adapterPort("COM5", "A")});
    EXPECT_EQ(chosen(), "COM5");
    EXPECT_EQ(statusText(*window), "发现新串口 COM5，已选好");
    click(*window, "btn_open");
    EXPECT_EQ(statusText(*window), "已打开 COM5");
}

TEST_F(PluggedPorts, ANewAdapterLeavesAChoiceByHand) {
    start({adapterPort("COM1", "n/a"), adapterPort("COM3", "A")});
    chooseNext();
    ASSERT_EQ(chosen(), "COM3");
    plug({adapterPort("COM1", "n/a"), adapterPort("COM3", "A"), adapterPort("COM5", "B")});
    EXPECT_EQ(chosen(), "COM3");
    EXPECT_EQ(statusText(*window), "发现新串口 COM5，仍选 COM3");
}

TEST_F(PluggedPorts, ANewAdapterLeavesAPortThatWasOpened) {
    start({adapterPort("COM3", "A")});
    click(*window, "btn_open");
    fake_serial::setPorts({adapterPort("COM3", "A"), adapterPort("COM5", "B")});
    click(*window, "btn_open");
    EXPECT_TRUE(eventually([this] { return statusText(*window) == "发现新串口 COM5，仍选 COM3"; }));
    EXPECT_EQ(chosen(), "COM3");
}

TEST_F(PluggedPorts, ANewAdapterReplacesAChoiceThatIsGone) {
    start({adapterPort("COM3", "A")});
    chooseNext();
    plug({});
    EXPECT_EQ(chosen(), "");
    EXPECT_EQ(statusText(*window), "没有发现串口，请插入转接器后点开串口列表");
    plug({adapterPort("COM5", "B")});
    EXPECT_EQ(chosen(), "COM5");
}

TEST_F(PluggedPorts, AChoiceByHandComesBackUnderAnotherName) {
    start({adapterPort("COM1", "n/a"), adapterPort("COM3", "A")});
    chooseNext();
    plug({adapterPort("COM1", "n/a")});
    EXPECT_EQ(statusText(*window), "所选转接器不在，改选 COM1，请核对");
    plug({adapterPort("COM1", "n/a"), adapterPort("COM6", "A")});
    EXPECT_EQ(chosen(), "COM6");
}

TEST_F(PluggedPorts, AnAlikeAdapterIsNotTakenForTheChosenOne) {
    start({adapterPort("COM1", "n/a"), adapterPort("COM3", "A"), adapterPort("COM4", "A")});
    chooseNext();
    ASSERT_EQ(chosen(), "COM3");
    plug({adapterPort("COM1", "n/a"), adapterPort("COM4", "A")});
    EXPECT_EQ(statusText(*window), "所选转接器不在，改选 COM4，请核对");
    plug({adapterPort("COM1", "n/a"), adapterPort("COM4", "A"), adapterPort("COM5", "A")});
    EXPECT_EQ(chosen(), "COM4");
    EXPECT_EQ(statusText(*window), "发现新串口 COM5，仍选 COM4");
    plug({adapterPort("COM1", "n/a"), adapterPort("COM4", "A"), adapterPort("COM3", "A")});
    EXPECT_EQ(chosen(), "COM3") << "the old name decides";
}

TEST_F(PluggedPorts, SeveralNewAdaptersAreOnlyTold) {
    start({adapterPort("COM3", "A")});
    plug({adapterPort("COM3", "A"), adapterPort("COM5", "B"), adapterPort("COM4", "C")});
    EXPECT_EQ(chosen(), "COM3");
    EXPECT_EQ(statusText(*window), "发现新串口 COM4、COM5，仍选 COM3");
}

TEST_F(PluggedPorts, WaitUntilTheOpenListIsClosed) {
    start({adapterPort("COM3", "A")});
    choice->showPopup();
    plug({adapterPort("COM3", "A"), adapterPort("COM5", "B")});
    EXPECT_EQ(choice->count(), 1);
    choice->hidePopup();
    EXPECT_TRUE(eventually([this] { return choice->count() == 2; }));
}

TEST_F(PluggedPorts, AreNotListedAfterTheWindowIsClosed) {
    start({adapterPort("COM3", "A")});
    plug({adapterPort("COM3", "A"), adapterPort("COM5", "B")});
    window->close();
    const std::size_t before = clock.timers().size();
    QTest::qWait(500);
    EXPECT_EQ(clock.timers().size(), before);
}

TEST_F(PluggedPorts, TheChoiceFollowsAHundredRenumberings) {
    Renumbering system({"A", "B", "C"});
    start(system.next());
    choice->setCurrentIndex(1);
    chooseNext();
    ASSERT_TRUE(choice->itemData(2, Qt::ToolTipRole).toString().endsWith("\nB"));
    for (int round = 0; round < renumberings; ++round) {
        Ports ports = system.next();
        const bool isUnplugged = round % 10 == 9;
        const std::string name = ports[2].port;
        if (isUnplugged)
            ports.erase(ports.begin() + 2);
        fake_serial::setPorts(ports);
        choice->refill();
        ASSERT_EQ(chosen() == QString::fromStdString(name), !isUnplugged) << round;
    }
}

TEST_F(PluggedPorts, AHundredRenumberingsOfAlikeAdaptersAreTold) {
    Renumbering system({"A", "A"});
    start(system.next());
    chooseNext();
    int changes = 0;
    for (int round = 0; round < renumberings; ++round) {
        const QString before = chosen();
        QString told;
        const auto listener =
            QObject::connect(choice, &PortChoice::noticed, [&told](const QString& text) { told = text; });
        fake_serial::setPorts(system.next());
        choice->refill();
        QObject::disconnect(listener);
        if (chosen() == before)
            continue;
        ++changes;
        ASSERT_TRUE(told.contains(chosen())) << round << told.toStdString();
    }
    EXPECT_GT(changes, 10);
}
