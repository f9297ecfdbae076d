#include "trace/framewords.h"

#include "link/protocol/jsonenvelope.h"
#include "link/protocol/picturerecords.h"
#include "link/protocol/uploads.h"
#include "trace/hextext.h"
#include "trace/jsontext.h"

#include <algorithm>

namespace trace {

namespace {

using namespace protocol;

std::string number(std::uint64_t value) {
    return std::to_string(value);
}

std::string byteText(std::uint8_t value) {
    return hexText(Bytes{value});
}

bool isText(ByteView bytes) {
    return !bytes.empty() &&
           std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t c) { return c >= 0x20 && c < 0x7F; });
}

std::uint8_t uploadResult(ByteView payload, bool named) {
    return payload.get(named ? named_answer::result : image_answer::status);
}

/// The sentences of one language.
class Wording {
public:
    explicit Wording(Phrasebook phrasebook) : m_phrasebook(phrasebook) {}

    [[nodiscard]] std::string frame(const LineItem& item, std::uint8_t pictureOffset) const;
    [[nodiscard]] std::string json(const LineItem& item) const;
    [[nodiscard]] std::string stray(const LineItem& item) const;
    [[nodiscard]] std::string data(const LineItem& item) const;
    [[nodiscard]] std::string brokenOff(const LineItem& item) const;

private:
    /// The phrase with its values.
    [[nodiscard]] std::string say(std::string_view phrase,
                                  std::initializer_list<std::string> values = {}) const;
    /// "%1 payload byte" and "%1 payload bytes".
    [[nodiscard]] std::string count(std::size_t number, std::string_view one, std::string_view more) const;

    [[nodiscard]] std::string hex(ByteView bytes) const;
    [[nodiscard]] std::string value(ByteView value) const;
    [[nodiscard]] std::string result(std::uint8_t result) const;
    [[nodiscard]] std::string property(ByteView answer) const;
    [[nodiscard]] std::string records(ByteView answer, const RecordForm& form) const;
    [[nodiscard]] std::string transfer(ByteView answer) const;
    [[nodiscard]] std::string capture(ByteView answer) const;
    [[nodiscard]] std::string announced(ByteView payload, bool named) const;
    [[nodiscard]] std::string upload(ByteView answer, bool named, bool verdict) const;
    [[nodiscard]] std::string answer(ByteView answer, std::uint16_t code, bool verdict) const;
    [[nodiscard]] std::string announcement(ByteView payload, bool named) const;
    [[nodiscard]] std::string request(ByteView frame, std::uint16_t code) const;
    [[nodiscard]] std::string meaning(const LineItem& item, std::uint16_t code) const;

    Phrasebook m_phrasebook;
};

std::string Wording::say(std::string_view phrase, std::initializer_list<std::string> values) const {
    const std::string_view words = m_phrasebook(phrase);
    std::string text;
    for (std::size_t at = 0; at < words.size(); ++at) {
        const auto value = at + 1 < words.size() && words[at] == '%'
                               ? static_cast<std::size_t>(words[at + 1] - '1')
                               : values.size();
        if (value < values.size()) {
            text += *(values.begin() + value);
            ++at;
        } else {
            text += words[at];
        }
    }
    return text;
}

std::string Wording::count(std::size_t bytes, std::string_view one, std::string_view more) const {
    return say(bytes == 1 ? one : more, {number(bytes)});
}

std::string Wording::hex(ByteView bytes) const {
    if (bytes.size() <= longestHexText)
        return hexText(bytes);
    return say("%1 ... (%2 bytes)", {hexText(bytes.range(0, longestHexText)), number(bytes.size())});
}

/// Text up to its first zero byte where it is text, else hexadecimal digits.
std::string Wording::value(ByteView value) const {
    const auto length = static_cast<std::size_t>(std::find(value.begin(), value.end(), 0) - value.begin());
    const ByteView text = value.range(0, length);
    return value.size() > 1 && isText(text) ? '"' + text.toText() + '"' : hex(value);
}

std::string Wording::result(std::uint8_t result) const {
    return result == answer_result::success ? say("success")
                                            : say("refused with result %1", {byteText(result)});
}

std::string Wording::property(ByteView answer) const {
    const ByteView payload = payloadOf(answer);
    std::string text = say("id %1, %2", {byteText(payload.get(property_answer::id)),
                                         result(payload.get(property_answer::result))});
    if (const ByteView bytes = propertyValue(answer); !bytes.empty())
        text += say(", value %1", {value(bytes)});
    return text;
}

