// Actions in the main window, on the recording library or with a virtual camera.
#pragma once

#include "dialogs/setcameraprotocol.h"
#include "tests/support/guitest.h"

#include <QComboBox>
#include <QCoreApplication>

#include <array>

namespace guitest {

/// Buttons and fields of the main window that exchange with the camera.
inline constexpr std::array exchangeControls{
    "btn_heartbeat", "rb_heartbeat",     "btn_appversion",     "btn_takepic",     "btn_apppath",
    "btn_appupdate", "btn_firewarepath", "btn_firewareupdate", "label_modelinfo", "btn_modelinfo",
    "btn_modelpath", "et_modelname",     "btn_modelupdate",    "btn_gyro"};

/// Adds the port to the list and chooses it.
inline void choosePort(const QWidget& window, const QString& port) {
    auto* const ports = find<QComboBox>(window, "sel_ports");
    ports->addItem(port);
    ports->setCurrentText(port);
}

/// Chooses the camera type of this radio button.
inline void chooseCameraType(const QWidget& window, const char* radioButton) {
    trigger(window, "actionaddress");
    SetCameraProtocol* const dialog = openWindows<SetCameraProtocol>().at(0);
    click(*dialog, radioButton);
    click(*dialog, "btn_confirm");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace guitest
