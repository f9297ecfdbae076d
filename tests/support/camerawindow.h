// The main window with a virtual camera.
#pragma once

#include "app/mainwindow.h"
#include "tests/support/guitest.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/testclock.h"
#include "tests/support/testfront.h"

#include <memory>
#include <string>

namespace guitest {

/// Shows the window and captures its output. The window ends before the camera.
class CameraWindow {
public:
    explicit CameraWindow(emulator::CameraSettings settings);
    ~CameraWindow();
    CameraWindow(const CameraWindow&) = delete;
    CameraWindow& operator=(const CameraWindow&) = delete;

    /// Opens the camera's port.
    void open();
    void close();
    void renewWindow();
    void fault(const std::string& description);
    void clearFaults();
    void adopt(const emulator::CameraSettings& settings);
    [[nodiscard]] emulator::CameraRecord record();
    [[nodiscard]] emulator::CameraState state();

    StdoutCapture output;
    TestClock clock; ///< of the window; real until a test changes it
    DebugLog log;
    TestFront camera;
    std::unique_ptr<MainWindow> window;
};

} // namespace guitest
