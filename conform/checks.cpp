#include "conform/checks.h"

#include "conform/checkfunctions.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace conform {

namespace {

using E = const Evidence&;

template <Family family>
bool isOf(const ReadingRequest& request) {
    return request.family == family;
}

// clang-format off
constexpr std::array table{
    Check{"answered",           QT_TRANSLATE_NOOP("Conform", "每个读取命令都有应答"), Kind::answers, &never<&noAnswer, &isAny>},
    Check{"start",              QT_TRANSLATE_NOOP("Conform", "应答的第一个字节就是帧头"), Kind::answers, &never<&bytesBefore, &hasForm>},
    Check{"end",                QT_TRANSLATE_NOOP("Conform", "应答后面没有多余的字节"), Kind::answers, &never<&bytesBehind, &hasForm>},
    Check{"complete",           QT_TRANSLATE_NOOP("Conform", "应答没有缺少字节"), Kind::answers, &never<&bytesMissing, &hasForm>},
    Check{"length",             QT_TRANSLATE_NOOP("Conform", "长度字段等于实际长度"), Kind::answers, &never<&wrongLength, &hasForm>},
    Check{"address",            QT_TRANSLATE_NOOP("Conform", "应答带有请求的从机地址"), Kind::answers, &never<&wrongAddress, &hasForm>},
    Check{"command",            QT_TRANSLATE_NOOP("Conform", "应答带有请求的命令码"), Kind::answers, &never<&wrongCommand, &hasForm>},
    Check{"check-code",         QT_TRANSLATE_NOOP("Conform", "应答的校验码正确"), Kind::answers, &never<&wrongCheckCode, &hasForm>},
    Check{"one-piece",          QT_TRANSLATE_NOOP("Conform", "应答中间没有停顿"), Kind::answers, &never<&pauseInside, &isAny>},
    Check{"heartbeat-status",   QT_TRANSLATE_NOOP("Conform", "心跳应答的内容是 01"), Kind::answers, &never<&wrongStatus, &isHeartbeat>},
    Check{"property-payload",   QT_TRANSLATE_NOOP("Conform", "属性应答有编号和结果"), Kind::answers, &never<&shortPayload, &hasId>},
    Check{"property-id",        QT_TRANSLATE_NOOP("Conform", "属性应答带有请求的编号"), Kind::answers, &never<&wrongId, &hasId>},
    Check{"property-result",    QT_TRANSLATE_NOOP("Conform", "属性应答的结果是 00"), Kind::answers, &never<&failure, &hasId>},

    Check{"app-version",        QT_TRANSLATE_NOOP("Conform", "SDK版本是 1 到 48 个可显示的字符"), Kind::values, [](E e) { return printableText(e, "getAppVersion"); }},
    Check{"system-version",     QT_TRANSLATE_NOOP("Conform", "系统版本是 1 到 48 个可显示的字符"), Kind::values, [](E e) { return printableText(e, "getSystemVersion"); }},
    Check{"serial-number",      QT_TRANSLATE_NOOP("Conform", "序列号是 1 到 64 个可显示的字符"), Kind::values, [](E e) { return printableText(e, "getSn"); }},
    Check{"qv-version",         QT_TRANSLATE_NOOP("Conform", "QV-APP版本是 1 到 63 个可显示的字符"), Kind::values, [](E e) { return printableText(e, "getQvVersion"); }},
    Check{"model",              QT_TRANSLATE_NOOP("Conform", "模型信息是 1 到 138 个可显示的字符"), Kind::values, [](E e) { return printableText(e, "getModelInfo"); }},
    Check{"compression",        QT_TRANSLATE_NOOP("Conform", "图片压缩率是一个字节，0 到 100"), Kind::values, [](E e) { return settingInRange(e, "getProperty:6", 0, 100); }},
    Check{"angles",             QT_TRANSLATE_NOOP("Conform", "抓图角度是两个字节"), Kind::values, [](E e) { return settingInRange(e, "getProperty:10", 0, 255); }},
    Check{"direction",          QT_TRANSLATE_NOOP("Conform", "抓图方向是一个字节，0 或 1"), Kind::values, [](E e) { return settingInRange(e, "getProperty:11", 0, 1); }},
    Check{"reserve",            QT_TRANSLATE_NOOP("Conform", "属性 12 是一个字节"), Kind::values, [](E e) { return settingInRange(e, "getProperty:12", 0, 255); }},
    Check{"gyro-switch",        QT_TRANSLATE_NOOP("Conform", "陀螺仪开关是一个字节，0 或 1"), Kind::values, [](E e) { return settingInRange(e, "getProperty:13", 0, 1); }},
    Check{"heater",             QT_TRANSLATE_NOOP("Conform", "加热丝占空比是一个字节，0 到 100"), Kind::values, [](E e) { return settingInRange(e, "getProperty:15", 0, 100); }},
    Check{"same-values",        QT_TRANSLATE_NOOP("Conform", "重复读取得到相同的值"), Kind::values, &valuesStay},
    Check{"gyro-test",          QT_TRANSLATE_NOOP("Conform", "陀螺仪自检的应答是没有帧的 3success"), Kind::values, &gyroPassed},

    Check{"orientation-size",   QT_TRANSLATE_NOOP("Conform", "方位值是四个字节"), Kind::orientation, &orientationSize},
    Check{"orientation-known",  QT_TRANSLATE_NOOP("Conform", "四个方位值都有数值"), Kind::orientation, &orientationKnown},
    Check{"orientation-round",  QT_TRANSLATE_NOOP("Conform", "第五次读取又是第一个方位值"), Kind::orientation, &orientationRepeats},
    Check{"orientation-pause",  QT_TRANSLATE_NOOP("Conform", "停顿 2.5 秒后又从第一个方位值开始"), Kind::orientation, &orientationBeginsAgain},
    Check{"orientation-order",  QT_TRANSLATE_NOOP("Conform", "四个方位值中最后一个最大：加速度"), Kind::orientation, &orientationOrder},

    Check{"foreign-address",    QT_TRANSLATE_NOOP("Conform", "不应答其他从机地址的心跳"), Kind::requests, [](E e) { return silentTo(e, probe::foreignAddress, "all-addresses"); }},
    Check{"request-check-code", QT_TRANSLATE_NOOP("Conform", "不应答校验码错误的心跳"), Kind::requests, [](E e) { return silentTo(e, probe::wrongCheckCode, "wrong-check-codes"); }},
    Check{"behind-garbage",     QT_TRANSLATE_NOOP("Conform", "应答前面有杂散字节的心跳"), Kind::requests, [](E e) { return heartbeatTo(e, probe::behindGarbage); }},
    Check{"two-pieces",         QT_TRANSLATE_NOOP("Conform", "应答分两段发来的心跳"), Kind::requests, [](E e) { return heartbeatTo(e, probe::inTwoPieces); }},
    Check{"unknown-id",         QT_TRANSLATE_NOOP("Conform", "拒绝读取未知的属性编号"), Kind::requests, [](E e) { return refusalTo(e, probe::unknownId); }},
    Check{"unknown-info",       QT_TRANSLATE_NOOP("Conform", "拒绝读取未知的信息编号"), Kind::requests, [](E e) { return refusalTo(e, probe::unknownInfo); }},
    Check{"short-request",      QT_TRANSLATE_NOOP("Conform", "不应答没有编号的属性读取"), Kind::requests, [](E e) { return silentTo(e, probe::shortRequest, "short-requests"); }},
    Check{"busy",               QT_TRANSLATE_NOOP("Conform", "忙于另一个命令时也应答心跳"), Kind::requests, &answersWhileBusy},
    Check{"at-once",            QT_TRANSLATE_NOOP("Conform", "应答之后马上可以发下一个请求"), Kind::requests, &answersAtOnce},

    Check{"time-heartbeat",     QT_TRANSLATE_NOOP("Conform", "95 % 的心跳应答在一次读取的时间内到达"), Kind::times, [](E e) { return inTime(e, &isOf<Family::heartbeat>); }},
    Check{"time-settings",      QT_TRANSLATE_NOOP("Conform", "95 % 的设置应答在一次读取的时间内到达"), Kind::times, [](E e) { return inTime(e, &isOf<Family::setting>); }},
    Check{"time-texts",         QT_TRANSLATE_NOOP("Conform", "95 % 的版本和序列号应答在一次读取的时间内到达"), Kind::times, [](E e) { return inTime(e, &isOf<Family::text>); }},
    Check{"time-orientation",   QT_TRANSLATE_NOOP("Conform", "95 % 的方位应答在一次读取的时间内到达"), Kind::times, [](E e) { return inTime(e, &isOf<Family::orientation>); }},
    Check{"time-gyro",          QT_TRANSLATE_NOOP("Conform", "95 % 的陀螺仪自检应答在一次读取的时间内到达"), Kind::times, [](E e) { return inTime(e, &isOf<Family::gyro>); }},
    Check{"time-catalogue",     QT_TRANSLATE_NOOP("Conform", "95 % 的图片列表应答在一次读取的时间内到达"), Kind::times, [](E e) { return inTime(e, &isOf<Family::catalogue>); }},
    Check{"time-json",          QT_TRANSLATE_NOOP("Conform", "95 % 的 JSON 应答在一次读取的时间内到达"), Kind::times, [](E e) { return inTime(e, &isOf<Family::json>); }},

    Check{"quiet-before",       QT_TRANSLATE_NOOP("Conform", "第一个请求之前线路安静"), Kind::line, [](E e) { return quiet(e, probe::quietBefore); }},
    Check{"quiet-after",        QT_TRANSLATE_NOOP("Conform", "最后一个应答之后线路安静"), Kind::line, [](E e) { return quiet(e, probe::quietAfter); }},

    Check{"catalogue-size",     QT_TRANSLATE_NOOP("Conform", "图片列表由数量和完整的记录组成"), Kind::catalogue, &catalogueSize},
    Check{"catalogue-count",    QT_TRANSLATE_NOOP("Conform", "图片列表的数量等于记录数"), Kind::catalogue, &catalogueCount},
    Check{"catalogue-order",    QT_TRANSLATE_NOOP("Conform", "图片列表按类型的时间顺序排列"), Kind::catalogue, &catalogueOrder},
    Check{"catalogue-ids",      QT_TRANSLATE_NOOP("Conform", "图片编号不重复"), Kind::catalogue, &catalogueIds},
    Check{"catalogue-sizes",    QT_TRANSLATE_NOOP("Conform", "每张图片都有大小"), Kind::catalogue, &catalogueSizes},
    Check{"catalogue-digests",  QT_TRANSLATE_NOOP("Conform", "每张图片都有 MD5"), Kind::catalogue, &catalogueDigests},
    Check{"catalogue-fits",     QT_TRANSLATE_NOOP("Conform", "工具能读完图片列表"), Kind::catalogue, &catalogueFits},

    Check{"json-head",          QT_TRANSLATE_NOOP("Conform", "JSON 应答带有 FD FC FB FA 64 00"), Kind::json, &jsonHead},
    Check{"json-body-length",   QT_TRANSLATE_NOOP("Conform", "JSON 应答的正文长度正确"), Kind::json, &jsonBodyLength},
    Check{"json-object",        QT_TRANSLATE_NOOP("Conform", "JSON 应答是一个 JSON 对象"), Kind::json, &jsonObject},
    Check{"json-result",        QT_TRANSLATE_NOOP("Conform", "JSON 应答的 result 是 0"), Kind::json, &jsonResult},
    Check{"json-version",       QT_TRANSLATE_NOOP("Conform", "JSON 应答里有版本号"), Kind::json, &jsonVersion},

    Check{"tool",               QT_TRANSLATE_NOOP("Conform", "工具能读取全部内容"), Kind::tool, &toolReads},

    Check{"picture",            QT_TRANSLATE_NOOP("Conform", "可以拍照并下载"), Kind::picture, &pictureTaken},
    Check{"picture-jpeg",       QT_TRANSLATE_NOOP("Conform", "图片是完整的 JPEG"), Kind::picture, &pictureIsJpeg},
    Check{"picture-digest",     QT_TRANSLATE_NOOP("Conform", "图片的 MD5 与列表相同"), Kind::picture, &pictureDigest},

    Check{"upload",             QT_TRANSLATE_NOOP("Conform", "可以升级应用"), Kind::upload, &uploadSucceeded},
    Check{"return",             QT_TRANSLATE_NOOP("Conform", "升级后一分钟内重新应答心跳"), Kind::upload, &returnsAfterUpload},
    Check{"power-on",           QT_TRANSLATE_NOOP("Conform", "通电后不主动发送"), Kind::upload, &quietAfterPowerOn},
};
// clang-format on

QString conformWords(const char* text) {
    return QCoreApplication::translate("Conform", text);
}

} // namespace

