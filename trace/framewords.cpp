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

std::string count(std::size_t bytes, std::string_view of) {
    return number(bytes) + ' ' + std::string(of) + (bytes == 1 ? " byte" : " bytes");
}

std::string byteText(std::uint8_t value) {
    return hexText(Bytes{value});
}

bool isText(ByteView bytes) {
    return !bytes.empty() &&
           std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t c) { return c >= 0x20 && c < 0x7F; });
}

/// Text up to its first zero byte where it is text, else hexadecimal digits.
std::string valueText(ByteView value) {
    const auto length = static_cast<std::size_t>(std::find(value.begin(), value.end(), 0) - value.begin());
    const ByteView text = value.range(0, length);
    return value.size() > 1 && isText(text) ? '"' + text.toText() + '"' : hexText(value);
}

std::string resultText(std::uint8_t result) {
    return result == answer_result::success ? "success" : "refused with result " + byteText(result);
}

std::string propertyWords(ByteView answer) {
    const ByteView payload = payloadOf(answer);
    std::string text = "id " + byteText(payload.get(property_answer::id)) + ", " +
                       resultText(payload.get(property_answer::result));
    if (const ByteView value = propertyValue(answer); !value.empty())
        text += ", value " + valueText(value);
    return text;
}

std::string recordWords(ByteView answer, const RecordForm& form) {
    const std::vector<ByteView> records = catalogueRecords(answer, form.size);
    std::string text = number(records.size()) + (records.size() == 1 ? " picture" : " pictures");
    for (const ByteView record : records) {
        const PictureInfo info = form.parse(record);
        text += "; id " + number(info.id) + ", " + number(info.fileSize) + " bytes";
    }
    return text;
}

std::string transferWords(ByteView answer) {
    const ByteView payload = payloadOf(answer);
    return resultText(payload.get(status_answer::status)) + ", " +
           count(payload.range(status_answer::data, payload.size()).size(), "picture");
}

std::string captureWords(ByteView answer) {
    const ByteView payload = payloadOf(answer);
    std::string text = resultText(payload.get(status_answer::status));
    if (const ByteView rest = payload.range(status_answer::data, payload.size()); !rest.empty())
        text += ", rest " + hexText(rest);
    return text;
}

std::uint8_t uploadResult(ByteView payload, bool named) {
    return payload.get(named ? named_answer::result : image_answer::status);
}

std::string announcedWords(ByteView payload, bool named) {
    const std::uint8_t status = uploadResult(payload, named);
    const bool ready = status == answer_result::success;
    std::string text = ready ? "ready" : "not ready, status " + byteText(status);
    if (named)
        text += ", type " + byteText(payload.get(named_answer::type));
    const auto offset = named ? named_answer::offset : image_answer::offset;
    return text + ", to go on from byte " + number(payload.get(offset));
}

std::string uploadWords(ByteView answer, bool named, bool verdict) {
    const ByteView payload = payloadOf(answer);
    return verdict ? "verdict: " + resultText(uploadResult(payload, named)) : announcedWords(payload, named);
}

std::string answerWords(ByteView answer, std::uint16_t code, bool verdict) {
    if (payloadOf(answer).empty())
        return "no payload";
    const auto command = static_cast<Command>(code);
    switch (command) {
    case Command::heartbeat:
        return isHeartbeatAnswer(answer) ? "the camera is there" : "not the answer of a heartbeat";
    case Command::getProperty:
    case Command::setProperty:
    case Command::getInfo:
        return propertyWords(answer);
    case Command::originCapture:
    case Command::captureV1:
        return captureWords(answer);
    case Command::originCatalogue:
        return recordWords(answer, originRecordForm);
    case Command::catalogueV1:
        return recordWords(answer, v1RecordForm);
    case Command::originRead:
    case Command::readV1:
        return transferWords(answer);
    case Command::appAnnounce:
    case Command::firewareAnnounce:
    case Command::modelAnnounce:
    case Command::appV1Announce:
        return uploadWords(answer, isNamed(command), verdict);
    case Command::resetToFactory:
    case Command::reboot:
    case Command::originDelete:
    case Command::deleteV1:
    case Command::appV1Packet:
        return resultText(payloadOf(answer).get(status_answer::status));
    case Command::callers:
    case Command::json:
    case Command::gyroTest:
    case Command::door:
        break;
    }
    return "payload " + hexText(payloadOf(answer));
}

