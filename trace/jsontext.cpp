#include "trace/jsontext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <limits>

namespace trace {

namespace {

using Values = std::map<std::string, std::string>;

void flatten(const QJsonValue& value, const std::string& path, Values& values) {
    const auto below = [&path](const std::string& name) { return path.empty() ? name : path + '.' + name; };
    if (value.isObject()) {
        const QJsonObject object = value.toObject();
        for (auto member = object.begin(); member != object.end(); ++member)
            flatten(member.value(), below(member.key().toStdString()), values);
    } else if (value.isArray()) {
        const QJsonArray list = value.toArray();
        for (qsizetype index = 0; index < list.size(); ++index)
            flatten(list.at(index), below(std::to_string(index)), values);
    } else {
        values[path] = value.isNull() ? "null" : value.toVariant().toString().toStdString();
    }
}

} // namespace

std::optional<Values> readJsonObject(std::string_view text) {
    const QJsonDocument document =
        QJsonDocument::fromJson(QByteArray(text.data(), static_cast<qsizetype>(text.size())));
    if (!document.isObject())
        return std::nullopt;
    Values values;
    flatten(document.object(), {}, values);
    return values;
}

std::optional<long long> jsonNumber(const Values& values, const std::string& path) {
    const auto found = values.find(path);
    if (found == values.end())
        return std::nullopt;
    bool whole = false;
    const long long number = QByteArray::fromStdString(found->second).toLongLong(&whole);
    return whole ? std::optional(number) : std::nullopt;
}

protocol::RequestKey jsonRequestKey(protocol::ByteView text) {
    protocol::RequestKey key{protocol::jsonCode, protocol::jsonCode, std::nullopt};
    const auto values = readJsonObject(text.toText());
    const auto type = values ? jsonNumber(*values, "cmdType") : std::nullopt;
    if (type && *type >= 0 && *type <= std::numeric_limits<std::uint16_t>::max())
        key.detail = static_cast<std::uint16_t>(*type);
    return key;
}

} // namespace trace