QString Check::translatedSentence() const {
    return conformWords(sentence);
}

std::span<const Check> checks() {
    return table;
}

QString kindWords(Kind kind) {
    static constexpr std::array words{
        QT_TRANSLATE_NOOP("Conform", "应答"),      QT_TRANSLATE_NOOP("Conform", "值"),
        QT_TRANSLATE_NOOP("Conform", "方位"),      QT_TRANSLATE_NOOP("Conform", "特殊请求"),
        QT_TRANSLATE_NOOP("Conform", "延时"),      QT_TRANSLATE_NOOP("Conform", "线路"),
        QT_TRANSLATE_NOOP("Conform", "图片列表"),  QT_TRANSLATE_NOOP("Conform", "JSON 信封"),
        QT_TRANSLATE_NOOP("Conform", "工具"),      QT_TRANSLATE_NOOP("Conform", "图片"),
        QT_TRANSLATE_NOOP("Conform", "升级和重启")};
    return conformWords(words.at(static_cast<std::size_t>(kind)));
}

QString outcomeWords(Outcome outcome) {
    static constexpr std::array words{QT_TRANSLATE_NOOP("Conform", "没有看到"),
                                      QT_TRANSLATE_NOOP("Conform", "符合"),
                                      QT_TRANSLATE_NOOP("Conform", "不同")};
    return conformWords(words.at(static_cast<std::size_t>(outcome)));
}

std::vector<Result> examine(const Evidence& evidence) {
    std::vector<Result> results;
    results.reserve(table.size());
    for (const Check& check : table)
        results.push_back({&check, check.look(evidence)});
    return results;
}

Finding goodFinding(const Exchange* proof, std::string detail) {
    return {Outcome::good, std::move(detail), proof, {}};
}

Finding differentFinding(const Exchange* proof, std::string detail) {
    return {Outcome::different, std::move(detail), proof, {}};
}

const Exchange* exampleOf(const Evidence& evidence, std::string_view name) {
    const std::vector<const Exchange*> all = evidence.named(name);
    const auto answered =
        std::find_if(all.begin(), all.end(), [](const Exchange* exchange) { return exchange->isAnswered(); });
    return answered != all.end() ? *answered : all.empty() ? nullptr : all.front();
}

Bytes payloadIn(const Exchange* exchange) {
    return exchange == nullptr ? Bytes() : inspect(*exchange).payload;
}

} // namespace conform
