// Checks of settings, texts and the orientation.
#include "conform/checkfunctions.h"
#include "link/protocol/frame.h"

#include <algorithm>
#include <limits>

namespace conform {

namespace {

namespace fields = protocol::property_answer;

/// Payloads of the complete answers with id and result.
std::vector<std::pair<const Exchange*, Bytes>> valuesOf(const Evidence& evidence, std::string_view name) {
    std::vector<std::pair<const Exchange*, Bytes>> values;
    for (const Exchange* const exchange : evidence.named(name)) {
        const Bytes payload = payloadIn(exchange);
        if (ByteView(payload).has(fields::result))
            values.emplace_back(exchange, ByteView(payload).range(fields::value, payload.size()).toBytes());
    }
    return values;
}

/// The first answered value that does not fit.
Finding everyValue(const Evidence& evidence, std::string_view name,
                   bool (*fits)(ByteView value, std::uint8_t least, std::uint8_t most), std::uint8_t least,
                   std::uint8_t most) {
    const ReadingRequest* const request = requestNamed(evidence.requests, name);
    if (request == nullptr)
        return {};
    Finding finding;
    for (const auto& [exchange, bytes] : valuesOf(evidence, name)) {
        const bool sized = bytes.size() >= request->shortest && bytes.size() <= request->longest;
        if (!sized)
            return differentFinding(exchange, std::to_string(bytes.size()) + " bytes");
        if (!fits(bytes, least, most))
            return differentFinding(exchange, protocol::paddedHexText(bytes));
        if (finding.proof == nullptr)
            finding = goodFinding(exchange);
    }
    return finding;
}

bool isInRange(ByteView bytes, std::uint8_t least, std::uint8_t most) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [=](std::uint8_t byte) { return byte >= least && byte <= most; });
}

struct Quantity {
    const Exchange* exchange = nullptr;
    Bytes value;

    [[nodiscard]] std::optional<std::uint32_t> number() const {
        return protocol::orientation_value::quantityOf(value);
    }
};

/// The reads before the others, see Visitor::readOrientation; empty if one was not answered.
std::vector<Quantity> orientationReads(const Evidence& evidence) {
    std::vector<Quantity> reads;
    const auto exchanges = evidence.named("getProperty:16");
    for (std::size_t i = 0; i < std::min(exchanges.size(), 3 * orientationRound); ++i) {
        const Bytes payload = payloadIn(exchanges[i]);
        if (!ByteView(payload).has(fields::result))
            return {};
        reads.push_back({exchanges[i], ByteView(payload).range(fields::value, payload.size()).toBytes()});
    }
    return reads.size() < 3 * orientationRound ? std::vector<Quantity>() : reads;
}

/// The reads from `first` on are those from the beginning.
Finding sameOrientation(const Evidence& evidence, std::size_t first, std::size_t count,
                        std::pair<std::string, std::string> ifNot) {
    const std::vector<Quantity> reads = orientationReads(evidence);
    if (reads.empty())
        return {};
    for (std::size_t i = 0; i < count; ++i) {
        if (reads[first + i].value == reads[i].value)
            continue;
        Finding finding = differentFinding(reads[first + i].exchange, std::to_string(first + i + 1));
        if (!ifNot.first.empty())
            finding.profile.push_back(std::move(ifNot));
        return finding;
    }
    return goodFinding(reads[first].exchange);
}

} // namespace

Finding settingInRange(const Evidence& evidence, std::string_view name, std::uint8_t least,
                       std::uint8_t most) {
    return everyValue(evidence, name, &isInRange, least, most);
}

Finding printableText(const Evidence& evidence, std::string_view name) {
    constexpr std::uint8_t firstPrintable = 0x20;
    constexpr std::uint8_t lastPrintable = 0x7E;
    return everyValue(evidence, name, &isInRange, firstPrintable, lastPrintable);
}

Finding valuesStay(const Evidence& evidence) {
    Finding finding;
    for (const ReadingRequest& request : evidence.requests) {
        if (request.family != Family::setting && request.family != Family::text)
            continue;
        const auto values = valuesOf(evidence, request.name);
        for (const auto& [exchange, bytes] : values) {
            if (bytes != values.front().second)
                return differentFinding(exchange, std::string(request.name));
            finding = goodFinding(exchange);
        }
    }
    return finding;
}

Finding gyroPassed(const Evidence& evidence) {
    const Exchange* const answered = exampleOf(evidence, "gyroTest");
    if (answered == nullptr || !answered->isAnswered())
        return {};
    const std::string text = ByteView(answered->answer()).toText();
    if (text == protocol::gyro_test::passed)
        return goodFinding(answered);
    return differentFinding(answered, protocol::paddedHexText(answered->answer()));
}

Finding orientationSize(const Evidence& evidence) {
    return settingInRange(evidence, "getProperty:16", 0, std::numeric_limits<std::uint8_t>::max());
}

Finding orientationKnown(const Evidence& evidence) {
    const std::vector<Quantity> reads = orientationReads(evidence);
    for (const Quantity& read : reads) {
        if (!read.number())
            return differentFinding(read.exchange, protocol::paddedHexText(read.value));
    }
    return reads.empty() ? Finding() : goodFinding(reads.front().exchange);
}

Finding orientationRepeats(const Evidence& evidence) {
    return sameOrientation(evidence, orientationRound, orientationRound - 1, {});
}

Finding orientationBeginsAgain(const Evidence& evidence) {
    constexpr std::size_t behindThePause = 2 * orientationRound - 1;
    constexpr const char* never = "600000"; // ms
    return sameOrientation(evidence, behindThePause, orientationRound, {"orientation-pause", never});
}

Finding orientationOrder(const Evidence& evidence) {
    const std::vector<Quantity> reads = orientationReads(evidence);
    if (reads.empty())
        return {};
    std::optional<std::uint32_t> largest;
    for (std::size_t i = 0; i < orientationRound; ++i) {
        const auto number = reads[i].number();
        if (!number)
            return {};
        if (!largest || *number > *largest)
            largest = number;
    }
    const Quantity& last = reads[orientationRound - 1];
    return last.number() == largest ? goodFinding(last.exchange)
                                    : differentFinding(last.exchange, orientationText(evidence));
}

std::string orientationText(const Evidence& evidence) {
    const std::vector<Quantity> reads = orientationReads(evidence);
    std::string text;
    for (std::size_t i = 0; i < orientationRound && i < reads.size(); ++i) {
        const auto number = reads[i].number();
        text += (i == 0 ? "" : " ") + (number ? std::to_string(*number) : std::string("unknown"));
    }
    return text;
}

} // namespace conform
