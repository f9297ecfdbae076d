// Checks of unusual requests, times, the catalogue, JSON, and of what only some visits see.
#include "conform/checkfunctions.h"
#include "link/protocol/jsonenvelope.h"
#include "link/protocol/picturerecords.h"
#include "trace/jsontext.h"

#include <QCryptographicHash>

#include <algorithm>
#include <set>

namespace conform {

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

const Exchange* onlyOne(const Evidence& evidence, std::string_view name) {
    const auto found = evidence.named(name);
    return found.empty() ? nullptr : found.front();
}

// --- the catalogue -----------------------------------------------------------------------------------------

bool isV1(const Evidence& evidence) {
    return protocol::infoOf(evidence.plan.type).pictures == protocol::PictureCommands::v1;
}

std::string_view catalogueName(const Evidence& evidence) {
    return isV1(evidence) ? "catalogueV1" : "catalogue";
}

struct Catalogue {
    const Exchange* exchange = nullptr;
    std::uint8_t count = 0;
    std::vector<protocol::PictureInfo> pictures;
    bool wholeRecords = true;
};

/// The first complete one; nothing without a record count.
std::optional<Catalogue> catalogueIn(const Evidence& evidence) {
    const protocol::RecordForm& form = isV1(evidence) ? protocol::v1RecordForm : protocol::originRecordForm;
    Catalogue catalogue;
    catalogue.exchange = exampleOf(evidence, catalogueName(evidence));
    const Bytes payload = payloadIn(catalogue.exchange);
    if (payload.empty())
        return std::nullopt;
    catalogue.count = payload.front();
    const ByteView records = ByteView(payload).range(1, payload.size());
    for (std::size_t at = 0; at + form.size <= records.size(); at += form.size)
        catalogue.pictures.push_back(form.parse(records.range(at, at + form.size)));
    catalogue.wholeRecords = records.size() % form.size == 0;
    return catalogue;
}

using PictureTest = bool (*)(const protocol::PictureInfo& picture);

Finding everyPicture(const Evidence& evidence, PictureTest test) {
    const auto catalogue = catalogueIn(evidence);
    if (!catalogue || catalogue->pictures.empty())
        return {};
    for (const protocol::PictureInfo& picture : catalogue->pictures) {
        if (!test(picture))
            return differentFinding(catalogue->exchange, "id " + std::to_string(picture.id));
    }
    return goodFinding(catalogue->exchange);
}

// --- JSON --------------------------------------------------------------------------------------------------

/// A complete envelope and its bytes; nothing without one.
std::optional<std::pair<const Exchange*, Inspection>> envelopeIn(const Evidence& evidence) {
    const Exchange* const exchange = exampleOf(evidence, "jsonProperty");
    if (exchange == nullptr)
        return std::nullopt;
    const Inspection found = inspect(*exchange);
    if (!found.isComplete() || found.body.size() < protocol::json_answer::head.body)
        return std::nullopt;
    return std::pair(exchange, found);
}

std::string jsonTextOf(const Inspection& found) {
    return ByteView(found.payload).toText();
}

Finding judged(bool good, const Exchange* proof, const std::string& detail = {}) {
    return good ? goodFinding(proof) : differentFinding(proof, detail);
}

} // namespace

// --- unusual requests --------------------------------------------------------------------------------------

Finding silentTo(const Evidence& evidence, std::string_view name, const char* profileKey) {
    const Exchange* const exchange = onlyOne(evidence, name);
    if (exchange == nullptr)
        return {};
    if (!exchange->isAnswered())
        return goodFinding(exchange);
    Finding finding = differentFinding(exchange);
    finding.profile.emplace_back(profileKey, "on");
    return finding;
}

Finding heartbeatTo(const Evidence& evidence, std::string_view name) {
    const Exchange* const exchange = onlyOne(evidence, name);
    return exchange == nullptr ? Finding() : judged(exchange->isAnswered(), exchange);
}

