// The stations around the link itself, and the order of all of them.
#include "demo/tour.h"

#include "dialogs/aboutdialog.h"
#include "dialogs/doorop.h"
#include "dialogs/setcameraprotocol.h"

#include <QComboBox>
#include <QMessageBox>
#include <QRadioButton>
#include <QSpinBox>

using emulator::CameraType;
using emulator::VirtualCamera;

void Tour::run() {
    showStart();
    findCamera();
    connectTo(CameraType::ostra);
    showStatusControls();
    showDoorAndAbout();
    showHeartbeatAfterStaleBytes();
    checkUp();
    reopenAfterReplug();
    takePicture(CameraType::ostra);
    showLineRecord();
    listPictures(CameraType::ostra);
    setSerialNumber();
    setHeater();
    setCompression();
    setCaptureAngles();
    showOrientation();
    uploadAppImage();
    uploadSystemImage();
    uploadModel();
    stopUpload();

    connectTo(CameraType::quenta);
    showJsonVersion();
    takePicture(CameraType::quenta);
    disconnect();

    connectTo(CameraType::salesDynamic);
    takePicture(CameraType::salesDynamic);
    listPictures(CameraType::salesDynamic);
    uploadAppImageV1();
    disconnect();
}

void Tour::showStart() {
    m_guide.say(QStringLiteral("the window as it starts"));
    TourGuide::expect(m_window.windowTitle() ==
                          QStringLiteral("摄像头测试-Tessaly v(" CAMERA_TOOL_VERSION ")"),
                      QStringLiteral("window title"));
    TourGuide::expectText(m_window, "btn_open", QStringLiteral("打开串口"));
    const auto& ports = TourGuide::find<QComboBox>(m_window, "sel_ports");
    for (int row = 0; row < ports.count(); ++row)
        m_guide.say(QStringLiteral("port %1 %2")
                        .arg(ports.itemText(row), ports.itemData(row, Qt::ToolTipRole).toString()));
    TourGuide::pause(200);
    m_guide.screenshot(m_window, QStringLiteral("start"));
}

void Tour::connectTo(CameraType type) {
    m_guide.say(QStringLiteral("camera of type %1").arg(static_cast<unsigned>(type)));
    m_type = type;
    m_cameras.connect(type);
    const auto address = camera([](VirtualCamera& c) { return c.settings().address; });

    TourGuide::press(m_window, "actionaddress");
    auto& dialog = TourGuide::open<SetCameraProtocol>();
    const std::map<CameraType, const char*> buttons{{CameraType::ostra, "rb_ost"},
                                                    {CameraType::quenta, "rb_quenta"},
                                                    {CameraType::salesDynamic, "rb_dx_dt"}};
    TourGuide::press(dialog, buttons.at(type));
    TourGuide::expect(TourGuide::find<QSpinBox>(dialog, "hex_sb").value() == address,
                      QStringLiteral("the type's preset address"));
    m_guide.screenshot(dialog, QStringLiteral("camera-settings"));
    TourGuide::press(dialog, "btn_confirm");
    TourGuide::expectText(m_window, "label_slaveinfo",
                          QStringLiteral("当前从机地址:") + QString::number(address));

    TourGuide::choose(m_window, "sel_ports", QString::fromStdString(m_cameras.portName(type)));
    TourGuide::press(m_window, "btn_open");
    TourGuide::expectText(m_window, "btn_open", QStringLiteral("关闭串口"));
    TourGuide::press(m_window, "btn_heartbeat");
    TourGuide::expect(TourGuide::find<QRadioButton>(m_window, "rb_heartbeat").isChecked(),
                      QStringLiteral("the heartbeat lamp"));
    m_guide.screenshot(m_window, QStringLiteral("connected"));
}

void Tour::disconnect() {
    TourGuide::press(m_window, "btn_open");
    expectClosed();
}

void Tour::expectClosed() {
    TourGuide::expectText(m_window, "btn_open", QStringLiteral("打开串口"));
    TourGuide::expectText(m_window, "tv_appversion", QString());
    TourGuide::expect(camera([](VirtualCamera& c) { return c.record().badFrames; }) == 0,
                      QStringLiteral("a bad frame reached the camera"));
}

