// The status controls: heartbeat, versions, model information, gyro, reboot, factory reset, picture offset.
#include "aids/linewatch.h"
#include "app/mainwindow.h"
#include "app/statusline.h"
#include "link/protocol/commands.h"
#include "linkaccess/cameratext.h"
#include "pictures/imgdialog.h"
#include "pictures/localpicture.h"
#include "service/reportwords.h"
#include "ui_mainwindow.h"

#include <QDebug>
#include <QInputDialog>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageBox>
#include <QTime>

#include <chrono>

namespace {

constexpr qsizetype longestBoxText = 200; // characters
constexpr int highestPictureOffset = 250;

/// The version stands at the top, or inside "result".
QString versionOf(const QJsonObject& answer) {
    const QJsonValue result = answer.value(QLatin1String("result"));
    QJsonValue version = answer.value(QLatin1String("version"));
    if (version.isUndefined())
        version = result.toObject().value(QLatin1String("version"));
    qDebug() << "result:" << result.toVariant().toString() << " version:" << version.toVariant().toString();
    return version.toVariant().toString();
}

} // namespace

struct MainWindow::Versions {
    std::string app;
    std::string system;
    std::string qv;

    [[nodiscard]] QString outcomeText(const CommandReport& report) const {
        QStringList missing;
        if (app.empty())
            missing.append(tr("SDK版本"));
        if (system.empty())
            missing.append(tr("系统版本"));
        if (qv.empty())
            missing.append(tr("QV-APP版本"));
        if (missing.empty() || missing.size() == 3)
            return {};
        const CommandReport reason = report.succeeded() ? CommandReport{CommandEnd::empty} : report;
        return tr("缺少 %1（%2）").arg(missing.join(tr("、")), reportWords(reason));
    }
};

void MainWindow::showSources() {
    const CameraInUse now = cameraInUse();
    if (m_heartbeatSource != now)
        m_ui->rb_heartbeat->showNotTested();
    const auto show = [&now](ValueLabel* value, QLabel* mark, const CameraInUse& source) {
        value->setOfPreviousCamera(source != now);
        mark->setVisible(source != now && !value->text().isEmpty());
    };
    show(m_ui->tv_appversion, m_ui->mark_versions, m_versionsSource);
    show(m_ui->label_modelinfo, m_ui->mark_model, m_modelSource);
    m_ui->label->setOfPreviousCamera(m_pictureSource != now);
}

void MainWindow::viewPicture(const TakenPicture& picture) {
    auto* const viewer = new ImgDialog(this);
    viewer->setAttribute(Qt::WA_QuitOnClose, false);
    m_windows.add(viewer, nullptr);
    viewer->showFile(picture.file, localPictureName(picture.id));
}

void MainWindow::testHeartBeat() {
    const Clock::Time asked = m_clock.now();
    const bool alive = ask(tr("测试心跳"), &CameraSp::testHeartBeat);
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(m_clock.now() - asked);
    qDebug() << "heartbeat result:" << alive;
    m_heartbeatSource = cameraInUse();
    m_ui->rb_heartbeat->showResult(alive, QTime::currentTime(), took);
}

void MainWindow::queryVersions() {
    m_ui->tv_appversion->setText(tr("。。。。"));
    m_versionsSource = cameraInUse();
    showSources();
    if (protocol::cameraTypeInfo(m_cameraType).pictures == protocol::PictureCommands::json)
        queryQuentaVersion();
    else
        queryVersionsOnPool();
}

void MainWindow::queryVersionsOnPool() {
    allowExchange(false);
    const auto query = [](CameraSp* camera) {
        Versions versions;
        if (camera != nullptr) {
            const LineTurn::Hold turn = camera->takeLine(LineUser::versions);
            versions.app = camera->getAppVersion();
            versions.system = camera->getSystemVersion();
            versions.qv = camera->getQvVersion();
        }
        qDebug() << QString::fromStdString(versions.app) << "  version1"
                 << QString::fromStdString(versions.system) << " version2"
                 << QString::fromStdString(versions.qv) << "  version3";
        return versions;
    };
    runOnPool(tr("读取版本号"), this, query, [this](const Versions& versions) {
        showCameraText(m_ui->tv_appversion, tr("SDK版本:") + cameraText(versions.app) + QLatin1Char('\n') +
                                                tr("系统版本:") + cameraText(versions.system) +
                                                QLatin1Char('\n') + tr("QV-APP版本:") +
                                                cameraText(versions.qv));
        allowExchange(true);
    });
}