Finding refusalTo(const Evidence& evidence, std::string_view name) {
    const Exchange* const exchange = onlyOne(evidence, name);
    if (exchange == nullptr)
        return {};
    const Bytes payload = payloadIn(exchange);
    const bool refused =
        ByteView(payload).has(protocol::property_answer::result) &&
        ByteView(payload).get(protocol::property_answer::result) != protocol::answer_result::success;
    Finding finding = judged(refused, exchange, protocol::paddedHexText(payload));
    if (!exchange->isAnswered())
        finding.profile.emplace_back("unknown-ids", "off");
    return finding;
}

Finding answersWhileBusy(const Evidence& evidence) {
    const Exchange* const exchange = onlyOne(evidence, probe::busy);
    if (exchange == nullptr || !exchange->isAnswered())
        return {};
    const Bytes answer = exchange->answer();
    const Bytes heartbeat = protocol::buildFrame(code(protocol::Command::heartbeat), Bytes{0}, 0);
    const auto head =
        ByteView(heartbeat).range(protocol::frame_layout::command.offset, protocol::frame_layout::headerSize);
    const auto place = std::search(answer.begin(), answer.end(), head.begin(), head.end());
    Finding finding = judged(place != answer.end(), exchange);
    // answersAtOnce tells a longer time.
    if (finding.outcome == Outcome::different && answersAtOnce(evidence).outcome != Outcome::different)
        finding.profile.emplace_back("rest", "1");
    return finding;
}

Finding answersAtOnce(const Evidence& evidence) {
    const auto tries = evidence.named(probe::atOnce);
    if (tries.empty())
        return {};
    if (tries.front()->isAnswered())
        return goodFinding(tries.front());
    Finding finding = differentFinding(tries.front());
    for (std::size_t i = 1; i < tries.size(); ++i) {
        if (!tries[i]->isAnswered())
            continue;
        finding.detail = std::to_string(restsTried.at(i).count()) + " ms";
        finding.profile.emplace_back("rest", std::to_string(restsTried.at(i).count()));
        return finding;
    }
    return finding;
}

Finding inTime(const Evidence& evidence, bool (*concerns)(const ReadingRequest& request)) {
    Finding finding;
    for (const ReadingRequest& request : evidence.requests) {
        const auto delays = evidence.delays(request.name);
        if (!concerns(request) || delays.empty())
            continue;
        const auto slow = std::chrono::round<milliseconds>(quantile(delays, mostPercent));
        finding.detail +=
            (finding.detail.empty() ? "" : ", ") + std::string(request.name) + ' ' +
            std::to_string(std::chrono::round<milliseconds>(delays.front()).count()) + '/' +
            std::to_string(std::chrono::round<milliseconds>(quantile(delays, medianPercent)).count()) + '/' +
            std::to_string(slow.count()) + " ms";
        if (finding.proof == nullptr)
            finding.proof = exampleOf(evidence, request.name);
        const bool good = slow <= milliseconds(request.firstReadMs);
        if (finding.outcome != Outcome::different)
            finding.outcome = good ? Outcome::good : Outcome::different;
    }
    return finding;
}

Finding quiet(const Evidence& evidence, std::string_view name) {
    const Exchange* const exchange = onlyOne(evidence, name);
    if (exchange == nullptr)
        return {};
    return judged(!exchange->isAnswered(), exchange, protocol::paddedHexText(exchange->answer()));
}

// --- the catalogue -----------------------------------------------------------------------------------------

std::optional<std::size_t> pictureCount(const Evidence& evidence) {
    const auto catalogue = catalogueIn(evidence);
    return catalogue ? std::optional(catalogue->pictures.size()) : std::nullopt;
}

Finding catalogueSize(const Evidence& evidence) {
    const Exchange* const exchange = exampleOf(evidence, catalogueName(evidence));
    if (exchange == nullptr || !inspect(*exchange).isComplete())
        return {};
    const auto catalogue = catalogueIn(evidence);
    if (catalogue && catalogue->wholeRecords)
        return goodFinding(exchange);
    const std::string size = std::to_string(payloadIn(exchange).size());
    Finding finding = differentFinding(exchange, size + " bytes");
    finding.profile.emplace_back("fault", "payload=" + size + '@' + std::string(catalogueName(evidence)));
    return finding;
}

