// The list of ports, against the recording library.
#include "app/mainwindow.h"
#include "app/portchoice.h"
#include "tests/fake/fakeserial.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace guitest;

namespace {

serial::PortInfo port(const std::string& name, const std::string& description = "适配器") {
    serial::PortInfo info;
    info.port = name;
    info.description = description;
    info.hardware_id = "USB VID:PID=1A86:7523";
    return info;
}

QStringList names(const QComboBox& list) {
    QStringList texts;
    for (int index = 0; index < list.count(); ++index)
        texts.append(list.itemText(index));
    return texts;
}

class PortList : public testing::Test {
protected:
    void SetUp() override { fake_serial::reset(); }
    void TearDown() override { fake_serial::reset(); }

    /// Opens and closes the list as a click on it does.
    void look() {
        choice->showPopup();
        choice->hidePopup();
    }

    void start(std::vector<serial::PortInfo> ports) {
        fake_serial::setPorts(std::move(ports));
        window = std::make_unique<MainWindow>();
        window->show();
        choice = find<PortChoice>(*window, "sel_ports");
    }

    std::unique_ptr<MainWindow> window;
    PortChoice* choice = nullptr;
};

} // namespace

TEST_F(PortList, KeepsTheOrderReportedAtTheFirstFill) {
    start({port("COM10"), port("COM3"), port("COM9")});
    EXPECT_EQ(names(*choice), QStringList({"COM10", "COM3", "COM9"}));
    EXPECT_EQ(choice->currentText(), "COM10");
}

TEST_F(PortList, ShowsTheAdapterOfEachPortInItsToolTip) {
    start({port("COM3", "USB 转串口")});
    EXPECT_EQ(choice->itemData(0, Qt::ToolTipRole).toString(), "USB 转串口\nUSB VID:PID=1A86:7523");
}

