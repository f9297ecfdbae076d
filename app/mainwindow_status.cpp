// The status controls: heartbeat, versions, model information, gyro, reboot, factory reset, picture offset.
#include "app/mainwindow.h"
#include "dialogs/cameratype.h"
#include "link/protocol/commands.h"
#include "ui_mainwindow.h"

#include <QDebug>
#include <QInputDialog>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageBox>

namespace {

constexpr std::uint8_t gyroProperty = 0x03;
constexpr std::uint8_t gyroCommand = 0x0F;
constexpr std::uint32_t gyroTimeoutMs = 50;
constexpr std::uint32_t gyroReadSize = 100; // bytes
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

void MainWindow::testHeartBeat() {
    const bool alive = ask(tr("测试心跳"), &CameraSp::testHeartBeat);
    qDebug() << "heartbeat result:" << alive;
    m_ui->rb_heartbeat->setCheckable(true);
    m_ui->rb_heartbeat->setChecked(alive);
}

void MainWindow::queryVersions() {
    m_ui->tv_appversion->setText(tr("。。。。"));
    if (m_cameraType == cameratype::quenta)
        queryQuentaVersion();
    else
        queryVersionsOnPool();
}

void MainWindow::queryVersionsOnPool() {
    allowExchange(false);
    const auto query = [](CameraSp* camera) {
        Versions versions;
        if (camera != nullptr) {
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
        m_ui->tv_appversion->setText(tr("SDK版本:") + QString::fromStdString(versions.app) +
                                     QLatin1Char('\n') + tr("系统版本:") +
                                     QString::fromStdString(versions.system) + QLatin1Char('\n') +
                                     tr("QV-APP版本:") + QString::fromStdString(versions.qv));
        allowExchange(true);
    });
}

void MainWindow::queryQuentaVersion() {
    m_ui->tv_appversion->repaint(); // the busy mark, before the exchange blocks this thread
    const std::string answer = ask(tr("读取版本号"), &CameraSp::getQuentaModbusProperty, std::string());
    qDebug() << "quenta-jintai-version:" << QString::fromStdString(answer);
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(answer), &error);
    m_ui->tv_appversion->setText(error.error == QJsonParseError::NoError
                                     ? tr("APP版本:") + versionOf(document.object())
                                     : tr("解析失败:") + error.errorString());
}

void MainWindow::queryModelInfo() {
    m_ui->label_modelinfo->clear();
    const QString info = QString::fromStdString(ask(tr("读取模型信息"), &CameraSp::getModelInfo));
    qDebug() << "modelInfo:" << info;
    m_ui->label_modelinfo->setText(tr("模型信息:") + info);
}

void MainWindow::testGyro() {
    const std::vector<std::uint8_t> answer = ask(tr("测试陀螺仪"), &CameraSp::getCommonPropertyWithoutParse,
                                                 gyroProperty, gyroCommand, gyroTimeoutMs, gyroReadSize);
    const QString text =
        QString::fromUtf8(QByteArrayView(answer.data(), static_cast<qsizetype>(answer.size())));
    const bool passed = text == QLatin1String("3success");
    QMessageBox::information(this, QString(), passed ? tr("陀螺仪测试成功") : tr("陀螺仪测试失败:") + text);
}

void MainWindow::runConfirmed(const ConfirmedCommand& action) {
    const QPointer<MainWindow> self(this); // the question runs an event loop of its own
    const auto answer = QMessageBox::question(this, action.title, action.question,
                                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (self == nullptr || answer != QMessageBox::Yes)
        return;
    const bool done = ask(action.name, action.command);
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
    const int offset = QInputDialog::getInt(this, tr("设置附加值"), tr("请输入需要附加到图片命令的值"), 0, 0,
                                            highestPictureOffset, 1);
    if (self != nullptr && m_camera != nullptr)
        m_camera->setOriginPicCmdExtraAdd(static_cast<std::uint8_t>(offset));
}