Finding catalogueCount(const Evidence& evidence) {
    const auto catalogue = catalogueIn(evidence);
    if (!catalogue || !catalogue->wholeRecords)
        return {};
    if (catalogue->count == static_cast<std::uint8_t>(catalogue->pictures.size()))
        return goodFinding(catalogue->exchange);
    const std::string count = std::to_string(catalogue->count);
    Finding finding = differentFinding(catalogue->exchange, count);
    finding.profile.emplace_back("fault", "count=" + count + '@' + std::string(catalogueName(evidence)));
    return finding;
}

Finding catalogueOrder(const Evidence& evidence) {
    const auto catalogue = catalogueIn(evidence);
    if (!catalogue || catalogue->pictures.size() < 2)
        return {};
    const auto earlier = [](const auto& a, const auto& b) { return a.creationTime < b.creationTime; };
    const auto& pictures = catalogue->pictures;
    const bool rises = std::is_sorted(pictures.begin(), pictures.end(), earlier);
    const bool falls = std::is_sorted(pictures.rbegin(), pictures.rend(), earlier);
    const bool newestFirst = isV1(evidence);
    if (newestFirst ? falls : rises)
        return goodFinding(catalogue->exchange);
    Finding finding = differentFinding(catalogue->exchange);
    if (newestFirst ? rises : falls)
        finding.profile.emplace_back("newest-first", newestFirst ? "off" : "on");
    return finding;
}

Finding catalogueIds(const Evidence& evidence) {
    const auto catalogue = catalogueIn(evidence);
    if (!catalogue || catalogue->pictures.empty())
        return {};
    std::set<std::uint16_t> ids;
    for (const protocol::PictureInfo& picture : catalogue->pictures) {
        const bool all = picture.id == (isV1(evidence) ? protocol::v1DeleteAll : protocol::originDeleteAll);
        if (all || !ids.insert(picture.id).second)
            return differentFinding(catalogue->exchange, "id " + std::to_string(picture.id));
    }
    return goodFinding(catalogue->exchange);
}

Finding catalogueSizes(const Evidence& evidence) {
    return everyPicture(evidence, [](const protocol::PictureInfo& picture) { return picture.fileSize > 0; });
}

Finding catalogueDigests(const Evidence& evidence) {
    return everyPicture(evidence, [](const protocol::PictureInfo& picture) {
        return std::any_of(picture.digest.begin(), picture.digest.end(),
                           [](std::uint8_t byte) { return byte != 0; });
    });
}

Finding catalogueFits(const Evidence& evidence) {
    const auto catalogue = catalogueIn(evidence);
    if (!catalogue)
        return {};
    const protocol::ExchangeRule& rule =
        isV1(evidence) ? protocol::rules::getPicInfosV1 : protocol::rules::getOriginPicInfos;
    const std::size_t most = std::size_t{rule.readSize} * static_cast<std::size_t>(rule.tries);
    const std::size_t size = catalogue->exchange->answer().size();
    return judged(size <= most, catalogue->exchange, std::to_string(size) + " bytes");
}

// --- JSON --------------------------------------------------------------------------------------------------

Finding jsonHead(const Evidence& evidence) {
    const auto envelope = envelopeIn(evidence);
    if (!envelope)
        return {};
    constexpr protocol::JsonHead head = protocol::json_answer::head;
    const ByteView bytes(envelope->second.body);
    return judged(bytes.get(head.magic) == protocol::json_layout::magic &&
                      bytes.get(head.kind) == protocol::json_layout::kind,
                  envelope->first);
}

Finding jsonBodyLength(const Evidence& evidence) {
    const auto envelope = envelopeIn(evidence);
    if (!envelope)
        return {};
    const std::uint16_t length = ByteView(envelope->second.body).get(protocol::json_answer::head.bodyLength);
    return judged(length == envelope->second.payload.size(), envelope->first, std::to_string(length));
}

Finding jsonObject(const Evidence& evidence) {
    const auto envelope = envelopeIn(evidence);
    if (!envelope)
        return {};
    return judged(trace::readJsonObject(jsonTextOf(envelope->second)).has_value(), envelope->first);
}

