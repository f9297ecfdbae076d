#include "tests/support/camerawindow.h"

#include "tests/support/printing.h"
#include "tests/support/windowactions.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <utility>

using emulator::VirtualCamera;

namespace guitest {

CameraWindow::CameraWindow(emulator::CameraSettings settings) : camera(std::move(settings)) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    renewWindow();
}

CameraWindow::~CameraWindow() = default;

void CameraWindow::renewWindow() {
    window.reset();
    window = std::make_unique<MainWindow>(nullptr, clock);
    window->show();
}

void CameraWindow::open() {
    choosePort(*window, QString::fromStdString(camera.portName()));
    click(*window, "btn_open");
    ASSERT_EQ(text(*window, "btn_open"), "关闭串口");
}

void CameraWindow::close() {
    click(*window, "btn_open");
    ASSERT_EQ(text(*window, "btn_open"), "打开串口");
}

void CameraWindow::fault(const std::string& description) {
    camera.withCamera([&description](VirtualCamera& each) { each.addFault(description); });
}

void CameraWindow::clearFaults() {
    camera.withCamera([](VirtualCamera& each) { each.faults().clear(); });
}

void CameraWindow::adopt(const emulator::CameraSettings& settings) {
    camera.withCamera([&settings](VirtualCamera& each) { each.settings() = settings; });
}

emulator::CameraRecord CameraWindow::record() {
    return camera.withCamera([](VirtualCamera& each) { return each.record(); });
}

emulator::CameraState CameraWindow::state() {
    return camera.withCamera([](VirtualCamera& each) { return each.state(); });
}

} // namespace guitest