std::string Wording::records(ByteView answer, const RecordForm& form) const {
    const std::vector<ByteView> all = catalogueRecords(answer, form.size);
    std::string text = count(all.size(), "%1 picture", "%1 pictures");
    for (const ByteView record : all) {
        const PictureInfo info = form.parse(record);
        text += say("; id %1, %2 bytes", {number(info.id), number(info.fileSize)});
    }
    return text;
}

std::string Wording::transfer(ByteView answer) const {
    const ByteView payload = payloadOf(answer);
    const std::size_t size = payload.range(status_answer::data, payload.size()).size();
    return say("%1, %2", {result(payload.get(status_answer::status)),
                          count(size, "%1 picture byte", "%1 picture bytes")});
}

std::string Wording::capture(ByteView answer) const {
    const ByteView payload = payloadOf(answer);
    std::string text = result(payload.get(status_answer::status));
    if (const ByteView rest = payload.range(status_answer::data, payload.size()); !rest.empty())
        text += say(", rest %1", {hex(rest)});
    return text;
}

std::string Wording::announced(ByteView payload, bool named) const {
    const std::uint8_t status = uploadResult(payload, named);
    std::string text =
        status == answer_result::success ? say("ready") : say("not ready, status %1", {byteText(status)});
    if (named)
        text += say(", type %1", {byteText(payload.get(named_answer::type))});
    const auto offset = named ? named_answer::offset : image_answer::offset;
    return text + say(", to go on from byte %1", {number(payload.get(offset))});
}

std::string Wording::upload(ByteView answer, bool named, bool verdict) const {
    const ByteView payload = payloadOf(answer);
    return verdict ? say("verdict: %1", {result(uploadResult(payload, named))}) : announced(payload, named);
}

std::string Wording::answer(ByteView answer, std::uint16_t code, bool verdict) const {
    if (payloadOf(answer).empty())
        return say("no payload");
    const auto command = static_cast<Command>(code);
    switch (command) {
    case Command::heartbeat:
        return isHeartbeatAnswer(answer) ? say("the camera is there") : say("not the answer of a heartbeat");
    case Command::getProperty:
    case Command::setProperty:
    case Command::getInfo:
        return property(answer);
    case Command::originCapture:
    case Command::captureV1:
        return capture(answer);
    case Command::originCatalogue:
        return records(answer, originRecordForm);
    case Command::catalogueV1:
        return records(answer, v1RecordForm);
    case Command::originRead:
    case Command::readV1:
        return transfer(answer);
    case Command::appAnnounce:
    case Command::firewareAnnounce:
    case Command::modelAnnounce:
    case Command::appV1Announce:
        return upload(answer, isNamed(command), verdict);
    case Command::resetToFactory:
    case Command::reboot:
    case Command::originDelete:
    case Command::deleteV1:
    case Command::appV1Packet:
        return result(payloadOf(answer).get(status_answer::status));
    case Command::callers:
    case Command::json:
    case Command::gyroTest:
    case Command::door:
        break;
    }
    return say("payload %1", {hex(payloadOf(answer))});
}

std::string Wording::announcement(ByteView payload, bool named) const {
    const auto size = named ? named_announcement::fileSize : protocol::announcement::fileSize;
    std::string text = say("%1 bytes", {number(payload.get(size))});
    if (named && payload.size() > named_announcement::name)
        text += say(" named \"%1\"", {payload.range(named_announcement::name, payload.size()).toText()});
    return text;
}

std::string Wording::request(ByteView frame, std::uint16_t code) const {
    const ByteView payload = payloadOf(frame);
    const auto command = static_cast<Command>(code);
    switch (command) {
    case Command::originRead:
        return say("id %1, %2 bytes", {number(payload.get(origin_read_request::id)),
                                       number(payload.get(origin_read_request::length))});
    case Command::readV1:
        return say("id %1, %2 bytes",
                   {number(payload.get(v1_read_request::id)), number(payload.get(v1_read_request::length))});
    case Command::appAnnounce:
    case Command::firewareAnnounce:
    case Command::modelAnnounce:
    case Command::appV1Announce:
        return announcement(payload, isNamed(command));
    default:
        return payload.empty() ? "" : hex(payload);
    }
}

