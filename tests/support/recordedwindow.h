// The main window on the recording library.
#pragma once

#include "app/mainwindow.h"
#include "tests/fake/fakeserial.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace guitest {

/// A system with these ports; the library's record is empty before and after.
class RecordedPorts : public testing::Test {
protected:
    explicit RecordedPorts(const std::vector<std::string>& names = {"COM3"}) {
        fake_serial::reset();
        std::vector<serial::PortInfo> ports;
        for (const std::string& name : names)
            ports.push_back({name, {}, {}});
        fake_serial::setPorts(std::move(ports));
    }
    ~RecordedPorts() override { fake_serial::reset(); }
};

/// A main window on it.
class RecordedWindow : public RecordedPorts {
protected:
    explicit RecordedWindow(const std::vector<std::string>& names = {"COM3"}) : RecordedPorts(names) {
        window->show();
    }

    std::unique_ptr<MainWindow> window = std::make_unique<MainWindow>();
};

/// Each opens a window that is not modal.
inline constexpr std::array menuWindows{
    "actionSnSet",         "actionPwmHeatSet",       "actionInstallLocation",
    "actionCaptureDegree", "actionactionPicRateSet", "actionOpenCloseDoor",
    "actionPicInfo",       "actionPicInfoV1",        "actionaddress",
    "actionAbout",         "actionFindCamera",       "actionCheckup"};

} // namespace guitest
