// The functions of the table of checks.
#pragma once

#include "conform/checks.h"
#include "conform/inspection.h"

namespace conform {

[[nodiscard]] Finding goodFinding(const Exchange* proof, std::string detail = {});
[[nodiscard]] Finding differentFinding(const Exchange* proof, std::string detail = {});
/// The first answered exchange of this name, or the first; null without one.
[[nodiscard]] const Exchange* exampleOf(const Evidence& evidence, std::string_view name);
/// Payload of a complete answer; empty else.
[[nodiscard]] Bytes payloadIn(const Exchange* exchange);

// framechecks.cpp
/// The deviation in the answers of all requests that it concerns: a difference names them.
[[nodiscard]] Finding everyAnswer(const Evidence& evidence, Deviation deviation,
                                  bool (*concerns)(const ReadingRequest& request));
[[nodiscard]] bool isAny(const ReadingRequest& request);
[[nodiscard]] bool hasForm(const ReadingRequest& request); ///< frame or envelope
[[nodiscard]] bool hasId(const ReadingRequest& request);
[[nodiscard]] bool isHeartbeat(const ReadingRequest& request);

template <Deviation deviation, bool (*concerns)(const ReadingRequest& request)>
[[nodiscard]] Finding never(const Evidence& evidence) {
    return everyAnswer(evidence, deviation, concerns);
}

// valuechecks.cpp
/// Size as the tool reads it, every byte in the range.
[[nodiscard]] Finding settingInRange(const Evidence& evidence, std::string_view name, std::uint8_t least,
                                     std::uint8_t most);
/// Size as the tool reads it, printable characters.
[[nodiscard]] Finding printableText(const Evidence& evidence, std::string_view name);
[[nodiscard]] Finding valuesStay(const Evidence& evidence);
[[nodiscard]] Finding gyroPassed(const Evidence& evidence);
[[nodiscard]] Finding orientationKnown(const Evidence& evidence);
[[nodiscard]] Finding orientationSize(const Evidence& evidence);
[[nodiscard]] Finding orientationRepeats(const Evidence& evidence);
[[nodiscard]] Finding orientationBeginsAgain(const Evidence& evidence);
[[nodiscard]] Finding orientationOrder(const Evidence& evidence);
/// The first four, as a profile writes them; empty if one is missing.
[[nodiscard]] std::string orientationText(const Evidence& evidence);

// otherchecks.cpp
[[nodiscard]] Finding silentTo(const Evidence& evidence, std::string_view name, const char* profileKey);
[[nodiscard]] Finding heartbeatTo(const Evidence& evidence, std::string_view name);
[[nodiscard]] Finding refusalTo(const Evidence& evidence, std::string_view name);
[[nodiscard]] Finding answersWhileBusy(const Evidence& evidence);
[[nodiscard]] Finding answersAtOnce(const Evidence& evidence);
[[nodiscard]] Finding inTime(const Evidence& evidence, bool (*concerns)(const ReadingRequest& request));
[[nodiscard]] Finding quiet(const Evidence& evidence, std::string_view name);
[[nodiscard]] Finding catalogueSize(const Evidence& evidence);
[[nodiscard]] Finding catalogueCount(const Evidence& evidence);
[[nodiscard]] Finding catalogueOrder(const Evidence& evidence);
[[nodiscard]] Finding catalogueIds(const Evidence& evidence);
[[nodiscard]] Finding catalogueSizes(const Evidence& evidence);
[[nodiscard]] Finding catalogueDigests(const Evidence& evidence);
[[nodiscard]] Finding catalogueFits(const Evidence& evidence);
[[nodiscard]] Finding jsonHead(const Evidence& evidence);
[[nodiscard]] Finding jsonBodyLength(const Evidence& evidence);
[[nodiscard]] Finding jsonObject(const Evidence& evidence);
[[nodiscard]] Finding jsonResult(const Evidence& evidence);
[[nodiscard]] Finding jsonVersion(const Evidence& evidence);
[[nodiscard]] Finding toolReads(const Evidence& evidence);
[[nodiscard]] Finding pictureTaken(const Evidence& evidence);
[[nodiscard]] Finding pictureIsJpeg(const Evidence& evidence);
[[nodiscard]] Finding pictureDigest(const Evidence& evidence);
[[nodiscard]] Finding uploadSucceeded(const Evidence& evidence);
[[nodiscard]] Finding returnsAfterUpload(const Evidence& evidence);
[[nodiscard]] Finding quietAfterPowerOn(const Evidence& evidence);
/// Records in the first good catalogue answer; nothing without one.
[[nodiscard]] std::optional<std::size_t> pictureCount(const Evidence& evidence);

} // namespace conform
