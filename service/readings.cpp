#include "service/readings.h"

#include "link/protocol/commands.h"
#include "link/protocol/text.h"
#include "service/reportwords.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>

namespace service {

namespace {

using namespace std::chrono_literals;
using protocol::CameraType;
using protocol::PictureCommands;
using protocol::PropertyId;

constexpr auto pauseBetweenQuantities = 100ms; // the camera needs it between two requests
constexpr unsigned highestPercent = 100;

QString readingText(const char* text) {
    return QCoreApplication::translate("Readings", text);
}

ReadValue failed(const CommandReport& report) {
    return {Verdict::failed, {}, {}, reportWords(report), report.end};
}

ReadValue good(const QJsonValue& value, const QString& text) {
    return {Verdict::good, value, text, {}, CommandEnd::done};
}

ReadValue odd(const QJsonValue& value, const QString& text, const QString& reason) {
    return {Verdict::odd, value, text, reason, CommandEnd::done};
}

/// The failure, or what `describe` makes of the value.
template <typename Command, typename Describe>
ReadValue readWith(Command command, Describe describe) {
    const ReportScope scope;
    const auto value = command();
    if (!scope.report().succeeded())
        return failed(scope.report());
    return describe(value);
}

ReadValue readHeartbeat(CameraSp& camera, CameraType) {
    return readWith([&] { return camera.testHeartBeat(); },
                    [](bool) { return good(true, readingText("有应答")); });
}

ReadValue describeText(const std::string& bytes) {
    const QString text = cameraWords(bytes);
    if (text.isEmpty())
        return odd(text, text, readingText("摄像头没有返回内容"));
    return good(text, text);
}

template <auto command>
ReadValue readText(CameraSp& camera, CameraType) {
    return readWith([&] { return (camera.*command)(); }, &describeText);
}

ReadValue describeJsonVersion(const std::string& answer) {
    const QJsonObject object = QJsonDocument::fromJson(QByteArray::fromStdString(answer)).object();
    const QJsonValue inner = object.value(QLatin1String("result")).toObject().value(QLatin1String("version"));
    const QString version = object.value(QLatin1String("version")).toVariant().toString();
    const QString text = version.isEmpty() ? inner.toVariant().toString() : version;
    if (text.isEmpty())
        return odd(cameraWords(answer), cameraWords(answer), readingText("应答里没有版本号"));
    return good(text, text);
}

ReadValue readAppVersion(CameraSp& camera, CameraType type) {
    if (protocol::infoOf(type).pictures == PictureCommands::json)
        return readWith([&] { return camera.getQuentaModbusProperty({}); }, &describeJsonVersion);
    return readText<&CameraSp::getAppVersion>(camera, type);
}

using Bytes = std::vector<std::uint8_t>;

ReadValue readProperty(CameraSp& camera, PropertyId id, std::size_t size,
                       ReadValue (*describe)(const Bytes& value)) {
    return readWith(
        [&] { return camera.getCommonProperty(code(id), code(protocol::Command::getProperty)); },
        [&](const Bytes& value) {
            if (value.size() < size)
                return ReadValue{Verdict::failed, {}, {}, readingText("应答太短"), CommandEnd::unusable};
            return describe(value);
        });
}

ReadValue describePercent(const Bytes& value) {
    const int number = value[0];
    const QString text = QString::number(number);
    if (value[0] > highestPercent)
        return odd(number, text, readingText("不是 0 到 100 的百分比"));
    return good(number, text);
}

ReadValue describeAngles(const Bytes& value) {
    return good(QJsonArray{value[0], value[1]}, QStringLiteral("%1, %2").arg(value[0]).arg(value[1]));
}

ReadValue describeDirection(const Bytes& value) {
    const bool clockwise = value[0] == 1;
    return good(QLatin1String(clockwise ? "clockwise" : "anticlockwise"),
                clockwise ? readingText("顺时针") : readingText("逆时针"));
}

ReadValue describeSwitch(const Bytes& value) {
    const bool on = value[0] == 1;
    return good(on, on ? readingText("开启") : readingText("关闭"));
}

template <PropertyId id, std::size_t size, ReadValue (*describe)(const Bytes&)>
ReadValue readSetting(CameraSp& camera, CameraType) {
    return readProperty(camera, id, size, describe);
}

/// The quantities one after the other, as the camera gives them.
ReadValue readOrientation(CameraSp& camera, CameraType) {
    constexpr std::array keys{"pitch", "roll", "yaw", "acceleration"};
    const std::array titles{readingText("仰俯角"), readingText("横滚角"), readingText("偏航角"),
                            readingText("加速度")};
    static_assert(keys.size() == protocol::orientation_value::quantities);
    const LineTurn::Hold order = camera.takeReadings();
    QJsonObject object;
    QStringList texts;
    bool complete = true;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto now = camera.clock().now();
        const std::size_t place = camera.quantities().next(keys.size(), now);
        camera.quantities().advance(keys.size(), now);
        const ReportScope scope;
        const Bytes value =
            camera.getCommonProperty(code(PropertyId::orientation), code(protocol::Command::getProperty));
        if (!scope.report().succeeded())
            return failed(scope.report());
        const std::optional<std::uint32_t> quantity = protocol::orientation_value::quantityOf(value);
        object.insert(QLatin1String(keys.at(place)),
                      quantity ? QJsonValue(static_cast<qint64>(*quantity)) : QJsonValue());
        texts.append(QStringLiteral("%1 %2").arg(titles.at(place), quantity ? QString::number(*quantity)
                                                                            : readingText("不支持")));
        complete = complete && quantity.has_value();
        camera.pause(pauseBetweenQuantities);
    }
    const QString text = texts.join(readingText("，"));
    return complete ? good(object, text) : odd(object, text, readingText("摄像头不能给出全部方位值"));
}

ReadValue readGyroTest(CameraSp& camera, CameraType) {
    namespace gyro = protocol::gyro_test;
    return readWith(
        [&] {
            return camera.getCommonPropertyWithoutParse(gyro::property, code(protocol::Command::gyroTest),
                                                        gyro::timeoutMs, gyro::readSize);
        },
        [](const Bytes& answer) {
            const std::string text(answer.begin(), answer.end());
            if (text == gyro::passed)
                return good(true, readingText("通过"));
            return odd(false, readingText("没有通过"),
                       readingText("陀螺仪自检没有通过：%1").arg(cameraWords(text)));
        });
}

QJsonObject jsonOf(const protocol::PictureInfo& picture) {
    const QByteArrayView digest(picture.digest.data(), static_cast<qsizetype>(picture.digest.size()));
    return {{"id", picture.id},
            {"size", static_cast<qint64>(picture.fileSize)},
            {"time", static_cast<qint64>(picture.creationTime)},
            {"md5", QString::fromLatin1(digest.toByteArray().toHex())}};
}

ReadValue readPictures(CameraSp& camera, CameraType type) {
    if (protocol::infoOf(type).pictures == PictureCommands::json)
        return good(QJsonArray(), readingText("该类型没有图片列表"));
    return readWith([&] { return readCatalogue(camera, type); },
                    [](const std::vector<protocol::PictureInfo>& pictures) {
                        QJsonArray list;
                        for (const protocol::PictureInfo& picture : pictures)
                            list.append(jsonOf(picture));
                        return good(list, readingText("%1 张").arg(list.size()));
                    });
}

// clang-format off
constexpr std::array table{
    Reading{"heartbeat",     QT_TRANSLATE_NOOP("Readings", "心跳"),         &readHeartbeat, false},
    Reading{"appVersion",    QT_TRANSLATE_NOOP("Readings", "SDK版本"),      &readAppVersion, false},
    Reading{"systemVersion", QT_TRANSLATE_NOOP("Readings", "系统版本"),     &readText<&CameraSp::getSystemVersion>},
    Reading{"qvVersion",     QT_TRANSLATE_NOOP("Readings", "QV-APP版本"),   &readText<&CameraSp::getQvVersion>},
    Reading{"model",         QT_TRANSLATE_NOOP("Readings", "模型信息"),     &readText<&CameraSp::getModelInfo>},
    Reading{"serialNumber",  QT_TRANSLATE_NOOP("Readings", "序列号"),       &readText<&CameraSp::getSn>},
    Reading{"heater",        QT_TRANSLATE_NOOP("Readings", "加热丝占空比"), &readSetting<PropertyId::heaterDuty, 1, &describePercent>},
    Reading{"compression",   QT_TRANSLATE_NOOP("Readings", "图片压缩率"),   &readSetting<PropertyId::compressionRate, 1, &describePercent>},
    Reading{"angles",        QT_TRANSLATE_NOOP("Readings", "抓图角度"),     &readSetting<PropertyId::captureAngles, 2, &describeAngles>},
    Reading{"direction",     QT_TRANSLATE_NOOP("Readings", "抓图方向"),     &readSetting<PropertyId::captureDirection, 1, &describeDirection>},
    Reading{"gyroState",     QT_TRANSLATE_NOOP("Readings", "陀螺仪开关"),   &readSetting<PropertyId::gyroSwitch, 1, &describeSwitch>},
    Reading{"orientation",   QT_TRANSLATE_NOOP("Readings", "安装位置"),     &readOrientation},
    Reading{"gyroTest",      QT_TRANSLATE_NOOP("Readings", "陀螺仪自检"),   &readGyroTest},
    Reading{"pictures",      QT_TRANSLATE_NOOP("Readings", "图片列表"),     &readPictures},
};
// clang-format on

} // namespace

