#include "conform/inspection.h"

#include "link/protocol/crc16.h"
#include "link/protocol/jsonenvelope.h"

#include <algorithm>

namespace conform {

namespace {

using namespace protocol;
using std::chrono::milliseconds;

/// Place of the first start of this form; the size without one.
std::size_t startIn(ByteView bytes, const AnswerForm& form) {
    std::size_t at = 0;
    while (at < bytes.size() && (bytes.size() - at < 2 || !startsAs(bytes.range(at, bytes.size()), form)))
        ++at;
    return at;
}

Inspection::CheckCode checkCode(ByteView whole, std::uint16_t expected) {
    const std::uint16_t code = whole.get(checkCodeOf(whole.size()));
    return code == expected ? Inspection::CheckCode::right
           : code == 0      ? Inspection::CheckCode::zero
                            : Inspection::CheckCode::wrong;
}

bool isFrame(ByteView bytes) {
    return bytes.size() >= frameOverhead &&
           checkCode(bytes, crc16Xmodem(withoutCheckCode(bytes))) == Inspection::CheckCode::right;
}

/// A length field that does not fit is told from missing and stray bytes by the check code.
void inspectFrame(Inspection& found, ByteView rest) {
    if (!rest.has(frame_layout::payloadLength)) {
        found.body = rest.toBytes();
        found.missing = frameOverhead - rest.size();
        return;
    }
    const std::uint64_t stated = frameForm.statedSize(rest);
    std::size_t size = static_cast<std::size_t>(std::min<std::uint64_t>(stated, rest.size()));
    const bool fits = stated < rest.size() && isFrame(rest.range(0, size));
    if (stated != rest.size() && !fits && isFrame(rest)) {
        found.lengthOff = static_cast<std::int64_t>(stated) - static_cast<std::int64_t>(rest.size());
        size = rest.size();
    } else if (stated > rest.size()) {
        found.missing = static_cast<std::size_t>(stated - rest.size());
    }
    const ByteView frame = rest.range(0, size);
    found.body = frame.toBytes();
    found.behind = rest.range(size, rest.size()).toBytes();
    if (found.missing > 0)
        return;
    found.check = checkCode(frame, crc16Xmodem(withoutCheckCode(frame)));
    found.payload = payloadOf(frame).toBytes();
}

/// The envelope states its size twice.
void inspectJson(Inspection& found, ByteView rest) {
    constexpr JsonHead head = json_answer::head;
    found.body = rest.toBytes();
    if (!rest.has(head.bodyLength)) {
        found.missing = head.body - rest.size();
        return;
    }
    const std::uint64_t stated = jsonForm.statedSize(rest);
    const std::uint64_t expected =
        head.body + std::uint64_t{rest.get(head.bodyLength)} + frame_layout::checkCodeSize;
    if (stated != expected && expected == rest.size())
        found.lengthOff = static_cast<std::int64_t>(stated) - static_cast<std::int64_t>(expected);
    else if (stated > rest.size())
        found.missing = static_cast<std::size_t>(stated - rest.size());
    if (found.missing > 0)
        return;
    const auto size = static_cast<std::size_t>(found.lengthOff != 0 ? expected : stated);
    found.body = rest.range(0, size).toBytes();
    found.behind = rest.range(size, rest.size()).toBytes();
    found.payload = jsonBody(found.body).toBytes();
    if (found.lengthOff == 0)
        found.check = checkCode(found.body, crc16Modbus(withoutCheckCode(found.body)));
}

std::string hex(std::uint8_t byte) {
    return "0x" + paddedHexText(Bytes{byte});
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

std::optional<std::string> differentByte(const char* fault, std::uint8_t found, std::uint8_t expected) {
    return found == expected ? std::nullopt : std::optional(fault + hex(found));
}

bool isFramed(const Inspection& found) {
    return found.hasStart && !found.isJson && ByteView(found.body).has(frame_layout::command);
}

} // namespace

Inspection inspect(const Exchange& exchange) {
    Inspection found;
    found.isJson = startsAs(exchange.request, jsonForm);
    const Bytes answer = exchange.answer();
    const ByteView bytes(answer);
    const std::size_t start = startIn(bytes, found.isJson ? jsonForm : frameForm);
    found.before = bytes.range(0, start).toBytes();
    found.hasStart = start < bytes.size();
    if (!found.hasStart)
        return found;
    const ByteView rest = bytes.range(start, bytes.size());
    if (found.isJson)
        inspectJson(found, rest);
    else
        inspectFrame(found, rest);
    return found;
}

std::optional<std::string> noAnswer(const Exchange& exchange, const Inspection& /*found*/) {
    return exchange.isAnswered() ? std::nullopt : std::optional<std::string>("silent");
}

std::optional<std::string> bytesBefore(const Exchange& /*exchange*/, const Inspection& found) {
    if (found.before.empty())
        return std::nullopt;
    return (found.hasStart ? "before=" : "raw=") + upper(paddedHexText(found.before));
}

std::optional<std::string> bytesBehind(const Exchange& /*exchange*/, const Inspection& found) {
    if (found.behind.empty())
        return std::nullopt;
    if (found.behind == found.body)
        return "glue";
    return "stray=" + std::to_string(found.behind.size());
}

std::optional<std::string> bytesMissing(const Exchange& /*exchange*/, const Inspection& found) {
    return found.missing == 0 ? std::nullopt : std::optional("truncate=" + std::to_string(found.missing));
}

std::optional<std::string> wrongLength(const Exchange& /*exchange*/, const Inspection& found) {
    if (found.lengthOff == 0)
        return std::nullopt;
    return std::string("length=") + (found.lengthOff > 0 ? "+" : "") + std::to_string(found.lengthOff);
}

std::optional<std::string> wrongAddress(const Exchange& exchange, const Inspection& found) {
    if (!isFramed(found))
        return std::nullopt;
    return differentByte("address=", ByteView(found.body).get(frame_layout::address),
                         ByteView(exchange.request).get(frame_layout::address));
}

std::optional<std::string> wrongCommand(const Exchange& exchange, const Inspection& found) {
    if (!isFramed(found))
        return std::nullopt;
    return differentByte("command=", ByteView(found.body).get(frame_layout::command),
                         ByteView(exchange.request).get(frame_layout::command));
}

std::optional<std::string> wrongCheckCode(const Exchange& /*exchange*/, const Inspection& found) {
    switch (found.check) {
    case Inspection::CheckCode::zero:
        return "zero-check";
    case Inspection::CheckCode::wrong:
        return "bad-check";
    default:
        return std::nullopt;
    }
}

std::optional<std::string> pauseInside(const Exchange& exchange, const Inspection& /*found*/) {
    if (exchange.pieces.size() < 2)
        return std::nullopt;
    const Piece& first = exchange.pieces.front();
    const auto pause = std::chrono::round<milliseconds>(exchange.pieces[1].first - first.first).count();
    return "split=" + std::to_string(first.bytes.size()) + ',' + std::to_string(pause);
}

std::optional<std::string> shortPayload(const Exchange& /*exchange*/, const Inspection& found) {
    if (!found.isComplete() || ByteView(found.payload).has(property_answer::result))
        return std::nullopt;
    if (found.payload == Bytes{answer_result::failure})
        return "refuse";
    return "payload=" + std::to_string(found.payload.size());
}

std::optional<std::string> wrongId(const Exchange& exchange, const Inspection& found) {
    const Bytes asked = payloadOf(exchange.request).toBytes();
    if (!ByteView(found.payload).has(property_answer::result) || asked.empty())
        return std::nullopt;
    return differentByte("echo=", ByteView(found.payload).get(property_answer::id), asked.front());
}

std::optional<std::string> failure(const Exchange& /*exchange*/, const Inspection& found) {
    if (!ByteView(found.payload).has(property_answer::result))
        return std::nullopt;
    return differentByte("result=", ByteView(found.payload).get(property_answer::result),
                         answer_result::success);
}

std::optional<std::string> wrongStatus(const Exchange& /*exchange*/, const Inspection& found) {
    if (!found.isComplete())
        return std::nullopt;
    if (found.payload.size() != status_answer::data)
        return "payload=" + std::to_string(found.payload.size());
    return differentByte("result=", found.payload.front(), heartbeatAlive);
}

} // namespace conform
