#include "link/protocol/jsonenvelope.h"

#include "link/protocol/crc16.h"

#include <stdexcept>

namespace protocol {

namespace {

namespace request_layout {
constexpr Field<std::uint8_t> start1{0};
constexpr Field<std::uint8_t> start2{1};
constexpr Field<std::uint16_t> bigEndianCount{10};
constexpr Field<std::uint32_t> magic{12};
constexpr Field<std::uint16_t> kind{16};
constexpr Field<std::uint16_t> textLength{18};
constexpr std::size_t headerSize = 20;
static_assert(textLength.end() == headerSize);
} // namespace request_layout

namespace answer_envelope {
constexpr Field<std::uint16_t> bigEndianCount{2};
constexpr std::size_t countedFrom = 6; // the count leaves out the first four bytes and the check code
constexpr std::size_t body = 12;
} // namespace answer_envelope

constexpr std::uint8_t jsonStart1 = 0x01;
constexpr std::uint8_t jsonStart2 = 0x17;
constexpr std::uint32_t envelopeMagic = 0xFAFBFCFD;
constexpr std::uint16_t envelopeKind = 0x0064;
constexpr std::size_t countExtra = 8;

constexpr std::string_view pictureMarker = "<<BINARY>>";
constexpr std::string_view sizeKey = "\"size\":";

constexpr std::string_view propertyQuery = R"({"timestamp":1,"seqNum":1,"cmdType":145,"info":""})";
constexpr std::string_view chunkTemplate =
    R"({"timestamp":0,"seqNum":0,"cmdType":156,"subType":0,"info":{"open_count":10,"angle":9,"offset":0,"length":500}})";

std::uint16_t swapped(std::uint16_t value) {
    return static_cast<std::uint16_t>((value << 8) | (value >> 8));
}

std::uint64_t statedJsonSize(ByteView answer) {
    return std::uint64_t{swapped(answer.get(answer_envelope::bigEndianCount))} + answer_envelope::countedFrom;
}

std::string_view asText(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.begin()), bytes.size()};
}

/// The text, which has the key, with the digits after it replaced; blanks before them stay.
std::string withNumber(const std::string& text, std::string_view key, std::int64_t number) {
    const std::size_t first = text.find_first_not_of(' ', text.find(key) + key.size());
    const std::size_t start = std::min(first, text.size());
    const std::size_t stop = std::min(text.find_first_not_of("0123456789", start), text.size());
    return text.substr(0, start) + std::to_string(number) + text.substr(stop);
}

} // namespace

const AnswerForm jsonForm{jsonStart1, jsonStart2, &statedJsonSize};

Bytes buildJsonRequest(std::string_view json) {
    const auto length = static_cast<std::uint16_t>(json.size());
    Bytes request;
    request.reserve(request_layout::headerSize + json.size() + frame_layout::checkCodeSize);
    put(request, request_layout::start1, jsonStart1);
    put(request, request_layout::start2, jsonStart2);
    put(request, request_layout::bigEndianCount, swapped(static_cast<std::uint16_t>(length + countExtra)));
    put(request, request_layout::magic, envelopeMagic);
    put(request, request_layout::kind, envelopeKind);
    put(request, request_layout::textLength, length);
    append(request, bytesOf(json));
    put(request, Field<std::uint16_t>{request.size()}, crc16Modbus(request));
    return request;
}

ByteView jsonBody(ByteView answer) {
    return answer.range(answer_envelope::body,
                        answer.size() - std::min(answer.size(), frame_layout::checkCodeSize));
}

ByteView jsonPictureData(ByteView body) {
    const std::size_t marker = asText(body).find(pictureMarker);
    return marker == std::string_view::npos ? ByteView()
                                            : body.range(marker + pictureMarker.size(), body.size());
}

std::optional<int> jsonPictureSize(ByteView body) {
    const std::string_view text = asText(body);
    const std::size_t key = text.find(sizeKey);
    if (key == std::string_view::npos)
        return std::nullopt;
    try {
        return std::stoi(std::string(text.substr(key + sizeKey.size())));
    } catch (const std::logic_error&) { // no number, or one beyond int
        return std::nullopt;
    }
}

std::string_view jsonPropertyQuery() {
    return propertyQuery;
}

std::string jsonChunkRequest(std::int64_t offset, std::int64_t length) {
    const std::string withOffset = withNumber(std::string(chunkTemplate), "\"offset\":", offset);
    return withNumber(withOffset, "\"length\":", length);
}

} // namespace protocol
