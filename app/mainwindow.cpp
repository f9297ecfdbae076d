// Construction, the rules for the controls, opening and closing the link, and the windows of the menu.
#include "app/mainwindow.h"

#include "aids/linewatch.h"
#include "app/application.h"
#include "app/keepawake.h"
#include "app/panelstyle.h"
#include "app/statusline.h"
#include "app/system.h"
#include "app/transferdisplay.h"
#include "dialogs/aboutdialog.h"
#include "dialogs/doorop.h"
#include "dialogs/setcameralocation.h"
#include "dialogs/setcameraprotocol.h"
#include "dialogs/setcapturedegree.h"
#include "dialogs/setpicrate.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"
#include "linkaccess/cameratext.h"
#include "linkaccess/focuskeeper.h"
#include "linkaccess/signs.h"
#include "pictures/piclist.h"
#include "pictures/piclistv1.h"
#include "ui_mainwindow.h"

#include <QCloseEvent>
#include <QDebug>
#include <QThread>
#include <QTimer>

#include <array>
#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto finishStartDelay = 100ms;
constexpr int leastControlHeight = 28; // pixels
constexpr int versionLines = 3;
constexpr int versionLength = 11; // characters; longer ones take two lines
// Set in the form for each menu entry that exchanges with the camera.
constexpr const char* exchangesProperty = "exchanges";
// Jobs mostly wait: each open window may read while another job has the line.
constexpr int poolThreads = 16;
const QString toolVersion = QStringLiteral(CAMERA_TOOL_VERSION);

} // namespace

MainWindow::MainWindow(QWidget* parent, Clock& clock)
    : QMainWindow(parent), ClientBorrower(this, nullptr), m_clock(clock),
      m_ui(std::make_unique<Ui::MainWindow>()) {
    m_ui->setupUi(this);
    applyPanelStyle(m_ui->centralwidget);
    signControls();
    levelControls();
    setWindowTitle(tr("摄像头测试-Tessaly v(%1)").arg(toolVersion));
    // A lamp, not a control; accessibility tools still read it.
    m_ui->rb_heartbeat->setAttribute(Qt::WA_TransparentForMouseEvents);
    QThreadPool* const pool = QThreadPool::globalInstance();
    pool->setMaxThreadCount(std::max(pool->maxThreadCount(), poolThreads));
    m_statusLine = std::make_unique<StatusLine>(m_ui->statusbar, m_clock);
    setObserver(m_statusLine.get());
    fillChoices();

    connectLink();
    connectStatus();
    connectMenus();
    connectUpdates();
    connectPictures();
    connectAids();
    connectPorts();
    if (const auto* const application = qobject_cast<Application*>(QCoreApplication::instance()))
        connect(application, &Application::failureReported, m_statusLine.get(), &StatusLine::showOutcome);

    applyPortRule();
    showPaths();
    showLink();
    giveKeys(this);
    pressButtonsByEnter(this);
    m_ui->btn_open->setFocus();
    QTimer::singleShot(m_clock.timerInterval(finishStartDelay), this, &MainWindow::finishStart);
}

MainWindow::~MainWindow() {
    // First, while everything that they use exists.
    m_windows.deleteAll();
    closeLink();
    waitForTasks();
}

bool MainWindow::event(QEvent* event) {
    // Menus send one for each entry under the mouse. Only StatusLine writes the status bar.
    if (event->type() == QEvent::StatusTip)
        return true;
    if (event->type() == QEvent::WindowDeactivate)
        leaveCloseButton();
    if (event->type() == QEvent::Show)
        listPortsLater();
    return QMainWindow::event(event);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!confirmInterruption()) {
        event->ignore();
        return;
    }
    m_windows.closeAll();
    closeLink();
    m_portTimer.stop();
    endLoss();
    event->accept();
}

// --- construction ------------------------------------------------------------------------------------------

void MainWindow::signControls() {
    setSign(m_ui->btn_open, Sign::open);
    setSign(m_ui->btn_heartbeat, Sign::heartbeat);
    setSign(m_ui->btn_takepic, Sign::picture);
    for (QPushButton* const button : {m_ui->btn_appupdate, m_ui->btn_firewareupdate, m_ui->btn_modelupdate})
        setSign(button, Sign::upload);
}

