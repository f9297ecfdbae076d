// The entries of the button "更多", and what their windows need of the link.
#include "aids/camerafinderwindow.h"
#include "aids/checkupwindow.h"
#include "aids/linerecordwindow.h"
#include "aids/manual.h"
#include "app/mainwindow.h"
#include "app/moremenu.h"
#include "app/statusline.h"
#include "ui_mainwindow.h"

void MainWindow::connectAids() {
    auto* const mark = new QualityMark(m_ui->statusbar);
    m_ui->statusbar->addPermanentWidget(mark);
    m_lineWatch = new LineWatch(m_clock, mark, this);
    auto* const menu = new MoreMenu(m_ui->statusbar);
    menu->addEntry("actionFindCamera", Sign::find, tr("查找摄像头"), this, &MainWindow::findCamera,
                   Qt::Key_F6);
    connect(m_statusLine.get(), &StatusLine::searchWanted, this, &MainWindow::findCamera);
    menu->addEntry(
        "actionCheckup", Sign::check, tr("一键检查"), this,
        [this] { openOnce<CheckupWindow>(*this, m_visit, this, client()); }, Qt::Key_F7);
    menu->addEntry(
        "actionLineRecord", Sign::log, tr("通信记录"), this,
        [this] { openOnce<LineRecordWindow>(this, m_lineWatch); }, Qt::Key_F8);
    menu->addEntry("actionManual", Sign::none, tr("使用手册"), this, &MainWindow::showManual,
                   QKeySequence::HelpContents);
}

void MainWindow::findCamera() {
    openOnce<CameraFinderWindow>(*this, this, client());
}

void MainWindow::showManual() {
    openManual(firstFile(manualPlaces(QCoreApplication::applicationDirPath())), this);
}

QStringList MainWindow::choosablePorts() {
    if (m_camera == nullptr)
        m_ui->sel_ports->refill();
    QStringList ports;
    for (int row = 0; row < m_ui->sel_ports->count(); ++row)
        ports.append(m_ui->sel_ports->itemText(row));
    return ports;
}

LinkFacts MainWindow::linkFacts() const {
    const auto type = protocol::cameraTypeInfo(m_cameraType).type;
    if (m_camera == nullptr)
        return {{}, 0, static_cast<std::uint8_t>(m_slaveAddress), type};
    return {m_opened.port, m_opened.baudRate, static_cast<std::uint8_t>(m_slaveAddress), type};
}

void MainWindow::useCamera(const service::FoundCamera& camera) {
    const QString port = QString::fromStdString(camera.port);
    const bool isOpen = m_camera != nullptr && m_opened.port == port && m_opened.baudRate == camera.baudRate;
    if (!isOpen && !confirmInterruption())
        return;
    if (!isOpen)
        closeLink();
    m_slaveAddress = camera.address;
    applyAddress();
    if (isOpen)
        return;
    m_ui->sel_ports->choose(port);
    m_ui->sel_baund->setCurrentText(QString::number(camera.baudRate));
    openLink();
}

void MainWindow::releaseChosenPort() const {
    if (auto* const finder = m_windows.opened<CameraFinderWindow>())
        finder->releasePort(QString::fromStdString(m_portName));
    else
        service::PortSearch::waitUntilFree(m_portName);
}