std::string Wording::meaning(const LineItem& item, std::uint16_t code) const {
    try {
        return item.from == Side::tool ? request(item.bytes, code)
                                       : answer(item.bytes, code, item.uploadCode != 0);
    } catch (const ShortAnswer&) {
        return say("too short for this command");
    }
}

std::string Wording::frame(const LineItem& item, std::uint8_t pictureOffset) const {
    const ByteView frame(item.bytes);
    if (frame.size() < frameOverhead)
        return say("damaged frame with an impossible length: %1", {hex(frame)});
    const RequestKey key = requestKeyOf(item, pictureOffset);
    const RequestName* name = nameOf(key);
    const std::string command = say(name == nullptr ? "unknown command" : name->words);
    const std::string text =
        say(item.kind == LineItem::Kind::frame ? "%1 (%2), address %3, %4, check code right"
                                               : "%1 (%2), address %3, %4, check code WRONG",
            {item.from == Side::tool ? command : say("answer to: %1", {command}),
             byteText(frame.get(frame_layout::command)), byteText(frame.get(frame_layout::address)),
             count(payloadOf(frame).size(), "%1 payload byte", "%1 payload bytes")});
    const std::string content = meaning(item, key.code);
    return content.empty() ? text : say("%1: %2", {text, content});
}

std::string Wording::json(const LineItem& item) const {
    const ByteView bytes(item.bytes);
    const ByteView body = item.from == Side::tool ? jsonText(bytes) : jsonBody(bytes);
    const ByteView data = item.from == Side::tool ? ByteView() : jsonPictureData(body);
    std::string text = body.range(0, body.size() - data.size()).toText();
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 0x20)
            c = '?'; // keeps the text on one line
    }
    const RequestName* name = item.from == Side::tool ? nameOf(requestKeyOf(item, 0)) : nullptr;
    const std::string words = say(item.kind == LineItem::Kind::json ? "%1, %2, check code right: %3"
                                                                    : "%1, %2, check code WRONG: %3",
                                  {say(item.from == Side::camera ? "JSON answer" : name->words),
                                   count(body.size(), "%1 body byte", "%1 body bytes"), text});
    return data.empty()
               ? words
               : say("%1 and %2", {words, count(data.size(), "%1 picture byte", "%1 picture bytes")});
}

std::string Wording::stray(const LineItem& item) const {
    const ByteView bytes(item.bytes);
    return say(
        "%1 bytes outside any frame: %2",
        {number(bytes.size()), isText(bytes) && bytes.size() > 1 ? '"' + bytes.toText() + '"' : hex(bytes)});
}

std::string Wording::data(const LineItem& item) const {
    return say(item.dataSize == item.expected ? "upload data, %1 of %2 bytes"
                                              : "upload data, %1 of %2 bytes, broken off",
               {number(item.dataSize), number(item.expected)});
}

std::string Wording::brokenOff(const LineItem& item) const {
    return say("broken off after %1 bytes: %2", {number(item.bytes.size()), hex(item.bytes)});
}

} // namespace

RequestKey requestKeyOf(const LineItem& item, std::uint8_t pictureOffset) {
    const ByteView bytes(item.bytes);
    if (item.kind == LineItem::Kind::json || item.kind == LineItem::Kind::badJson)
        return jsonRequestKey(jsonText(bytes));
    RequestKey key;
    if (!bytes.has(frame_layout::command))
        return key;
    const std::uint8_t lineCode = bytes.get(frame_layout::command);
    const auto base = static_cast<std::uint8_t>(lineCode - pictureOffset);
    key.lineCode = lineCode;
    key.code = isOriginPictureCode(base) ? base : lineCode;
    if (const ByteView payload = payloadOf(bytes); !payload.empty())
        key.detail = *payload.begin();
    return key;
}

std::string wordsOf(const LineItem& item, std::uint8_t pictureOffset, Phrasebook phrasebook) {
    const Wording wording(phrasebook);
    switch (item.kind) {
    case LineItem::Kind::frame:
    case LineItem::Kind::badFrame:
        return wording.frame(item, pictureOffset);
    case LineItem::Kind::json:
    case LineItem::Kind::badJson:
        return wording.json(item);
    case LineItem::Kind::stray:
        return wording.stray(item);
    case LineItem::Kind::data:
        return wording.data(item);
    case LineItem::Kind::brokenOff:
        return wording.brokenOff(item);
    }
    return {};
}

} // namespace trace