bool Reading::isKnownTo(CameraType type) const {
    return !framesOnly || protocol::infoOf(type).pictures != PictureCommands::json;
}

QString Reading::translatedTitle() const {
    return readingText(title);
}

std::span<const Reading> readings() {
    return table;
}

const Reading* readingOf(std::string_view key) {
    const auto* const found = std::find_if(table.begin(), table.end(),
                                           [key](const Reading& reading) { return key == reading.key; });
    return found == table.end() ? nullptr : found;
}

std::vector<protocol::PictureInfo> readCatalogue(CameraSp& camera, CameraType type) {
    const PictureCommands commands = protocol::infoOf(type).pictures;
    if (commands == PictureCommands::json)
        return {};
    const bool v1 = commands == PictureCommands::v1;
    const protocol::RecordForm& form = v1 ? protocol::v1RecordForm : protocol::originRecordForm;
    std::vector<protocol::PictureInfo> pictures;
    for (const protocol::RecordBytes& record : v1 ? camera.getPicInfosV1() : camera.getOriginPicInfos())
        pictures.push_back(
            form.parse(protocol::ByteView(std::span<const std::uint8_t>(record.get(), form.size))));
    return pictures;
}

QString cameraWords(std::string_view bytes) {
    const std::string_view text = protocol::untilZero(bytes);
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace service
