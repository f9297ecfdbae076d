// Faults of the camera and of the line: kind, request, occurrences.
#pragma once

#include "emulator/camera/camerasettings.h"
#include "emulator/camera/requestselector.h"

#include <limits>
#include <span>
#include <stdexcept>
#include <vector>

namespace emulator {

using protocol::RequestKey;

enum class FaultKind {
    // the whole answer
    silent,
    delay,
    late,
    glue,
    raw,
    // the answer's bytes on the line
    truncate,
    stray,
    before,
    split,
    // the frame
    length,
    badCheck,
    zeroCheck,
    address,
    command,
    // the payload
    payload,
    result,
    echo,
    zeroInside,
    valueSize,
    // catalogues and pictures
    records,
    count,
    hideNewest,
    pictureSize,
    refuse,
    // uploads
    offset,
    noVerdict,
    verdict,
    verdictDelay,
    stall,
    uploadHangUp,
    // power
    stayDown,
    backAt,
    // JSON
    noMarker,
    noSize,
    sizeText,
    invalidJson,
    shortJson,
    // the line
    hangUp,
    stopReading,
};

/// Kind of the fault's parameter, the text after "=".
enum class FaultParameter {
    none,
    number,         ///< required
    optionalNumber, ///< default 0
    numberPair,     ///< "5,200"
    relative,       ///< a number, or one relative to the true value: "+1", "-1"
    fileOffset,     ///< a number, or "size", "size+N", "size-N"
    bytes,          ///< hexadecimal digits: "AA33"
    text,
};

struct FaultKindInfo {
    FaultKind kind;
    std::string_view name;
    FaultParameter parameter;
    std::string_view example;     ///< of the parameter
    std::string_view description; ///< one line
};

/// One row per kind, in the order of the enumeration.
[[nodiscard]] std::span<const FaultKindInfo> faultKinds();
[[nodiscard]] const FaultKindInfo& infoOf(FaultKind kind);

struct Fault {
    static constexpr std::uint32_t always = std::numeric_limits<std::uint32_t>::max();

    FaultKind kind = FaultKind::silent;
    std::int64_t number = 0;
    std::int64_t second = 0;
    bool relative = false; ///< number counts from the true value or from the file size
    Bytes bytes;
    std::string text;

    RequestSelector selector; ///< default: any request
    /// Occurrences of the request, counted from 1 since the fault was added.
    std::uint32_t first = 1;
    std::uint32_t last = always;
};

/// The text is no fault; what() gives the reason.
class FaultError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

/// "kind", "kind=parameter", each with an optional "@request" and an optional "#n", "#n-m" or "#n+":
/// "truncate=3@getSn#2". Without a request: any; without a number: always. Throws FaultError.
[[nodiscard]] Fault parseFault(std::string_view text);

/// The faults of one request.
class FaultSet {
public:
    void add(const Fault& fault) { m_faults.push_back(fault); }
    /// nullptr without a fault of this kind.
    [[nodiscard]] const Fault* find(FaultKind kind) const;
    [[nodiscard]] bool has(FaultKind kind) const { return find(kind) != nullptr; }
    [[nodiscard]] bool empty() const { return m_faults.empty(); }
    /// Names of the kinds, separated by blanks.
    [[nodiscard]] std::string names() const;

private:
    std::vector<Fault> m_faults;
};

/// The faults in force, each with the number of matching requests so far.
class FaultPlan {
public:
    void add(const Fault& fault) { m_entries.push_back({fault, 0}); }
    void clear() { m_entries.clear(); }
    [[nodiscard]] bool empty() const { return m_entries.empty(); }
    /// Counts the request and returns its faults.
    [[nodiscard]] FaultSet strike(const RequestKey& key);

private:
    struct Entry {
        Fault fault;
        std::uint32_t seen = 0;
    };
    std::vector<Entry> m_entries;
};

} // namespace emulator
