#include "conform/profilewriter.h"

#include "conform/checkfunctions.h"
#include "link/protocol/frame.h"

#include <algorithm>
#include <set>

namespace conform {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

std::string inMs(microseconds time) {
    return std::to_string(std::chrono::round<milliseconds>(time).count());
}

/// "least median 95 %" of times in rising order.
std::string delayText(const std::vector<microseconds>& rising) {
    return inMs(rising.front()) + ' ' + inMs(quantile(rising, medianPercent)) + ' ' +
           inMs(quantile(rising, mostPercent));
}

void addDelays(trace::Profile& profile, const Evidence& evidence) {
    std::vector<microseconds> all;
    for (const ReadingRequest& request : evidence.requests) {
        const auto delays = evidence.delays(request.name);
        if (delays.empty())
            continue;
        profile.add("delay", std::string(request.name) + ' ' + delayText(delays));
        all.insert(all.end(), delays.begin(), delays.end());
    }
    std::sort(all.begin(), all.end());
    if (!all.empty())
        profile.add("delay", "any " + delayText(all));
}

bool isPlain(const Bytes& bytes) {
    constexpr std::uint8_t firstPrintable = 0x20;
    constexpr std::uint8_t lastPrintable = 0x7E;
    return !bytes.empty() && bytes.front() != firstPrintable && bytes.back() != firstPrintable &&
           std::all_of(bytes.begin(), bytes.end(),
                       [](std::uint8_t byte) { return byte >= firstPrintable && byte <= lastPrintable; });
}

void addAnswer(trace::Profile& profile, std::string_view request, const Bytes& bytes, bool text) {
    const std::string name(request);
    if (text && isPlain(bytes))
        profile.add("text", name + ' ' + ByteView(bytes).toText());
    else
        profile.add("value", bytes.empty() ? name : name + ' ' + protocol::paddedHexText(bytes));
}

void addValues(trace::Profile& profile, const Evidence& evidence) {
    for (const ReadingRequest& request : evidence.requests) {
        const Exchange* const exchange = exampleOf(evidence, request.name);
        if (exchange == nullptr || !exchange->isAnswered())
            continue;
        const Bytes payload = payloadIn(exchange);
        const bool isProperty = request.family == Family::setting || request.family == Family::text;
        if (isProperty && ByteView(payload).has(protocol::property_answer::result))
            addAnswer(profile, request.name,
                      ByteView(payload).range(protocol::property_answer::value, payload.size()).toBytes(),
                      request.family == Family::text);
        else if (request.family == Family::gyro)
            addAnswer(profile, request.name, exchange->answer(), true);
        else if (request.family == Family::json && !payload.empty())
            addAnswer(profile, request.name, payload, true);
    }
    if (const std::string orientation = orientationText(evidence); !orientation.empty())
        profile.add("orientation", orientation);
    constexpr std::size_t mostPictures = 200;
    if (const auto count = pictureCount(evidence))
        profile.add("pictures", std::to_string(std::min(*count, mostPictures)));
}

void addDifferences(trace::Profile& profile, const std::vector<Result>& results) {
    std::set<std::pair<std::string, std::string>> added;
    for (const Result& result : results) {
        const Finding& finding = result.finding;
        for (const auto& entry : finding.profile) {
            if (added.insert(entry).second)
                profile.add(entry.first, entry.second);
        }
        const bool repeated = !finding.profile.empty() || result.check->kind == Kind::values ||
                              result.check->kind == Kind::orientation || result.check->kind == Kind::times ||
                              result.check->kind == Kind::tool;
        if (finding.outcome == Outcome::different && !repeated)
            profile.remark("not repeated: " + std::string(result.check->name) + ' ' + finding.detail);
    }
}

} // namespace

trace::Profile profileOf(const Evidence& evidence, const std::vector<Result>& results) {
    const protocol::CameraTypeInfo& type = protocol::infoOf(evidence.plan.type);
    trace::Profile profile;
    profile.add("type", std::string(type.optionName));
    if (evidence.plan.address != type.usualAddress)
        profile.add("address", std::to_string(evidence.plan.address));
    if (evidence.baudRate != type.baudRate)
        profile.add("baud", std::to_string(evidence.baudRate));
    addDelays(profile, evidence);
    addValues(profile, evidence);
    addDifferences(profile, results);
    return profile;
}

} // namespace conform
