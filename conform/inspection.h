// One answer taken apart, and in which way it deviates from a good one.
#pragma once

#include "conform/exchangelog.h"

#include <optional>

namespace conform {

/// Parts of an answer. Fields behind a missing start are empty.
struct Inspection {
    enum class CheckCode : std::uint8_t { unknown, right, zero, wrong };

    bool hasStart = false;
    bool isJson = false;
    Bytes before;               ///< in front of the start
    Bytes body;                 ///< from the start on, without what stands behind
    Bytes behind;               ///< behind the answer
    std::size_t missing = 0;    ///< bytes
    std::int64_t lengthOff = 0; ///< of the length field
    CheckCode check = CheckCode::unknown;
    Bytes payload; ///< of a complete answer; JSON: the text

    [[nodiscard]] bool isComplete() const { return hasStart && missing == 0; }
};

[[nodiscard]] Inspection inspect(const Exchange& exchange);

/// The virtual camera's fault that looks so, without request; nothing for a good answer.
using Deviation = std::optional<std::string> (*)(const Exchange& exchange, const Inspection& found);

[[nodiscard]] std::optional<std::string> noAnswer(const Exchange& exchange, const Inspection& found);
[[nodiscard]] std::optional<std::string> bytesBefore(const Exchange& exchange, const Inspection& found);
[[nodiscard]] std::optional<std::string> bytesBehind(const Exchange& exchange, const Inspection& found);
[[nodiscard]] std::optional<std::string> bytesMissing(const Exchange& exchange, const Inspection& found);
[[nodiscard]] std::optional<std::string> wrongLength(const Exchange& exchange, const Inspection& found);
[[nodiscard]] std::optional<std::string> wrongAddress(const Exchange& exchange, const Inspection& found);
[[nodiscard]] std::optional<std::string> wrongCommand(const Exchange& exchange, const Inspection& found);
[[nodiscard]] std::optional<std::string> wrongCheckCode(const Exchange& exchange, const Inspection& found);
[[nodiscard]] std::optional<std::string> pauseInside(const Exchange& exchange, const Inspection& found);
// Of answers with id and result:
[[nodiscard]] std::optional<std::string> shortPayload(const Exchange& exchange, const Inspection& found);
[[nodiscard]] std::optional<std::string> wrongId(const Exchange& exchange, const Inspection& found);
[[nodiscard]] std::optional<std::string> failure(const Exchange& exchange, const Inspection& found);
// Of heartbeats:
[[nodiscard]] std::optional<std::string> wrongStatus(const Exchange& exchange, const Inspection& found);

} // namespace conform
