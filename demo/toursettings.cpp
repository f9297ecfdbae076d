// The stations that open the settings windows, write and read back.
#include "demo/tour.h"
#include "dialogs/setcameralocation.h"
#include "dialogs/setcapturedegree.h"
#include "dialogs/setpicrate.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"

#include <QLabel>
#include <QRadioButton>

using emulator::VirtualCamera;
namespace property = emulator::property;

namespace {

emulator::Bytes propertyOf(VirtualCamera& camera, std::uint8_t id) {
    return camera.state().properties.at(id);
}

} // namespace

void Tour::setSerialNumber() {
    m_guide.say(QStringLiteral("serial number"));
    TourGuide::press(m_window, "actionSnSet");
    auto& dialog = TourGuide::open<SetSN>();
    m_guide.screenshot(dialog, QStringLiteral("sn-idle"));
    TourGuide::press(dialog, "btn_setsn");
    TourGuide::expectText(dialog, "label_hint", QStringLiteral("字符串为空,请填写SN后下发"));
    TourGuide::press(dialog, "btn_gensn");
    TourGuide::press(dialog, "btn_setsn");
    TourGuide::expectText(dialog, "label_hint", QStringLiteral("SN设置中，倒计时:5秒,请勿断电!"));
    m_guide.screenshot(dialog, QStringLiteral("sn-counting"));
    TourGuide::expectText(dialog, "label_hint", QStringLiteral("设置成功!"));
    const QString sn = TourGuide::find<QLabel>(dialog, "et_setsn").text();
    TourGuide::expectText(dialog, "label_setsn", QStringLiteral("当前序列号:  ") + sn);
    TourGuide::expect(camera([](VirtualCamera& c) { return c.state().serialNumber; }) == sn.toStdString(),
                      QStringLiteral("the serial number in the camera"));
    m_guide.screenshot(dialog, QStringLiteral("sn-success"));

    camera([](VirtualCamera& c) { c.addFault("result=1@setSn"); });
    TourGuide::press(dialog, "btn_setsn");
    TourGuide::expectText(dialog, "label_hint", QStringLiteral("设置SN失败，请重试"));
    m_guide.screenshot(dialog, QStringLiteral("sn-failure"));
    camera([](VirtualCamera& c) { c.faults().clear(); });
    dialog.close();
}

void Tour::setHeater() {
    m_guide.say(QStringLiteral("heater"));
    TourGuide::press(m_window, "actionPwmHeatSet");
    auto& dialog = TourGuide::open<SetPwmHeat>();
    m_guide.screenshot(dialog, QStringLiteral("heater-idle"));
    TourGuide::choose(dialog, "cb_setheat", QStringLiteral("50"));
    TourGuide::press(dialog, "btn_setheat");
    TourGuide::expectText(dialog, "label_hint", QStringLiteral("设置中，倒计时:1秒,请勿断电!"));
    m_guide.screenshot(dialog, QStringLiteral("heater-counting"));
    TourGuide::expectText(dialog, "label_setheat", QStringLiteral("当前占空比:  50"));
    TourGuide::expect(camera([](VirtualCamera& c) { return propertyOf(c, property::heaterDuty); }) ==
                          emulator::Bytes{50},
                      QStringLiteral("the heater duty in the camera"));
    m_guide.screenshot(dialog, QStringLiteral("heater-success"));

    camera([](VirtualCamera& c) { c.settings().refusedProperties.insert(property::heaterDuty); });
    TourGuide::press(dialog, "btn_setheat");
    TourGuide::expectText(dialog, "label_hint", QStringLiteral("设置占空比失败，请重试"));
    m_guide.screenshot(dialog, QStringLiteral("heater-failure"));
    camera([](VirtualCamera& c) { c.settings().refusedProperties.clear(); });
    dialog.close();
}

void Tour::setCompression() {
    m_guide.say(QStringLiteral("picture compression"));
    TourGuide::press(m_window, "actionactionPicRateSet");
    auto& dialog = TourGuide::open<SetPicRate>();
    m_guide.screenshot(dialog, QStringLiteral("compression-idle"));
    TourGuide::enter(dialog, "et_setsn", QStringLiteral("85"));
    TourGuide::press(dialog, "btn_setsn");
    TourGuide::expectText(dialog, "label_hint", QStringLiteral("设置中，倒计时:1秒,请勿断电!"));
    m_guide.screenshot(dialog, QStringLiteral("compression-counting"));
    TourGuide::expectText(dialog, "label_setsn", QStringLiteral("当前图片压缩率:  85"));
    TourGuide::expect(camera([](VirtualCamera& c) { return propertyOf(c, property::compressionRate); }) ==
                          emulator::Bytes{85},
                      QStringLiteral("the compression rate in the camera"));
    m_guide.screenshot(dialog, QStringLiteral("compression-success"));

    camera([](VirtualCamera& c) { c.settings().refusedProperties.insert(property::compressionRate); });
    TourGuide::press(dialog, "btn_setsn");
    TourGuide::expectText(dialog, "label_hint", QStringLiteral("设置图片压缩率失败，请重试"));
    m_guide.screenshot(dialog, QStringLiteral("compression-failure"));
    camera([](VirtualCamera& c) { c.settings().refusedProperties.clear(); });
    dialog.close();
}

void Tour::setCaptureAngles() {
    m_guide.say(QStringLiteral("capture angles"));
    TourGuide::press(m_window, "actionCaptureDegree");
    auto& dialog = TourGuide::open<SetCaptureDegree>();
    TourGuide::expectText(dialog, "label_1", QStringLiteral("当前陀螺仪抓图角度:30,60"));
    TourGuide::expectText(dialog, "label_2", QStringLiteral("当前陀螺仪抓图方向:顺时针"));
    TourGuide::expectText(dialog, "label_3", QStringLiteral("当前陀螺仪开启状态:开启"));
    TourGuide::enter(dialog, "et_set1_0", QStringLiteral("15"));
    TourGuide::enter(dialog, "et_set1_1", QStringLiteral("75"));
    TourGuide::press(dialog, "btn_set1");
    TourGuide::expectText(dialog, "label_1", QStringLiteral("当前陀螺仪抓图角度:15,75"));
    TourGuide::press(dialog, "rb_anticlosewise");
    TourGuide::press(dialog, "btn_set2");
    TourGuide::expectText(dialog, "label_2", QStringLiteral("当前陀螺仪抓图方向:逆时针"));
    m_guide.screenshot(dialog, QStringLiteral("capture-angles"));

    camera([](VirtualCamera& c) { c.addFault("silent@getProperty"); });
    TourGuide::press(dialog, "btn_get1");
    TourGuide::expectText(dialog, "label_1", QStringLiteral("当前陀螺仪抓图角度:获取失败"));
    m_guide.screenshot(dialog, QStringLiteral("capture-angles-failure"));
    camera([](VirtualCamera& c) { c.faults().clear(); });
    dialog.close();
}

void Tour::showOrientation() {
    m_guide.say(QStringLiteral("mounting orientation"));
    TourGuide::press(m_window, "actionInstallLocation");
    auto& dialog = TourGuide::open<SetCameraLocation>();
    TourGuide::expectText(dialog, "label_1", QStringLiteral("当前仰俯角:45"));
    TourGuide::expectText(dialog, "label_2", QStringLiteral("当前横滚角:3"));
    TourGuide::expectText(dialog, "label_3", QStringLiteral("当前偏航角:120"));
    TourGuide::expectText(dialog, "label_4", QStringLiteral("当前加速度:981"));
    m_guide.screenshot(dialog, QStringLiteral("orientation"));
    dialog.close();
}
