// Uploads: choosing the files, starting the tasks, their results, and the wait for the camera's return.
#include "aids/filedrop.h"
#include "app/keepawake.h"
#include "app/linewait.h"
#include "app/mainwindow.h"
#include "app/statusline.h"
#include "app/transferdisplay.h"
#include "linkaccess/focuskeeper.h"
#include "service/reportwords.h"
#include "service/returnwait.h"
#include "ui_mainwindow.h"
#include "updates/appupdatetask.h"
#include "updates/appupdatev1task.h"
#include "updates/firewaretask.h"
#include "updates/modelupdatetask.h"

#include <QDebug>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QShortcut>
#include <QStatusBar>

#include <chrono>

using namespace std::chrono_literals;

namespace {

QString boolText(bool value) {
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

/// True if an upload can read the file.
bool canUpload(const QString& path) {
    const QFileInfo file(path);
    return !path.isEmpty() && file.exists() && file.isFile() && file.isReadable();
}

} // namespace

struct MainWindow::FileChoice {
    QPushButton* button;
    QString& path;
    QString caption;
    QString filter;
    const char* logTag;
};

struct MainWindow::ReturnWait {
    ReturnAttempts heartbeats;
    const char* logTag;
    QPushButton* button;
};

void MainWindow::connectUpdates() {
    m_transferDisplay = new TransferDisplay(this, m_clock);
    m_ui->statusbar->insertPermanentWidget(0, m_transferDisplay); // the link keeps its place
    connect(m_ui->statusbar, &QStatusBar::messageChanged, m_transferDisplay, &TransferDisplay::fit);
    m_lineWait = new LineWait(this);
    for (const ImageKind kind : allImageKinds)
        connect(fileChoice(kind).button, &QPushButton::clicked, this, [this, kind] { chooseFile(kind); });
    connect(new QShortcut(QKeySequence::Open, this), &QShortcut::activated, this,
            &MainWindow::chooseFocusedFile);
    auto* const drop =
        new FileDrop(this, [this](ImageKind kind) { return fileChoice(kind).button->isEnabled(); });
    connect(drop, &FileDrop::chosen, this, &MainWindow::takeFile);
    connect(m_transferDisplay, &TransferDisplay::stopWanted, this, [this] {
        if (m_camera != nullptr && confirmInterruption())
            closeLink();
    });
    connect(m_ui->et_modelname, &QLineEdit::textChanged, this,
            [this](const QString& name) { m_modelName = name; });
    connect(m_ui->btn_appupdate, &QPushButton::clicked, this, &MainWindow::startAppUpdate);
    connect(m_ui->btn_firewareupdate, &QPushButton::clicked, this, &MainWindow::startFirewareUpdate);
    connect(m_ui->btn_modelupdate, &QPushButton::clicked, this, &MainWindow::startModelUpdate);
}

void MainWindow::chooseFocusedFile() {
    const QWidget* const focus = focusWidget();
    if (m_ui->frame_7->isAncestorOf(focus))
        m_ui->btn_modelpath->click();
    else if (focus == m_ui->btn_firewarepath || focus == m_ui->btn_firewareupdate)
        m_ui->btn_firewarepath->click();
    else
        m_ui->btn_apppath->click();
}

MainWindow::FileChoice MainWindow::fileChoice(ImageKind kind) {
    switch (kind) {
    case ImageKind::app:
        return {m_ui->btn_apppath, m_appPath, tr("打开app固件"), tr("所有文件 (*.*)"), "filepath:"};
    case ImageKind::fireware:
        return {m_ui->btn_firewarepath, m_firewarePath, tr("打开系统固件"), tr("所有文件 (*.*)"),
                "filepath:"};
    case ImageKind::model:
        break;
    }
    // This filter has no blank before its parenthesis.
    return {m_ui->btn_modelpath, m_modelPath, tr("打开模型文件"), tr("所有文件(*.*)"), "model path:"};
}

void MainWindow::chooseFile(ImageKind kind) {
    const FileChoice choice = fileChoice(kind);
    const QPointer<MainWindow> self(this);
    const QString chosen = QFileDialog::getOpenFileName(nullptr, choice.caption, QString(), choice.filter);
    if (self != nullptr)
        takeFile(kind, chosen);
}

void MainWindow::takeFile(ImageKind kind, const QString& chosen) {
    const FileChoice choice = fileChoice(kind);
    qDebug() << choice.logTag << chosen;
    if (!chosen.isEmpty())
        choice.path = chosen;
    showPaths();
}

// --- starting ----------------------------------------------------------------------------------------------

void MainWindow::startAppUpdate() {
    const bool startable = canUpload(m_appPath);
    if (startable && protocol::cameraTypeInfo(m_cameraType).pictures == protocol::PictureCommands::v1) {
        const QString fileName = QFileInfo(m_appPath).fileName();
        qDebug() << "get fileName " << fileName;
        m_appUpdateV1Task = new AppUpdateV1Task(client(), m_appPath, fileName, this);
        if (!runTask(m_appUpdateV1Task, &AppUpdateV1Task::appupdateV1End, &MainWindow::appupdateV1End))
            return;
    } else if (startable) {
        m_appUpdateTask = new AppUpdateTask(client(), m_appPath, this);
        if (!runTask(m_appUpdateTask, &AppUpdateTask::appupdateEnd, &MainWindow::appupdateEnd))
            return;
    }
    disablePressed(m_ui->btn_appupdate, startable);
}

void MainWindow::startFirewareUpdate() {
    const bool startable = canUpload(m_firewarePath);
    if (startable) {
        m_firewareTask = new FirewareTask(client(), m_firewarePath, this);
        if (!runTask(m_firewareTask, &FirewareTask::firewareEnd, &MainWindow::firewareEnd))
            return;
    }
    disablePressed(m_ui->btn_firewareupdate, startable);
}

void MainWindow::startModelUpdate() {
    const bool startable = canUpload(m_modelPath);
    if (startable) {
        m_modelUpdateTask = new ModelUpdateTask(client(), m_modelPath, m_modelName, this);
        if (!runTask(m_modelUpdateTask, &ModelUpdateTask::modelUpdateEnd, &MainWindow::modelUpdateEnd))
            return;
    }
    disablePressed(m_ui->btn_modelupdate, startable);
}

template <typename Task>
bool MainWindow::runTask(Task*& task, void (Task::*ended)(bool), void (MainWindow::*showResult)(bool)) {
    // Results of an earlier link are not shown.
    connect(task, ended, this, [this, task = task, showResult, generation = linkGeneration()](bool result) {
        if (generation != linkGeneration())
            return;
        m_uploadReport = task->report();
        (this->*showResult)(result);
    });
    if (m_camera != nullptr)
        beginUpload();
    else
        m_statusLine->showState(tr("请先打开串口"));
    allowExchange(false);
    task->start();
    if (task->isRunning() || task->isFinished())
        return true;
    delete std::exchange(task, nullptr);
    endInterruptible();
    allowExchange(true);
    m_statusLine->showOutcome(tr("升级没有开始：系统资源不足，请关闭其他程序后重试"));
    return false;
}

void MainWindow::beginUpload() {
    m_statusLine->holdState(tr("正在升级，请勿断电、勿拔线"));
    m_interruptible = true;
    m_ui->rb_heartbeat->showNotTested();
    m_addressHold.emplace(*m_camera);
    m_keepAwake = std::make_unique<KeepAwake>();
    m_transferDisplay->followUpload(*m_camera);
    m_lineWait->follow(*m_camera);
}

/// The pressed button stays disabled even if nothing was started; it is enabled with the others.
void MainWindow::disablePressed(QPushButton* button, bool started) {
    FocusKeeper::of(this).keep([button] { button->setEnabled(false); });
    if (!started)
        m_statusLine->showState(tr("没有可升级的文件，请先选择文件"));
}

// --- results -----------------------------------------------------------------------------------------------

void MainWindow::appupdateEnd(bool result) {
    qDebug() << "app main-ui result:" << result;
    if (result)
        awaitReturn({appReturn, "app-update heartbeatResult:", m_ui->btn_appupdate});
    else
        showUploadResult(m_ui->btn_appupdate, uploadOutcome(false), tr("升级已完成，结果:失败！"));
}

void MainWindow::firewareEnd(bool result) {
    qDebug() << "fireware main-ui result:" << result;
    if (result)
        awaitReturn({systemReturn, "system-ota-update heartbeatResult:", m_ui->btn_firewareupdate});
    else
        showUploadResult(m_ui->btn_firewareupdate, uploadOutcome(false),
                         tr("升级已完成，结果:失败！") + boolText(false));
}

void MainWindow::modelUpdateEnd(bool result) {
    qDebug() << "model main-ui result:" << result;
    showUploadResult(m_ui->btn_modelupdate, uploadOutcome(result),
                     tr("升级已完成，结果:") + boolText(result));
}

void MainWindow::appupdateV1End(bool result) {
    qDebug() << "appv1 update main-ui result:" << result;
    showUploadResult(m_ui->btn_appupdate, uploadOutcome(result), tr("升级已完成，结果:") + boolText(result));
}

void MainWindow::awaitReturn(const ReturnWait& wait) {
    auto progress = std::make_shared<ReturnWaitProgress>();
    progress->attempts = wait.heartbeats.attempts;
    m_transferDisplay->followReturnWait(progress);
    const auto probe = [wait, progress](CameraSp* camera) {
        const bool alive = camera != nullptr && ::awaitReturn(*camera, wait.heartbeats, [&](int attempt) {
                               progress->attempt = attempt;
                           });
        qDebug() << wait.logTag << alive;
        return alive;
    };
    runOnPool(QString(), this, probe, [this, button = wait.button](bool alive) {
        const bool sent = m_uploadReport.end != CommandEnd::writtenShort;
        const QString outcome = alive || !sent ? uploadOutcome(sent)
                                               : tr("文件已发送，但摄像头没有恢复应答，请检查供电后测试心跳");
        showUploadResult(button, outcome, tr("升级已完成，结果:") + boolText(alive));
    });
}

/// A resume offset behind the image's end counts as a success although nothing was sent.
QString MainWindow::uploadOutcome(bool success) const {
    if (success && m_uploadReport.succeeded())
        return tr("升级完成");
    return (success ? tr("没有发送数据：%1") : tr("升级没有成功：%1")).arg(reportWords(m_uploadReport));
}

void MainWindow::showUploadResult(QPushButton* button, const QString& outcome, const QString& text) {
    endInterruptible();
    button->setEnabled(true);
    allowExchange(true);
    m_statusLine->showOutcome(outcome);
    QMessageBox::information(nullptr, QString(), text, QMessageBox::Ok);
}

// --- breaking off ------------------------------------------------------------------------------------------

bool MainWindow::confirmInterruption() {
    if (!m_interruptible)
        return true;
    const QPointer<MainWindow> self(this);
    const auto answer = QMessageBox::question(
        this, tr("升级尚未结束"), tr("现在关闭会中断升级，摄像头可能要重新升级后才能使用。确定要关闭吗？"),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    return self != nullptr && answer == QMessageBox::Yes;
}

void MainWindow::endInterruptible() {
    m_interruptible = false;
    m_statusLine->releaseState();
    m_addressHold.reset();
    m_keepAwake.reset();
    m_lineWait->finish();
    m_transferDisplay->finish();
}

void MainWindow::waitForTasks() {
    for (UploadTask* const task : findChildren<UploadTask*>(Qt::FindDirectChildrenOnly))
        task->wait();
}