void MainWindow::queryQuentaVersion() {
    m_ui->tv_appversion->repaint(); // the busy mark, before the exchange blocks this thread
    const std::string answer = ask(tr("读取版本号"), &CameraSp::getQuentaModbusProperty, std::string());
    qDebug() << "quenta-jintai-version:" << QString::fromStdString(answer);
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(answer), &error);
    if (error.error != QJsonParseError::NoError) {
        m_ui->tv_appversion->setText(tr("解析失败:") + error.errorString());
        if (!answer.empty())
            m_statusLine->showOutcome(tr("读取版本号：应答不是有效的 JSON，请重试"));
        return;
    }
    const QString version = versionOf(document.object());
    showCameraText(m_ui->tv_appversion, tr("APP版本:") + version);
    if (version.isEmpty())
        m_statusLine->showOutcome(tr("读取版本号：应答里没有版本号，请检查摄像头类型"));
}

void MainWindow::queryModelInfo() {
    showCameraText(m_ui->label_modelinfo, {});
    const std::string info = ask(tr("读取模型信息"), &CameraSp::getModelInfo);
    qDebug() << "modelInfo:" << QString::fromStdString(info);
    m_modelSource = cameraInUse();
    showSources();
    showCameraText(m_ui->label_modelinfo, tr("模型信息:") + cameraText(info));
}

void MainWindow::testGyro() {
    namespace gyro = protocol::gyro_test;
    const std::vector<std::uint8_t> answer =
        ask(tr("测试陀螺仪"), &CameraSp::getCommonPropertyWithoutParse, gyro::property,
            protocol::code(protocol::Command::gyroTest), gyro::timeoutMs, gyro::readSize);
    const std::string text(answer.begin(), answer.end());
    const bool passed = text == gyro::passed;
    if (!passed && !text.empty())
        m_statusLine->showOutcome(tr("测试陀螺仪：没有通过，请放稳摄像头后重试"));
    QMessageBox box(QMessageBox::Information, QString(),
                    passed ? tr("陀螺仪测试成功")
                           : tr("陀螺仪测试失败:") + shortened(cameraText(text), longestBoxText),
                    QMessageBox::Ok, this);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

void MainWindow::runConfirmed(const ConfirmedCommand& action) {
    const QPointer<MainWindow> self(this); // the question runs an event loop of its own
    const auto answer = QMessageBox::question(this, action.title, action.question,
                                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (self == nullptr || answer != QMessageBox::Yes)
        return;
    const bool done = ask(action.name, action.command);
    if (done)
        m_ui->rb_heartbeat->showNotTested(); // until the camera is back
    QMessageBox::information(this, QString(), done ? action.success : action.failure);
}

void MainWindow::rebootCamera() {
    runConfirmed({tr("重启摄像头"), tr("确认重启"), tr("是否重启摄像头？"), &CameraSp::rebootCamera,
                  tr("重启摄像头成功，请稍等摄像头进行重启"), tr("摄像头重启失败")});
}

void MainWindow::resetToFactory() {
    runConfirmed({tr("恢复出厂设置"), tr("确认初始化"), tr("是否初始化摄像头？"), &CameraSp::resetToFactory,
                  tr("初始化成功,请稍等10秒待摄像头初始化"), tr("初始化失败")});
}

void MainWindow::enterPictureOffset() {
    const QPointer<MainWindow> self(this);
    // A cancelled input gives the initial value, which is set as well: cancelling resets the offset.
    bool entered = false;
    const int offset = QInputDialog::getInt(this, tr("设置附加值"), tr("请输入需要附加到图片命令的值"), 0, 0,
                                            highestPictureOffset, 1, &entered);
    if (self == nullptr)
        return;
    if (m_camera == nullptr) {
        m_statusLine->showState(tr("请先打开串口，图片命令附加值没有设置"));
        return;
    }
    m_camera->setOriginPicCmdExtraAdd(static_cast<std::uint8_t>(offset));
    m_lineWatch->setPictureOffset(static_cast<std::uint8_t>(offset));
    m_statusLine->showOutcome(entered ? tr("图片命令附加值：%1").arg(offset)
                                      : tr("已取消输入，图片命令附加值恢复为 0"));
}
