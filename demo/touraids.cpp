// The stations of the windows behind the button "更多".
#include "aids/camerafinderwindow.h"
#include "aids/checkupwindow.h"
#include "demo/tour.h"

#include <QCheckBox>
#include <QDir>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>

using emulator::CameraType;

namespace {

void checkOnly(const QWidget& window, const char* list, const QString& choice) {
    auto& choices = TourGuide::find<QListWidget>(window, list);
    for (int row = 0; row < choices.count(); ++row)
        choices.item(row)->setCheckState(choices.item(row)->text() == choice ? Qt::Checked : Qt::Unchecked);
}

} // namespace

void Tour::findCamera() {
    m_guide.say(QStringLiteral("find the camera"));
    m_type = CameraType::ostra;
    m_cameras.connect(m_type);
    TourGuide::press(m_window, "actionFindCamera");
    auto& finder = TourGuide::open<CameraFinderWindow>();
    checkOnly(finder, "list_ports", QString::fromStdString(m_cameras.portName(m_type)));
    checkOnly(finder, "list_rates", QStringLiteral("460800"));
    TourGuide::press(finder, "btn_start");
    TourGuide::expectText(finder, "label_state", QStringLiteral("找到 1 台，选中一行，点击“使用”"));
    m_guide.screenshot(finder, QStringLiteral("finder"));
    TourGuide::press(finder, "btn_use");
    TourGuide::expectText(m_window, "btn_open", QStringLiteral("关闭串口"));
    finder.close();
    disconnect();
}

void Tour::checkUp() {
    m_guide.say(QStringLiteral("check the camera up"));
    TourGuide::press(m_window, "actionCheckup");
    auto& checkup = TourGuide::open<CheckupWindow>();
    TourGuide::find<QCheckBox>(checkup, "cb_picture").setChecked(true);
    TourGuide::press(checkup, "btn_start");
    TourGuide::expectText(checkup, "label_verdict", QStringLiteral("结论：正常"));
    TourGuide::expectText(checkup, "label_visit", QStringLiteral("本次服务：1 台"));
    m_guide.screenshot(checkup, QStringLiteral("checkup"));
    const QString report = QDir(m_guide.folder()).filePath(QStringLiteral("report.pdf"));
    TourGuide::giveFile([&] { TourGuide::press(checkup, "btn_save"); }, report);
    TourGuide::waitUntil([&] { return QFileInfo(report).size() > 0; }, "the report is there");
    checkup.close();
}

void Tour::reopenAfterReplug() {
    if (!m_cameras.plug(m_type, false))
        return;
    m_guide.say(QStringLiteral("an adapter that is pulled and plugged in"));
    TourGuide::press(m_window, "btn_heartbeat");
    TourGuide::expect(!TourGuide::find<QRadioButton>(m_window, "rb_heartbeat").isChecked(),
                      QStringLiteral("the lamp of a pulled adapter"));
    m_cameras.plug(m_type, true);
    const auto& reopen = TourGuide::find<QPushButton>(m_window, "btn_reopen");
    TourGuide::waitUntil([&] { return reopen.isVisible(); }, "the link can be reopened");
    m_guide.screenshot(m_window, QStringLiteral("reopen"));
    TourGuide::press(m_window, "btn_reopen");
    TourGuide::expectText(m_window, "btn_open", QStringLiteral("关闭串口"));
    TourGuide::press(m_window, "btn_heartbeat");
    TourGuide::expect(TourGuide::find<QRadioButton>(m_window, "rb_heartbeat").isChecked(),
                      QStringLiteral("the heartbeat of the reopened link"));
}
