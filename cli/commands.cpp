#include "cli/commands.h"

#include "cli/conform.h"
#include "cli/pictures.h"
#include "cli/uploads.h"
#include "link/protocol/commands.h"
#include "link/protocol/storetimes.h"
#include "service/checkup.h"
#include "service/report.h"
#include "service/reportwords.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>
#include <array>
#include <charconv>

namespace cli {

namespace {

using protocol::PropertyId;
using service::ReadValue;

QString commandWords(const char* text) {
    return QCoreApplication::translate("Commands", text);
}

ExitCode codeOf(const ReadValue& value) {
    if (value.verdict == service::Verdict::failed)
        return std::max(exitCodeOf(value.end), ExitCode::refused);
    return ExitCode::done;
}

/// Reads the values by their keys in the table of readings, all of them even if one fails.
Result readAll(const CommandContext& context, const std::vector<const char*>& keys) {
    Result result;
    QStringList lines;
    QStringList errors;
    for (const char* const key : keys) {
        const service::Reading* const reading = service::readingOf(key);
        const ReadValue value = reading->read(context.camera, context.options.type);
        result.fields.insert(QLatin1String(key), value.value);
        if (value.verdict == service::Verdict::failed)
            errors.append(reading->translatedTitle() + commandWords("：") + value.reason);
        else
            lines.append(reading->translatedTitle() + commandWords("：") + value.text);
        result.code = std::max(result.code, codeOf(value));
    }
    result.text = lines.join(QLatin1Char('\n'));
    result.error = errors.join(QLatin1Char('\n'));
    return result;
}

Result readVersions(const CommandContext& context) {
    const bool json = protocol::infoOf(context.options.type).pictures == protocol::PictureCommands::json;
    const LineTurn::Hold turn = context.camera.takeLine(LineUser::versions);
    return readAll(context, json ? std::vector<const char*>{"appVersion"}
                                 : std::vector<const char*>{"appVersion", "systemVersion", "qvVersion"});
}

Result testGyro(const CommandContext& context) {
    Result result = readAll(context, {"gyroTest"});
    if (result.code == ExitCode::done && !result.fields.value(QLatin1String("gyroTest")).toBool()) {
        result.code = ExitCode::refused;
        result.error = commandWords("陀螺仪自检没有通过，请放稳摄像头后重试");
    }
    return result;
}

// --- settings ----------------------------------------------------------------------------------------------

struct Setting {
    Verb verb;
    const char* key; ///< of the reading
    PropertyId id;
    int storeSeconds; ///< until it can be read back
};

constexpr std::array settings{
    Setting{Verb::serialNumber, "serialNumber", PropertyId::serialNumber, protocol::serialNumberStoreSeconds},
    Setting{Verb::heater, "heater", PropertyId::heaterDuty, protocol::heaterStoreSeconds},
    Setting{Verb::compression, "compression", PropertyId::compressionRate, protocol::compressionStoreSeconds},
    Setting{Verb::angles, "angles", PropertyId::captureAngles, 1},
    Setting{Verb::direction, "direction", PropertyId::captureDirection, 1},
    Setting{Verb::gyroState, "gyroState", PropertyId::gyroSwitch, 1},
};

const Setting* settingOf(Verb verb) {
    const auto* const found = std::find_if(settings.begin(), settings.end(),
                                           [verb](const Setting& setting) { return setting.verb == verb; });
    return found == settings.end() ? nullptr : found;
}

std::uint8_t byteIn(const std::string& word) {
    if (word == "clockwise" || word == "on")
        return 1;
    if (word == "anticlockwise" || word == "off")
        return 0;
    const bool hexadecimal = word.starts_with("0x") || word.starts_with("0X");
    return static_cast<std::uint8_t>(std::stoul(word, nullptr, hexadecimal ? 16 : 10)); // checked before
}

/// The value as the table of readings tells it.
QJsonValue expectedValue(const Setting& setting, const std::vector<std::string>& values) {
    switch (setting.verb) {
    case Verb::serialNumber:
    case Verb::direction:
        return QString::fromStdString(values.front());
    case Verb::gyroState:
        return byteIn(values.front()) == 1;
    case Verb::angles:
        return QJsonArray{byteIn(values[0]), byteIn(values[1])};
    default:
        return byteIn(values.front());
    }
}

void write(CameraSp& camera, const Setting& setting, const std::vector<std::string>& values) {
    if (setting.verb == Verb::serialNumber) {
        camera.setSn(values.front());
        return;
    }
    std::vector<std::uint8_t> bytes(values.size());
    std::transform(values.begin(), values.end(), bytes.begin(), &byteIn);
    camera.setCommonProperty(code(setting.id), std::move(bytes), code(protocol::Command::setProperty));
}

Result runSetting(const CommandContext& context, const Setting& setting) {
    const std::vector<std::string>& values = context.options.command.values;
    if (values.empty())
        return readAll(context, {setting.key});
    const ReportScope scope;
    write(context.camera, setting, values);
    if (!scope.report().succeeded())
        return failureOf(commandWords("写入"), scope.report());
    context.tell(commandWords("等待摄像头保存"));
    if (!context.camera.pause(std::chrono::seconds(setting.storeSeconds)))
        return failureOf(commandWords("写入"), {CommandEnd::stopped});
    Result result = readAll(context, {setting.key});
    if (result.code == ExitCode::done &&
        result.fields.value(QLatin1String(setting.key)) != expectedValue(setting, values)) {
        result.code = ExitCode::refused;
        result.error = commandWords("写入后读回的值不同，请重试");
    }
    return result;
}

// --- actions -----------------------------------------------------------------------------------------------

Result runAction(const CommandContext& context, const QString& name, bool (CameraSp::*action)()) {
    const ReportScope scope;
    (context.camera.*action)();
    if (!scope.report().succeeded())
        return failureOf(name, scope.report());
    return {ExitCode::done, {}, name + commandWords("：") + reportWords(scope.report()), {}};
}

Result runDoor(const CommandContext& context) {
    const bool opens = context.options.command.opens;
    const ReportScope scope;
    context.camera.opDoor(opens);
    const QString name = opens ? commandWords("模拟开门") : commandWords("模拟关门");
    if (!scope.report().succeeded())
        return failureOf(name, scope.report());
    return {ExitCode::done, {}, name + commandWords("：") + reportWords(scope.report()), {}};
}

// --- check-up ----------------------------------------------------------------------------------------------

Result runCheck(const CommandContext& context) {
    QStringList lines;
    const QDateTime began = QDateTime::currentDateTime();
    service::Checkup checkup = service::runCheckup(
        context.camera, context.options.type, context.quality, [&](const service::CheckLine& line) {
            const ReadValue& value = line.value;
            lines.append(
                QStringLiteral("%1  %2%3%4%5")
                    .arg(service::verdictWords(value.verdict), line.reading->translatedTitle(),
                         commandWords("："), value.text,
                         value.reason.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(value.reason)));
            context.tell(lines.back());
        });
    if (context.camera.stopRequested())
        return failureOf(commandWords("检查"), {CommandEnd::stopped});
    checkup.at = began;
    checkup.port = QString::fromStdString(context.port);
    checkup.address = context.options.usedAddress();
    if (context.options.command.takesPicture)
        service::takeCheckupPicture(context.camera, checkup);
    Result result;
    result.fields = service::checkupJson(checkup);
    lines.append(commandWords("结论：%1").arg(service::verdictWords(checkup.verdict())));
    result.text = lines.join(QLatin1Char('\n'));
    if (checkup.verdict() == service::Verdict::failed) {
        result.code = ExitCode::refused;
        result.error = commandWords("有失败的项目，请按其原因处理后再检查");
    }
    if (context.camera.portFailed())
        return failureOf(commandWords("检查"), {CommandEnd::portFailed});
    if (checkup.isSilent())
        result = failureOf(commandWords("检查"), {CommandEnd::noAnswer});
    if (const QString path = context.fileFor(QString::fromStdString(context.options.command.file));
        !path.isEmpty() && !checkup.isSilent()) {
        if (const QString error = service::writeReport(checkup, path); !error.isEmpty())
            return failure(ExitCode::file, error);
        result.fields.insert(QLatin1String("report"), path);
    }
    return result;
}

} // namespace

QString CommandContext::portName() const {
    return QFileInfo(QString::fromStdString(port)).fileName();
}

QString CommandContext::fileFor(const QString& path) const {
    if (!severalPorts || path.isEmpty())
        return path;
    const QFileInfo file(path);
    return file.dir().filePath(
        QStringLiteral("%1-%2.%3").arg(file.completeBaseName(), portName(), file.suffix()));
}

Result failureOf(const QString& what, const CommandReport& report) {
    return failure(std::max(exitCodeOf(report.end), ExitCode::refused),
                   what + commandWords("：") + reportWords(report));
}

Result runCommand(const CommandContext& context) {
    const Command& command = context.options.command;
    if (const Setting* const setting = settingOf(command.verb))
        return runSetting(context, *setting);
    switch (command.verb) {
    case Verb::heartbeat:
        return readAll(context, {"heartbeat"});
    case Verb::versions:
        return readVersions(context);
    case Verb::model:
        return readAll(context, {"model"});
    case Verb::orientation:
        return readAll(context, {"orientation"});
    case Verb::gyro:
        return testGyro(context);
    case Verb::capture:
    case Verb::listPictures:
    case Verb::getPicture:
    case Verb::getAllPictures:
    case Verb::deletePicture:
    case Verb::deleteAllPictures:
        return runPictureCommand(context);
    case Verb::upload:
        return runUpload(context);
    case Verb::reboot:
        return runAction(context, commandWords("重启摄像头"), &CameraSp::rebootCamera);
    case Verb::factoryReset:
        return runAction(context, commandWords("恢复出厂设置"), &CameraSp::resetToFactory);
    case Verb::door:
        return runDoor(context);
    case Verb::check:
        return runCheck(context);
    case Verb::conform:
        return runConform(context);
    default:
        break;
    }
    return failure(ExitCode::usage, commandWords("没有命令"));
}

} // namespace cli