void MainWindow::levelControls() {
    std::vector<QWidget*> controls{m_ui->label_slaveinfo, m_ui->label_modelinfo, m_ui->et_modelname,
                                   m_ui->sel_ports, m_ui->sel_baund};
    for (QPushButton* const button : m_ui->centralwidget->findChildren<QPushButton*>())
        controls.push_back(button);
    int height = leastControlHeight;
    for (const QWidget* const control : controls)
        height = std::max(height, control->sizeHint().height());
    for (QWidget* const control : controls)
        control->setMinimumHeight(height);
    const QFontMetrics metrics = m_ui->tv_appversion->fontMetrics();
    const int margin = 2 * m_ui->tv_appversion->indent();
    m_ui->tv_appversion->setMinimumSize(metrics.averageCharWidth() * versionLength,
                                        versionLines * metrics.lineSpacing() + margin);
}

void MainWindow::fillChoices() {
    for (const std::uint32_t rate : protocol::baudRates)
        m_ui->sel_baund->addItem(QString::number(rate));
    m_ui->sel_baund->setCurrentIndex(0);
    m_ui->sel_ports->setSource(&presentPorts);
    m_ui->sel_ports->fill();
    m_portName = m_ui->sel_ports->currentText().toStdString();
    qDebug() << "init port:" << m_ui->sel_ports->currentText();
    qDebug() << "Application version:" << toolVersion;
    m_ui->label_slaveinfo->setText(tr("当前从机地址:") + QString::number(m_slaveAddress));
}

void MainWindow::connectLink() {
    connect(m_ui->sel_ports, &QComboBox::currentTextChanged, this,
            [this](const QString& port) { m_portName = port.toStdString(); });
    connect(m_ui->sel_baund, &QComboBox::currentTextChanged, this,
            [this](const QString& rate) { m_baudRate = rate.toUInt(); });
    connect(m_ui->btn_open, &QPushButton::clicked, this, &MainWindow::toggleLink);
}

void MainWindow::connectStatus() {
    connect(m_ui->btn_heartbeat, &QPushButton::clicked, this, &MainWindow::testHeartBeat);
    connect(m_ui->btn_appversion, &QPushButton::clicked, this, &MainWindow::queryVersions);
    connect(m_ui->btn_modelinfo, &QPushButton::clicked, this, &MainWindow::queryModelInfo);
    connect(m_ui->btn_gyro, &QPushButton::clicked, this, &MainWindow::testGyro);
    // For development; sends nothing.
    connect(m_ui->btn_test, &QPushButton::clicked, this, [] { qDebug() << "test"; });
}

void MainWindow::connectMenus() {
    connect(m_ui->actionaddress, &QAction::triggered, this, &MainWindow::openCameraProtocol);
    connect(m_ui->actionOriginCmdExtraAdd, &QAction::triggered, this, &MainWindow::enterPictureOffset);
    connect(m_ui->actionReboot, &QAction::triggered, this, &MainWindow::rebootCamera);
    connect(m_ui->actionResetFactory, &QAction::triggered, this, &MainWindow::resetToFactory);
    connectWindow<SetSN>(m_ui->actionSnSet);
    connectWindow<SetPwmHeat>(m_ui->actionPwmHeatSet);
    connectWindow<SetCameraLocation>(m_ui->actionInstallLocation);
    connectWindow<SetCaptureDegree>(m_ui->actionCaptureDegree);
    connectWindow<SetPicRate>(m_ui->actionactionPicRateSet);
    connectWindow<DoorOp>(m_ui->actionOpenCloseDoor);
    connect(m_ui->actionAbout, &QAction::triggered, this, &MainWindow::openAbout);
}

