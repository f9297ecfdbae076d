// A main window that lists the ports of the recording library, quickly.
#pragma once

#include "app/mainwindow.h"
#include "tests/fake/fakeserial.h"
#include "tests/support/guitest.h"
#include "tests/support/testclock.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

using Ports = std::vector<serial::PortInfo>;

inline serial::PortInfo adapterPort(const std::string& name,
                                    const std::string& id = "USB VID:PID=0403:6001 SNR=A1") {
    return {name, "USB-SERIAL (" + name + ")", id};
}

class ListedPorts : public testing::Test {
protected:
    void SetUp() override {
        fake_serial::reset();
        clock.speedUp(20);
    }
    void TearDown() override {
        window.reset();
        fake_serial::reset();
    }

    void start(Ports ports) {
        fake_serial::setPorts(std::move(ports));
        window = std::make_unique<MainWindow>(nullptr, clock);
        window->show();
    }
    /// Waits for two more lists of the ports: the first may have begun before.
    void waitForLists() const {
        const std::size_t before = clock.timers().size();
        EXPECT_TRUE(guitest::eventually([this, before] { return clock.timers().size() > before + 1; }));
    }

    TestClock clock;
    std::unique_ptr<MainWindow> window;
};
