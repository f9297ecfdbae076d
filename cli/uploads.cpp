#include "cli/uploads.h"

#include "service/readings.h"
#include "service/reportwords.h"
#include "service/returnwait.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace cli {

namespace {

QString uploadWords(const char* text) {
    return QCoreApplication::translate("Uploads", text);
}

bool usesSecondProtocol(const CommandContext& context) {
    return context.options.command.kind == UploadKind::app &&
           protocol::infoOf(context.options.type).pictures == protocol::PictureCommands::v1;
}

/// Empty, or why the file cannot be uploaded.
QString fileProblem(const QString& path) {
    const QFileInfo file(path);
    if (!file.exists())
        return uploadWords("文件不存在：%1").arg(path);
    if (!file.isFile() || !file.isReadable())
        return uploadWords("文件不能读取：%1").arg(path);
    return {};
}

void send(const CommandContext& context, const std::string& path) {
    const Command& command = context.options.command;
    const std::string name = command.name.empty()
                                 ? QFileInfo(QString::fromStdString(path)).fileName().toStdString()
                                 : command.name;
    switch (command.kind) {
    case UploadKind::app:
        if (usesSecondProtocol(context)) {
            context.camera.appUpdateV1(name, path);
        } else {
            context.camera.setAppFilePath(path);
            context.camera.appUpdate();
        }
        return;
    case UploadKind::system:
        context.camera.setFirewareFilePath(path);
        context.camera.firewareUpdate();
        return;
    case UploadKind::model:
        context.camera.setModelNameAndPath(name, path);
        context.camera.modelUpdate();
        return;
    }
}

/// The command's result; a file that vanished after it was looked at counts as missing.
CommandReport upload(const CommandContext& context, const std::string& path) {
    const ReportScope scope;
    try {
        send(context, path);
    } catch (...) {
        return {CommandEnd::fileMissing};
    }
    return scope.report();
}

QJsonValue version(const CommandContext& context) {
    const bool model = context.options.command.kind == UploadKind::model;
    const bool system = context.options.command.kind == UploadKind::system &&
                        protocol::infoOf(context.options.type).pictures != protocol::PictureCommands::json;
    const char* const key = model ? "model" : system ? "systemVersion" : "appVersion";
    return service::readingOf(key)->read(context.camera, context.options.type).value;
}

QString versionText(const QJsonValue& version) {
    return version.isNull() ? uploadWords("没有读到") : version.toString();
}

/// True when the camera has come back, or need not.
bool waitForReturn(const CommandContext& context) {
    const Command& command = context.options.command;
    if (!command.waits || command.kind == UploadKind::model || usesSecondProtocol(context))
        return true;
    const ReturnAttempts& attempts = command.kind == UploadKind::app ? appReturn : systemReturn;
    return awaitReturn(context.camera, attempts, [&](int attempt) {
        context.tell(
            uploadWords("等待摄像头重新启动，第 %1 次，共 %2 次").arg(attempt).arg(attempts.attempts));
    });
}

} // namespace

Result runUpload(const CommandContext& context) {
    const std::string& path = context.options.command.file;
    if (const QString problem = fileProblem(QString::fromStdString(path)); !problem.isEmpty())
        return failure(ExitCode::file, problem);
    const QJsonValue before = version(context);
    const CommandReport report = upload(context, path);
    if (!report.succeeded())
        return failureOf(uploadWords("升级没有完成"), report);
    Result result;
    const bool returned = waitForReturn(context);
    if (!returned) {
        result = context.camera.stopRequested()
                     ? failureOf(uploadWords("升级已发送"), {CommandEnd::stopped})
                     : failure(ExitCode::noAnswer,
                               uploadWords("升级已发送，但摄像头没有重新启动，请检查电源后测试心跳"));
    }
    const bool asks = returned && context.options.command.waits;
    const QJsonValue after = asks ? version(context) : QJsonValue();
    result.fields.insert(QLatin1String("bytes"), QFileInfo(QString::fromStdString(path)).size());
    result.fields.insert(QLatin1String("before"), before);
    result.fields.insert(QLatin1String("after"), after);
    result.fields.insert(QLatin1String("returned"), returned);
    result.text = uploadWords("升级已完成，升级前 %1").arg(versionText(before));
    if (asks)
        result.text += uploadWords("，升级后 %1").arg(versionText(after));
    return result;
}

} // namespace cli