void Tour::showStatusControls() {
    m_guide.say(QStringLiteral("versions, model information, gyro, reboot question"));
    TourGuide::press(m_window, "btn_appversion");
    const emulator::CameraState state = camera([](VirtualCamera& c) { return c.state(); });
    TourGuide::expectText(m_window, "tv_appversion",
                          QStringLiteral("SDK版本:%1\n系统版本:%2\nQV-APP版本:%3")
                              .arg(QString::fromStdString(state.appVersion),
                                   QString::fromStdString(state.systemVersion),
                                   QString::fromStdString(state.qvVersion)));
    TourGuide::press(m_window, "btn_modelinfo");
    TourGuide::expectText(m_window, "label_modelinfo",
                          QStringLiteral("模型信息:") + QString::fromStdString(state.modelInfo));
    m_guide.screenshot(m_window, QStringLiteral("versions"));
    m_guide.meetBox([&] { TourGuide::press(m_window, "btn_gyro"); }, QStringLiteral("陀螺仪测试成功"),
                    QMessageBox::Ok, QStringLiteral("gyro"));
    m_guide.meetBox([&] { TourGuide::press(m_window, "actionReboot"); }, QStringLiteral("是否重启摄像头？"),
                    QMessageBox::No, QStringLiteral("reboot-question"));
    TourGuide::expect(camera([](VirtualCamera& c) { return c.record().count(0x05); }) == 0,
                      QStringLiteral("a refused reboot was sent"));
}

void Tour::showJsonVersion() {
    TourGuide::press(m_window, "btn_appversion");
    TourGuide::expectText(m_window, "tv_appversion",
                          QStringLiteral("APP版本:") + QString::fromStdString(camera([](VirtualCamera& c) {
                              return c.state().jsonVersion;
                          })));
    m_guide.screenshot(m_window, QStringLiteral("json-version"));
}

void Tour::showDoorAndAbout() {
    m_guide.say(QStringLiteral("door simulation and the program's own window"));
    TourGuide::press(m_window, "actionOpenCloseDoor");
    auto& door = TourGuide::open<DoorOp>();
    TourGuide::press(door, "btn_open");
    TourGuide::press(door, "btn_close");
    TourGuide::waitUntil(
        [&] { return camera([](VirtualCamera& c) { return c.state().doorLog.size(); }) == 2; },
        "the camera has seen the door open and close");
    TourGuide::expect(camera([](VirtualCamera& c) {
                          const auto& log = c.state().doorLog;
                          return log[0].open && !log[1].open && log[1].sequenceRight;
                      }),
                      QStringLiteral("door commands in order"));
    m_guide.screenshot(door, QStringLiteral("door"));
    door.close();

    TourGuide::press(m_window, "actionAbout");
    auto& about = TourGuide::open<AboutDialog>();
    m_guide.screenshot(about, QStringLiteral("about"));
    about.close();
}

void Tour::leaveStaleBytes() {
    m_guide.say(QStringLiteral("bytes that nobody asked for are waiting"));
    camera([](VirtualCamera& c) {
        c.settings().answersDoor = true;
        c.addFault("raw=AA5A0155AA5A000102030405@door");
    });
    TourGuide::press(m_window, "actionOpenCloseDoor");
    auto& door = TourGuide::open<DoorOp>();
    TourGuide::press(door, "btn_open"); // its answer is never read
    TourGuide::pause(300);
    door.close();
    camera([](VirtualCamera& c) {
        c.settings().answersDoor = false;
        c.faults().clear();
    });
}

void Tour::showHeartbeatAfterStaleBytes() {
    leaveStaleBytes();
    auto& lamp = TourGuide::find<QRadioButton>(m_window, "rb_heartbeat");
    lamp.setChecked(false);
    TourGuide::press(m_window, "btn_heartbeat");
    TourGuide::expect(lamp.isChecked(),
                      QStringLiteral("the heartbeat lamp, with other bytes waiting before"));
}