void MainWindow::connectPictures() {
    m_captureFlow = std::make_unique<CaptureFlow>(m_ui->label, [this](bool allowed) {
        allowExchange(allowed);
        if (allowed)
            m_transferDisplay->finish();
        else if (m_camera != nullptr)
            m_transferDisplay->followDownload(m_camera->progress());
    });
    m_captureFlow->setObserver(m_statusLine.get());
    connect(m_ui->btn_takepic, &QPushButton::clicked, this, [this] {
        m_ui->label->forget();
        m_pictureSource = cameraInUse();
        m_captureFlow->start(m_cameraType);
    });
    connect(m_captureFlow.get(), &CaptureFlow::pictureShown, this, [this](const TakenPicture& picture) {
        m_ui->label->setTaken(picture);
        showSources();
    });
    m_ui->label->setViewer([this](const TakenPicture& picture) { viewPicture(picture); });
    connect(m_ui->actionPicInfo, &QAction::triggered, this, [this] { openWindow<PicList>(this, client()); });
    connect(m_ui->actionPicInfoV1, &QAction::triggered, this,
            [this] { openWindow<PicListV1>(this, client()); });
}

void MainWindow::finishStart() {
    if (!m_statusLine->isSilent())
        return; // the user has acted already
    const int ports = m_ui->sel_ports->count();
    m_statusLine->showState(ports > 0 ? tr("准备就绪，发现 %1 个串口，请选择后打开").arg(ports)
                                      : tr("没有发现串口，请插入转接器后点开串口列表"));
}

// --- the controls ------------------------------------------------------------------------------------------

std::vector<QWidget*> MainWindow::portOpenControls() const {
    return {m_ui->btn_heartbeat,   m_ui->rb_heartbeat,  m_ui->btn_appversion,   m_ui->btn_takepic,
            m_ui->btn_apppath,     m_ui->btn_appupdate, m_ui->btn_firewarepath, m_ui->btn_firewareupdate,
            m_ui->label_modelinfo, m_ui->btn_modelinfo, m_ui->btn_modelpath,    m_ui->et_modelname};
}

void MainWindow::applyPortRule() {
    const bool open = m_camera != nullptr;
    FocusKeeper::of(this).keep([this, open] {
        m_ui->sel_ports->setEnabled(!open);
        m_ui->sel_baund->setEnabled(!open);
        for (QWidget* const control : portOpenControls())
            control->setEnabled(open);
    });
    if (!open)
        m_ui->rb_heartbeat->showNotTested();
}

void MainWindow::allowExchange(bool allowed) {
    m_exchangeAllowed = allowed;
    FocusKeeper::of(this).keep([this, allowed] {
        if (allowed) {
            applyPortRule();
        } else {
            for (QWidget* const control : portOpenControls())
                control->setEnabled(false);
        }
        // The port rule leaves these alone.
        m_ui->btn_modelupdate->setEnabled(allowed);
        m_ui->btn_gyro->setEnabled(allowed);
    });
    for (QAction* const action : findChildren<QAction*>()) {
        if (action->property(exchangesProperty).toBool())
            action->setEnabled(allowed);
    }
    m_windows.setExchangeAllowed(allowed);
}

void MainWindow::freeExchange() {
    if (m_exchangeAllowed)
        applyPortRule();
    else
        allowExchange(true);
}

void MainWindow::leaveCloseButton() {
    if (m_camera != nullptr && focusWidget() == m_ui->btn_open)
        FocusKeeper::of(this).rest();
}

void MainWindow::showPaths() {
    const auto show = [](QLabel* label, const QString& path) {
        label->setText(path);
        label->setToolTip(path);
        label->setVisible(!path.isEmpty());
        if (path.isEmpty())
            return;
        runWithoutClient(
            label, [path] { return md5Of(path); },
            [label, path](const QString& md5) {
                if (label->text() == path)
                    label->setToolTip(imageFacts(path, md5));
            });
    };
    show(m_ui->label_apppath, m_appPath);
    show(m_ui->label_firewarepath, m_firewarePath);
    show(m_ui->label_modelpath, m_modelPath);
    const bool chosen = !(m_appPath.isEmpty() && m_firewarePath.isEmpty() && m_modelPath.isEmpty());
    m_ui->frame_path->setVisible(chosen);
    m_ui->frame_nopath->setVisible(!chosen); // keeps the place
}