Finding jsonResult(const Evidence& evidence) {
    const auto envelope = envelopeIn(evidence);
    const auto values = envelope ? trace::readJsonObject(jsonTextOf(envelope->second)) : std::nullopt;
    if (!values)
        return {};
    const auto result = values->find("result");
    return judged(result != values->end() && result->second == "0", envelope->first,
                  result == values->end() ? "" : result->second);
}

Finding jsonVersion(const Evidence& evidence) {
    const auto envelope = envelopeIn(evidence);
    const auto values = envelope ? trace::readJsonObject(jsonTextOf(envelope->second)) : std::nullopt;
    if (!values)
        return {};
    const auto version = values->find("version");
    return judged(version != values->end() && !version->second.empty(), envelope->first);
}

// --- the tool, pictures, uploads ---------------------------------------------------------------------------

Finding toolReads(const Evidence& evidence) {
    Finding finding;
    for (const ToolReading& reading : evidence.toolReadings) {
        if (finding.outcome == Outcome::notSeen)
            finding.outcome = Outcome::good;
        if (reading.succeeded)
            continue;
        finding.outcome = Outcome::different;
        finding.detail += (finding.detail.empty() ? "" : ", ") + reading.key;
    }
    return finding;
}

Finding pictureTaken(const Evidence& evidence) {
    return evidence.picture ? judged(evidence.picture->taken, exampleOf(evidence, probe::capture))
                            : Finding();
}

Finding pictureIsJpeg(const Evidence& evidence) {
    if (!evidence.picture || !evidence.picture->taken)
        return {};
    static const Bytes begins{0xFF, 0xD8};
    static const Bytes ends{0xFF, 0xD9};
    const Bytes& jpeg = evidence.picture->jpeg;
    const bool good = jpeg.size() >= begins.size() + ends.size() &&
                      std::equal(begins.begin(), begins.end(), jpeg.begin()) &&
                      std::equal(ends.rbegin(), ends.rend(), jpeg.rbegin());
    return judged(good, exampleOf(evidence, probe::capture), std::to_string(jpeg.size()) + " bytes");
}

Finding pictureDigest(const Evidence& evidence) {
    if (!evidence.picture || !evidence.picture->taken || evidence.picture->digest.empty())
        return {};
    const Bytes& jpeg = evidence.picture->jpeg;
    const QByteArray digest = QCryptographicHash::hash(
        QByteArrayView(jpeg.data(), static_cast<qsizetype>(jpeg.size())), QCryptographicHash::Md5);
    return judged(Bytes(digest.begin(), digest.end()) == evidence.picture->digest,
                  exampleOf(evidence, probe::capture));
}

Finding uploadSucceeded(const Evidence& evidence) {
    return evidence.upload ? judged(evidence.upload->succeeded, exampleOf(evidence, probe::upload))
                           : Finding();
}

Finding returnsAfterUpload(const Evidence& evidence) {
    if (!evidence.upload || !evidence.upload->succeeded)
        return {};
    const auto after = evidence.upload->returnedAfter;
    Finding finding = judged(after.has_value(), exampleOf(evidence, probe::returning));
    if (after) {
        finding.detail = std::to_string(after->count()) + " ms";
        finding.profile.emplace_back("restart-time", std::to_string(after->count()));
    }
    return finding;
}

Finding quietAfterPowerOn(const Evidence& evidence) {
    if (!evidence.upload || !evidence.upload->returnedAfter)
        return {};
    Bytes said;
    const Exchange* proof = nullptr;
    for (const Exchange* const exchange : evidence.named(probe::returning)) {
        const Bytes answer = exchange->answer();
        constexpr std::size_t heartbeat = protocol::frameOverhead + 1;
        const bool isLast = exchange == evidence.named(probe::returning).back();
        const std::size_t size = answer.size() - (isLast ? std::min(answer.size(), heartbeat) : 0);
        protocol::append(said, ByteView(answer).range(0, size));
        if (size > 0 || proof == nullptr)
            proof = exchange;
    }
    const std::string text = protocol::paddedHexText(said);
    Finding finding = judged(said.empty(), proof, text);
    if (!said.empty())
        finding.profile.emplace_back("boot-bytes", text);
    return finding;
}

} // namespace conform
