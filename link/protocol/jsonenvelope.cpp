#include "link/protocol/jsonenvelope.h"

#include "link/protocol/crc16.h"

#include <stdexcept>

namespace protocol {

namespace {

std::uint64_t statedJsonSize(ByteView answer) {
    return std::uint64_t{swapped(answer.get(json_answer::bigEndianCount))} + json_answer::uncounted;
}

std::string_view asText(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.begin()), bytes.size()};
}

std::uint16_t countOf(std::uint16_t bodyLength) {
    return swapped(static_cast<std::uint16_t>(bodyLength + json_layout::countExtra));
}

void appendWithCheckCode(Bytes& envelope, ByteView body) {
    append(envelope, body);
    put(envelope, Field<std::uint16_t>{envelope.size()}, crc16Modbus(envelope));
}

} // namespace

const AnswerForm jsonForm{json_layout::start1, json_layout::start2, &statedJsonSize};

Bytes buildJsonRequest(std::string_view json) {
    using namespace json_request;
    const auto length = static_cast<std::uint16_t>(json.size());
    Bytes request;
    request.reserve(text + json.size() + frame_layout::checkCodeSize);
    put(request, start1, json_layout::start1);
    put(request, start2, json_layout::start2);
    put(request, bigEndianCount, countOf(length));
    put(request, magic, json_layout::magic);
    put(request, kind, json_layout::kind);
    put(request, textLength, length);
    appendWithCheckCode(request, bytesOf(json));
    return request;
}

Bytes buildJsonAnswer(ByteView body) {
    using namespace json_answer;
    const auto length = static_cast<std::uint16_t>(body.size());
    Bytes answer;
    put(answer, start1, json_layout::start1);
    put(answer, start2, json_layout::start2);
    put(answer, bigEndianCount, countOf(length));
    put(answer, magic, json_layout::magic);
    put(answer, kind, json_layout::kind);
    put(answer, bodyLength, length);
    appendWithCheckCode(answer, body);
    return answer;
}

ByteView jsonText(ByteView request) {
    const ByteView fields = withoutCheckCode(request);
    return fields.range(json_request::text, fields.size());
}

ByteView jsonBody(ByteView answer) {
    const ByteView fields = withoutCheckCode(answer);
    return fields.range(json_answer::body, fields.size());
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