void MainWindow::showLink() {
    showSources();
    if (m_camera == nullptr) {
        m_statusLine->setLinkText(tr("串口未打开"));
        return;
    }
    const QString rateAndAddress = tr("%1，从机地址 %2").arg(m_opened.baudRate).arg(m_slaveAddress);
    m_statusLine->setLinkText(m_opened.port.isEmpty() ? rateAndAddress
                                                      : tr("%1，%2").arg(m_opened.port, rateAndAddress));
}

// --- the link ----------------------------------------------------------------------------------------------

void MainWindow::toggleLink() {
    if (m_camera == nullptr)
        openLink();
    else if (confirmInterruption())
        closeLink();
}

void MainWindow::openLink() {
    const QString port = QString::fromStdString(m_portName);
    qDebug() << port << "  " << m_baudRate;
    releaseChosenPort();
    // If the port does not open, the exception leaves here and nothing has changed.
    auto camera = std::make_unique<CameraSp>(m_portName, m_baudRate, m_clock);
    camera->setSlaveAddress(static_cast<std::int32_t>(m_slaveAddress));
    camera->setWaitCallback([this, userInterface = QThread::currentThread()] {
        if (QThread::currentThread() != userInterface)
            return;
        m_statusLine->keepCounting();
        tellSystemAlive();
    });
    m_lineWatch->linkOpened(*camera, port);
    m_camera = std::move(camera);
    m_opened = {port, m_baudRate};
    ++m_links;
    m_ui->sel_ports->keepChoice();
    m_portTimer.stop();
    endLoss();
    m_adapter = AdapterTrack(port, m_ui->sel_ports->ports());
    lendClient(m_camera.get());
    m_ui->btn_open->setText(tr("关闭串口"));
    setSign(m_ui->btn_open, Sign::close);
    freeExchange();
    leaveCloseButton();
    showLink();
    m_statusLine->showOutcome(port.isEmpty() ? tr("没有可用串口") : tr("已打开 %1").arg(port));
}

void MainWindow::closeLink() {
    if (m_camera == nullptr)
        return;
    showCameraText(m_ui->tv_appversion, {});
    m_ui->btn_open->setText(tr("打开串口"));
    setSign(m_ui->btn_open, Sign::open);
    lendClient(nullptr);
    m_camera->requestStop();
    m_camera->waitUntilUnused();
    waitForTasks();
    endInterruptible();
    m_lineWatch->linkClosed();
    m_camera.reset();
    listPortsLater();
    freeExchange();
    showLink();
    m_statusLine->showOutcome(tr("串口已关闭"));
}

void MainWindow::lendClient(CameraSp* client) {
    attachClient(client);
    m_statusLine->setClient(client);
    m_captureFlow->attachClient(client);
    m_windows.attachClient(client);
}

void MainWindow::applyCameraProtocol() {
    m_ui->sel_baund->setCurrentText(QString::number(protocol::cameraTypeInfo(m_cameraType).baudRate));
    applyAddress();
}

void MainWindow::applyAddress() {
    if (m_camera != nullptr)
        m_camera->setSlaveAddress(static_cast<std::int32_t>(m_slaveAddress));
    m_ui->label_slaveinfo->setText(tr("当前从机地址:") + QString::number(m_slaveAddress));
    showLink();
}

// --- windows -----------------------------------------------------------------------------------------------

void MainWindow::openCameraProtocol() {
    // The button closes that window: a second press of the key comes here and must press nothing.
    FocusKeeper::of(this).rest();
    const auto* const window = openWindow<SetCameraProtocol>(&m_slaveAddress, &m_cameraType, this);
    connect(window, &QObject::destroyed, this, &MainWindow::applyCameraProtocol);
}

void MainWindow::openAbout() {
    qDebug() << "about";
    openWindow<AboutDialog>(this);
}

void MainWindow::lendTo(ClientBorrower& borrower) {
    borrower.setObserver(m_statusLine.get());
    // Commands in the window's constructor have failed already.
    if (m_camera == nullptr && borrower.needsClient())
        m_statusLine->clientMissing();
}
