// Adapters that are plugged in or lost: the list of ports and the button "重新打开".
#include "app/mainwindow.h"
#include "app/statusline.h"
#include "linkaccess/cameratext.h"
#include "linkaccess/focuskeeper.h"
#include "ui_mainwindow.h"

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto listInterval = 1s;

} // namespace

void MainWindow::connectPorts() {
    m_portTimer.setSingleShot(true);
    connect(&m_portTimer, &QTimer::timeout, this, &MainWindow::listPorts);
    connect(m_ui->sel_ports, &PortChoice::noticed, m_statusLine.get(), &StatusLine::showState);
    connect(m_ui->sel_ports, &QComboBox::textActivated, this, &MainWindow::endLossByChoice);
    connect(m_statusLine.get(), &StatusLine::adapterMissed, this, &MainWindow::beginLoss);
    connect(m_statusLine.get(), &StatusLine::reopeningWanted, this, &MainWindow::reopenLink);
}

bool MainWindow::isWatchingPorts() const {
    return isVisible() && (m_camera == nullptr || m_adapterLost);
}

void MainWindow::listPortsLater() {
    if (isWatchingPorts())
        m_portTimer.start(m_clock.timerInterval(listInterval));
}

void MainWindow::listPorts() {
    runWithoutClient(this, m_ui->sel_ports->source(), [this](const std::vector<PortEntry>& ports) {
        if (!isWatchingPorts() || m_portTimer.isActive()) // listed before the link changed
            return;
        if (m_camera == nullptr)
            m_ui->sel_ports->refillWith(ports);
        if (m_adapterLost)
            lookForLostAdapter(ports);
        listPortsLater();
    });
}

void MainWindow::beginLoss() {
    if (m_adapterLost)
        return;
    m_adapterLost = true;
    m_ui->rb_heartbeat->showNotTested();
    showCameraText(m_ui->tv_appversion, {});
    showCameraText(m_ui->label_modelinfo, {});
    showSources();
    listPortsLater();
}

void MainWindow::endLoss() {
    m_adapterLost = false;
    m_lostSeenAt.clear();
    withdrawReopening();
}

void MainWindow::endLossByChoice(const QString& port) {
    if (port != (m_reopenable.isEmpty() ? m_adapter.port() : m_reopenable))
        endLoss();
}

void MainWindow::lookForLostAdapter(const std::vector<PortEntry>& ports) {
    const QStringList found = m_adapter.candidates(ports);
    if (found == m_lostSeenAt) {
        // Hidden by an opening that failed.
        if (found.size() == 1)
            offerReopening(found.front());
        return;
    }
    m_lostSeenAt = found;
    if (found.size() == 1) {
        offerReopening(found.front());
        m_statusLine->showState(tr("转接器已插好（%1），请点击“重新打开”").arg(found.front()));
        return;
    }
    withdrawReopening();
    if (m_camera != nullptr) // else the list tells its choice
        m_statusLine->showState(found.isEmpty() ? tr("转接器又断开了，请重新插好")
                                                : tr("有几个相同的转接器，请关闭串口，选择串口后再打开"));
}

void MainWindow::offerReopening(const QString& port) {
    m_reopenable = port;
    m_statusLine->offerReopening(true);
}

void MainWindow::withdrawReopening() {
    m_reopenable.clear();
    if (m_statusLine->isReopeningFocused()) {
        // Qt would move the focus to the next control, which a second key press would press.
        m_ui->btn_open->setFocus();
        FocusKeeper::of(this).rest();
    }
    m_statusLine->offerReopening(false);
}

void MainWindow::reopenLink() {
    if (!confirmInterruption() || m_reopenable.isEmpty())
        return;
    const QString port = m_reopenable;
    withdrawReopening();
    closeLink();
    m_ui->sel_ports->refill();
    m_ui->sel_ports->choose(port);
    openLink();
}
