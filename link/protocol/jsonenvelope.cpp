#include "link/protocol/jsonenvelope.h"

#include "link/protocol/crc16.h"

#include <stdexcept>

namespace protocol {

namespace {

std::uint64_t statedJsonSize(ByteView answer) {
    return std::uint64_t{swapped(answer.get(json_answer::head.bigEndianCount))} + json_answer::uncounted;
}

std::string_view asText(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.begin()), bytes.size()};
}

Bytes buildEnvelope(const JsonHead& head, ByteView body) {
    const auto length = static_cast<std::uint16_t>(body.size());
    Bytes envelope;
    envelope.reserve(head.body + body.size() + frame_layout::checkCodeSize);
    put(envelope, frame_layout::start1, json_layout::start1);
    put(envelope, frame_layout::start2, json_layout::start2);
    put(envelope, head.bigEndianCount, swapped(static_cast<std::uint16_t>(length + json_layout::countExtra)));
    put(envelope, head.magic, json_layout::magic);
    put(envelope, head.kind, json_layout::kind);
    put(envelope, head.bodyLength, length);
    append(envelope, body);
    put(envelope, Field<std::uint16_t>{envelope.size()}, crc16Modbus(envelope));
    return envelope;
}

} // namespace

const AnswerForm jsonForm{json_layout::start1, json_layout::start2, &statedJsonSize};

Bytes buildJsonRequest(std::string_view json) {
    return buildEnvelope(json_request::head, bytesOf(json));
}

Bytes buildJsonAnswer(ByteView body) {
    return buildEnvelope(json_answer::head, body);
}

ByteView jsonText(ByteView request) {
    const ByteView fields = withoutCheckCode(request);
    return fields.range(json_request::head.body, fields.size());
}

ByteView jsonBody(ByteView answer) {
    const ByteView fields = withoutCheckCode(answer);
    return fields.range(json_answer::head.body, fields.size());
}

ByteView jsonPictureData(ByteView body) {
    const std::size_t marker = asText(body).find(jsonPictureMarker);
    return marker == std::string_view::npos ? ByteView()
                                            : body.range(marker + jsonPictureMarker.size(), body.size());
}

std::optional<int> jsonPictureSize(ByteView body) {
    const std::string_view text = asText(body);
    const std::size_t key = text.find(jsonSizeKey);
    if (key == std::string_view::npos)
        return std::nullopt;
    try {
        return std::stoi(std::string(text.substr(key + jsonSizeKey.size())));
    } catch (const std::logic_error&) { // no number, or one beyond int
        return std::nullopt;
    }
}

std::string jsonPropertyQuery() {
    return R"({"timestamp":1,"seqNum":1,"cmdType":)" + std::to_string(jsonPropertyType) + R"(,"info":""})";
}

std::string jsonChunkRequest(std::int64_t offset, std::int64_t length) {
    return R"({"timestamp":0,"seqNum":0,"cmdType":)" + std::to_string(jsonPictureType) +
           R"(,"subType":0,"info":{"open_count":10,"angle":9,"offset":)" + std::to_string(offset) +
           R"(,"length":)" + std::to_string(length) + "}}";
}

} // namespace protocol
