// The checks of a camera, one table.
#pragma once

#include "conform/visit.h"

#include <QString>

namespace conform {

enum class Outcome : std::uint8_t { notSeen, good, different };

struct Finding {
    Outcome outcome = Outcome::notSeen;
    std::string detail;              ///< names and numbers
    const Exchange* proof = nullptr; ///< of the evidence
    /// Keys and values by which a profile repeats a difference; none: it cannot.
    std::vector<std::pair<std::string, std::string>> profile;
};

enum class Kind : std::uint8_t {
    answers,
    values,
    orientation,
    requests,
    times,
    line,
    catalogue,
    json,
    tool,
    picture,
    upload
};

struct Check {
    const char* name;
    const char* sentence; ///< for people; of a good camera
    Kind kind;
    Finding (*look)(const Evidence& evidence);

    [[nodiscard]] QString translatedSentence() const;
};

[[nodiscard]] std::span<const Check> checks();
[[nodiscard]] QString kindWords(Kind kind);
[[nodiscard]] QString outcomeWords(Outcome outcome);

struct Result {
    const Check* check = nullptr;
    Finding finding;
};

/// Every check, in the order of the table. The evidence outlives the results.
[[nodiscard]] std::vector<Result> examine(const Evidence& evidence);

} // namespace conform
