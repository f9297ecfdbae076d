// The station that looks at the traffic of the line.
#include "aids/linerecordwindow.h"
#include "demo/tour.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDir>
#include <QLabel>
#include <QTableView>

using emulator::VirtualCamera;

void Tour::showLineRecord() {
    m_guide.say(QStringLiteral("the traffic of the line, with faults"));
    TourGuide::press(m_window, "actionLineRecord");
    auto& window = TourGuide::open<LineRecordWindow>();
    auto& table = TourGuide::find<QTableView>(window, "table");
    const auto heartbeatWith = [this](const char* fault) {
        camera([fault](VirtualCamera& c) { c.addFault(fault); });
        TourGuide::press(m_window, "btn_heartbeat");
        camera([](VirtualCamera& c) { c.faults().clear(); });
    };
    TourGuide::press(m_window, "btn_modelinfo");
    for (const char* const fault : {"bad-check@heartbeat", "stray=2@heartbeat", "silent@heartbeat"})
        heartbeatWith(fault);
    TourGuide::press(m_window, "btn_heartbeat");
    const auto& mark = TourGuide::find<QLabel>(m_window, "label_quality");
    TourGuide::waitUntil([&] { return mark.text() == QStringLiteral("有干扰"); }, "the mark tells of faults");
    const int all = table.model()->rowCount();
    table.selectRow(all - 1);
    m_guide.screenshot(window, QStringLiteral("line-record"));

    TourGuide::find<QCheckBox>(window, "cb_odd").click();
    TourGuide::expect(table.model()->rowCount() < all, QStringLiteral("fewer rows are odd"));
    table.selectAll();
    TourGuide::press(window, "btn_copytext");
    TourGuide::expect(QApplication::clipboard()->text().contains(QStringLiteral("没有应答：心跳")),
                      QStringLiteral("the copied rows"));
    m_guide.screenshot(window, QStringLiteral("line-record-odd"));
    TourGuide::find<QCheckBox>(window, "cb_odd").click();

    const QString file = QDir(m_guide.folder()).filePath(QStringLiteral("line.rec"));
    TourGuide::giveFile([&] { TourGuide::press(window, "btn_save"); }, file);
    TourGuide::expectText(window, "label_summary", QStringLiteral("已保存 ") + file);
    TourGuide::giveFile([&] { TourGuide::press(window, "btn_openfile"); }, file);
    TourGuide::waitUntil([&] { return window.windowTitle() == QStringLiteral("通信记录 - line.rec"); },
                         "the recording is shown");
    m_guide.screenshot(window, QStringLiteral("line-record-file"));
    window.close();
    m_guide.screenshot(m_window, QStringLiteral("line-quality"));
}
