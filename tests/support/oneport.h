// The recording library with one port, and the windows that the menu opens.
#pragma once

#include "tests/fake/fakeserial.h"

#include <gtest/gtest.h>

#include <array>

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

/// Each opens a window that is not modal.
inline constexpr std::array menuWindows{
    "actionSnSet",         "actionPwmHeatSet",       "actionInstallLocation",
    "actionCaptureDegree", "actionactionPicRateSet", "actionOpenCloseDoor",
    "actionPicInfo",       "actionPicInfoV1",        "actionaddress",
    "actionAbout"};

} // namespace guitest