TEST_F(PortList, IsLeftAloneWhileTheSamePortsAreThere) {
    start({port("COM10"), port("COM3")});
    const QSignalSpy removed(choice->model(), &QAbstractItemModel::rowsAboutToBeRemoved);
    const QSignalSpy chosen(choice, &QComboBox::currentTextChanged);
    fake_serial::setPorts({port("COM3"), port("COM10")});
    look();
    EXPECT_EQ(names(*choice), QStringList({"COM10", "COM3"}));
    EXPECT_TRUE(removed.isEmpty());
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(PortList, SortsAPluggedInAdapterByNumber) {
    start({port("COM10"), port("COM3")});
    fake_serial::setPorts({port("COM10"), port("COM3"), port("COM9")});
    look();
    EXPECT_EQ(names(*choice), QStringList({"COM3", "COM9", "COM10"}));
}

TEST_F(PortList, KeepsTheChoiceWhenAnAdapterIsPluggedIn) {
    start({port("COM10"), port("COM3")});
    fake_serial::setPorts({port("COM10"), port("COM3"), port("COM9")});
    look();
    EXPECT_EQ(choice->currentText(), "COM10");
    click(*window, "btn_open");
    EXPECT_EQ(statusText(*window), "已打开 COM10");
}

TEST_F(PortList, ChoosesAnotherPortWhenTheChosenOneIsGone) {
    start({port("COM10"), port("COM3")});
    fake_serial::setPorts({port("COM4"), port("COM3")});
    look();
    EXPECT_EQ(choice->currentText(), "COM3");
    click(*window, "btn_open");
    EXPECT_EQ(statusText(*window), "已打开 COM3");
}

TEST_F(PortList, TellsThatAnotherPortIsChosen) {
    start({port("COM10"), port("COM3")});
    fake_serial::setPorts({port("COM3")});
    look();
    EXPECT_EQ(choice->currentText(), "COM3");
    EXPECT_EQ(statusText(*window), "所选转接器不在，改选 COM3，请核对");
}

TEST_F(PortList, TellsThatAlikeAdaptersAreUnclear) {
    start({port("COM10"), port("COM3")});
    fake_serial::setPorts({port("COM4"), port("COM3")});
    look();
    EXPECT_EQ(choice->currentText(), "COM3");
    EXPECT_EQ(statusText(*window), "有几个相同的转接器，现选 COM3，请核对");
}

TEST_F(PortList, FollowsTheChosenAdapterToAnotherName) {
    start({port("COM3", "甲"), port("COM4", "乙")});
    fake_serial::setPorts({port("COM4", "乙"), port("COM7", "甲")});
    look();
    EXPECT_EQ(choice->currentText(), "COM7");
    click(*window, "btn_open");
    EXPECT_EQ(statusText(*window), "已打开 COM7");
}

TEST_F(PortList, DoesNotTakeAnotherAdapterOfTheSameName) {
    start({port("COM3", "甲"), port("COM2", "乙")});
    fake_serial::setPorts({port("COM2", "乙"), port("COM3", "丙")});
    look();
    EXPECT_EQ(choice->currentText(), "COM2");
    EXPECT_EQ(statusText(*window), "所选转接器不在，改选 COM2，请核对");
}

TEST_F(PortList, IgnoresThePortNameInTheDescription) {
    start({port("COM3", "USB-SERIAL (COM3)"), port("COM4", "乙")});
    fake_serial::setPorts({port("COM4", "乙"), port("COM7", "USB-SERIAL (COM7)")});
    look();
    EXPECT_EQ(choice->currentText(), "COM7");
}

TEST_F(PortList, ListsPortsWithoutAdapterLastAfterARefresh) {
    serial::PortInfo plain{"/dev/ttyS1", "ttyS1", "n/a"};
    start({plain, port("/dev/ttyUSB1")});
    EXPECT_EQ(names(*choice), QStringList({"/dev/ttyS1", "/dev/ttyUSB1"}));
    fake_serial::setPorts({plain, port("/dev/ttyUSB1"), port("/dev/ttyUSB0")});
    look();
    EXPECT_EQ(names(*choice), QStringList({"/dev/ttyUSB0", "/dev/ttyUSB1", "/dev/ttyS1"}));
    EXPECT_EQ(choice->currentText(), "/dev/ttyS1");
    EXPECT_EQ(choice->itemData(2, Qt::ToolTipRole).toString(), "ttyS1\n没有转接器信息，通常不是 USB 转接器");
}

TEST_F(PortList, MayBecomeEmptyAndFillAgain) {
    start({port("COM3")});
    fake_serial::setPorts({});
    look();
    EXPECT_EQ(choice->count(), 0);
    click(*window, "btn_open");
    EXPECT_EQ(statusText(*window), "没有可用串口");
    click(*window, "btn_open");
    fake_serial::setPorts({port("COM7")});
    look();
    EXPECT_EQ(choice->currentText(), "COM7");
    click(*window, "btn_open");
    EXPECT_EQ(statusText(*window), "已打开 COM7");
}

TEST_F(PortList, KeepsWhatOthersHaveAdded) {
    start({port("COM3")});
    choice->addItem("/dev/pts/7");
    choice->setCurrentText("/dev/pts/7");
    fake_serial::setPorts({port("COM5"), port("COM4")});
    look();
    EXPECT_EQ(names(*choice), QStringList({"COM4", "COM5", "/dev/pts/7"}));
    EXPECT_EQ(choice->currentText(), "/dev/pts/7");
}

TEST(PortNames, CompareNumbersAsNumbers) {
    EXPECT_TRUE(portNameLess("COM9", "COM10"));
    EXPECT_FALSE(portNameLess("COM10", "COM9"));
    EXPECT_TRUE(portNameLess("COM2", "COM02b"));
    EXPECT_FALSE(portNameLess("COM3", "COM3"));
    EXPECT_TRUE(portNameLess("/dev/ttyS31", "/dev/ttyUSB0"));
    EXPECT_TRUE(portNameLess("", "COM1"));
    EXPECT_TRUE(portNameLess("COM", "COM1"));
}
