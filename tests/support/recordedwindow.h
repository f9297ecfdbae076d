// The main window on the recording library.
#pragma once

#include "app/mainwindow.h"
#include "tests/fake/fakeserial.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace guitest {

/// The system has only COM3; the library's record is empty before and after.
class OnePort : public testing::Test {
protected:
    OnePort() {
        fake_serial::reset();
        serial::PortInfo port;
        port.port = "COM3";
        fake_serial::setPorts({port});
    }
    ~OnePort() override { fake_serial::reset(); }
};

/// A main window on a system with these ports.
class RecordedWindow : public testing::Test {
protected:
    explicit RecordedWindow(const std::vector<std::string>& ports = {"COM3"}) {
        fake_serial::reset();
        std::vector<serial::PortInfo> infos;
        for (const std::string& port : ports)
            infos.push_back({port, "adapter", "n/a"});
        fake_serial::setPorts(infos);
        window = std::make_unique<MainWindow>();
        window->show();
    }
    ~RecordedWindow() override {
        window.reset();
        fake_serial::reset();
    }

    std::unique_ptr<MainWindow> window;
};

/// Each opens a window that is not modal.
inline constexpr std::array menuWindows{
    "actionSnSet",         "actionPwmHeatSet",       "actionInstallLocation",
    "actionCaptureDegree", "actionactionPicRateSet", "actionOpenCloseDoor",
    "actionPicInfo",       "actionPicInfoV1",        "actionaddress",
    "actionAbout"};

} // namespace guitest
