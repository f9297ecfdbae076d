// Ports that cannot be opened, with the real serial library.
#include "app/mainwindow.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"
#include "tests/support/windowactions.h"

#include <QComboBox>
#include <QPushButton>
#include <QThreadPool>

#include <gtest/gtest.h>
#include <serial/serial.h>

#include <filesystem>
#include <fstream>

using namespace guitest;

namespace {

std::ptrdiff_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
}

class BadPorts : public testing::Test {
protected:
    void SetUp() override {
        std::ofstream("a-file") << "no terminal";
        std::filesystem::create_symlink("nowhere", "dangling");
        window.show();
    }

    void expectClosed() const {
        EXPECT_EQ(text(window, "btn_open"), "打开串口");
        EXPECT_TRUE(isEnabled(window, "sel_ports"));
        EXPECT_FALSE(isEnabled(window, "btn_heartbeat"));
        EXPECT_FALSE(find<QPushButton>(window, "btn_open")->isDown());
    }

    MainWindow window;
};

/// While the ports are not being listed.
std::ptrdiff_t descriptorsAtRest() {
    QThreadPool::globalInstance()->waitForDone();
    return openDescriptors();
}

} // namespace

TEST_F(BadPorts, ListsPortsOfTheLibrary) {
    const auto* const ports = find<QComboBox>(window, "sel_ports");
    const std::vector<std::string> reported = CameraSp::getPorts();
    ASSERT_EQ(static_cast<std::size_t>(ports->count()), reported.size());
    for (std::size_t index = 0; index < reported.size(); ++index)
        EXPECT_EQ(ports->itemText(static_cast<int>(index)), QString::fromStdString(reported[index]));
}

TEST_F(BadPorts, ShowsAdviceAndStaysClosed) {
    const std::vector<std::pair<const char*, const char*>> ports = {
        {"/dev/ttyUSB-missing", "串口不存在或已拔出"},
        {"dangling", "串口不存在或已拔出"},
        {"a-file", "所选设备不是串口"},
        {"/dev/null", "所选设备不是串口"},
        {".", "所选设备不是串口"},
    };
    BoxAnswerer boxes;
    std::size_t count = 0;
    for (const auto& [port, advice] : ports) {
        choosePort(window, port);
        clickThatThrows(window, "btn_open");
        ASSERT_TRUE(boxes.waitFor(++count)) << port;
        EXPECT_TRUE(boxes.seen().back().text.startsWith("打开串口失败：")) << port;
        EXPECT_TRUE(boxes.seen().back().text.contains(advice)) << boxes.seen().back().text.toStdString();
        EXPECT_TRUE(statusText(window).startsWith("打开串口失败：")) << port;
        expectClosed();
    }
}

TEST_F(BadPorts, LosesNoDescriptorInAThousandOpenings) {
    BoxAnswerer boxes;
    for (const char* const port : {"/dev/ttyUSB-missing", "dangling", "a-file", "/dev/null"}) {
        choosePort(window, port);
        const std::ptrdiff_t before = descriptorsAtRest();
        for (int attempt = 0; attempt < 250; ++attempt)
            clickThatThrows(window, "btn_open");
        EXPECT_EQ(descriptorsAtRest(), before) << port;
        expectClosed();
        QTest::qWait(30);
    }
    EXPECT_TRUE(boxes.waitFor(1));
}

TEST_F(BadPorts, FailsEveryCommandOnAnEmptyName) {
    find<QComboBox>(window, "sel_ports")->clear();
    click(window, "btn_open");
    EXPECT_EQ(text(window, "btn_open"), "关闭串口");
    EXPECT_EQ(statusText(window), "没有可用串口");
    click(window, "btn_heartbeat");
    EXPECT_FALSE(find<QWidget>(window, "rb_heartbeat")->property("checked").toBool());
    click(window, "btn_modelinfo");
    EXPECT_EQ(text(window, "label_modelinfo"), "模型信息:");
    click(window, "btn_open");
    expectClosed();
}