std::string announcementWords(ByteView payload, bool named) {
    const auto size = named ? named_announcement::fileSize : announcement::fileSize;
    std::string text = number(payload.get(size)) + " bytes";
    if (named && payload.size() > named_announcement::name)
        text += " named \"" + payload.range(named_announcement::name, payload.size()).toText() + '"';
    return text;
}

std::string requestWords(ByteView frame, std::uint16_t code) {
    const ByteView payload = payloadOf(frame);
    const auto command = static_cast<Command>(code);
    switch (command) {
    case Command::originRead:
        return "id " + number(payload.get(origin_read_request::id)) + ", " +
               number(payload.get(origin_read_request::length)) + " bytes";
    case Command::readV1:
        return "id " + number(payload.get(v1_read_request::id)) + ", " +
               number(payload.get(v1_read_request::length)) + " bytes";
    case Command::appAnnounce:
    case Command::firewareAnnounce:
    case Command::modelAnnounce:
    case Command::appV1Announce:
        return announcementWords(payload, isNamed(command));
    default:
        return payload.empty() ? "" : hexText(payload);
    }
}

std::string frameMeaning(const LineItem& item, std::uint16_t code) {
    try {
        return item.from == Side::tool ? requestWords(item.bytes, code)
                                       : answerWords(item.bytes, code, item.uploadCode != 0);
    } catch (const ShortAnswer&) {
        return "too short for this command";
    }
}

std::string frameWords(const LineItem& item, std::uint8_t pictureOffset) {
    const ByteView frame(item.bytes);
    if (frame.size() < frameOverhead)
        return "damaged frame with an impossible length: " + hexText(frame);
    const RequestKey key = requestKeyOf(item, pictureOffset);
    const RequestName* name = nameOf(key);
    const std::string words = name == nullptr ? "unknown command" : std::string(name->words);
    std::string text = (item.from == Side::tool ? "" : "answer to: ") + words + " (" +
                       byteText(frame.get(frame_layout::command)) + "), address " +
                       byteText(frame.get(frame_layout::address)) + ", " +
                       count(payloadOf(frame).size(), "payload") + ", check code " +
                       (item.kind == LineItem::Kind::frame ? "right" : "WRONG");
    const std::string meaning = frameMeaning(item, key.code);
    return meaning.empty() ? text : text + ": " + meaning;
}

std::string jsonWords(const LineItem& item) {
    const ByteView bytes(item.bytes);
    const ByteView body = item.from == Side::tool ? jsonText(bytes) : jsonBody(bytes);
    const ByteView data = item.from == Side::tool ? ByteView() : jsonPictureData(body);
    std::string text = body.range(0, body.size() - data.size()).toText();
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 0x20)
            c = '?'; // keeps the text on one line
    }
    const RequestName* name = item.from == Side::tool ? nameOf(requestKeyOf(item, 0)) : nullptr;
    std::string words = item.from == Side::camera ? "JSON answer" : std::string(name->words);
    words += ", " + count(body.size(), "body") + ", check code " +
             (item.kind == LineItem::Kind::json ? "right" : "WRONG") + ": " + text;
    if (!data.empty())
        words += " and " + count(data.size(), "picture");
    return words;
}

std::string strayWords(const LineItem& item) {
    const ByteView bytes(item.bytes);
    return number(bytes.size()) + " bytes outside any frame: " +
           (isText(bytes) && bytes.size() > 1 ? '"' + bytes.toText() + '"' : hexText(bytes));
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

std::string wordsOf(const LineItem& item, std::uint8_t pictureOffset) {
    switch (item.kind) {
    case LineItem::Kind::frame:
    case LineItem::Kind::badFrame:
        return frameWords(item, pictureOffset);
    case LineItem::Kind::json:
    case LineItem::Kind::badJson:
        return jsonWords(item);
    case LineItem::Kind::stray:
        return strayWords(item);
    case LineItem::Kind::data:
        return "upload data, " + number(item.bytes.size()) + " of " + number(item.expected) + " bytes" +
               (item.bytes.size() == item.expected ? "" : ", broken off");
    case LineItem::Kind::brokenOff:
        return "broken off after " + number(item.bytes.size()) + " bytes: " + hexText(item.bytes);
    }
    return {};
}

} // namespace trace
