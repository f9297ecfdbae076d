// Asks a camera everything that the checks look at.
#pragma once

#include "conform/exchangelog.h"
#include "conform/readingrequests.h"
#include "link/camerasp.h"

#include <functional>
#include <optional>

namespace conform {

/// Names of the exchanges that are no reading requests.
namespace probe {
inline constexpr std::string_view quietBefore = "quiet-before";
inline constexpr std::string_view quietAfter = "quiet-after";
inline constexpr std::string_view foreignAddress = "foreign-address";
inline constexpr std::string_view busy = "busy"; ///< a heartbeat in one write with another request
inline constexpr std::string_view inTwoPieces = "two-pieces"; ///< second piece of a heartbeat
inline constexpr std::string_view behindGarbage = "behind-garbage";
inline constexpr std::string_view wrongCheckCode = "wrong-check-code";
inline constexpr std::string_view unknownId = "unknown-id";
inline constexpr std::string_view unknownInfo = "unknown-info";
inline constexpr std::string_view shortRequest = "short-request";
inline constexpr std::string_view atOnce = "at-once"; ///< right behind an answer; longer pauses follow
inline constexpr std::string_view capture = "capture";
inline constexpr std::string_view upload = "upload";
inline constexpr std::string_view returning = "returning"; ///< after an upload
inline constexpr std::string_view tool = "tool";           ///< the client's own commands
} // namespace probe

/// Pauses behind an answer that are tried until the next request is answered.
inline constexpr std::array<std::chrono::milliseconds, 6> restsTried{
    std::chrono::milliseconds(0),  std::chrono::milliseconds(5),  std::chrono::milliseconds(10),
    std::chrono::milliseconds(20), std::chrono::milliseconds(50), std::chrono::milliseconds(100)};

/// Orientation reads: twice round, and after a pause once more.
inline constexpr std::size_t orientationRound = protocol::orientation_value::quantities;

struct Plan {
    protocol::CameraType type = protocol::CameraType::ostra;
    std::uint8_t address = 1;
    int repeats = 20; ///< exchanges of each request
    bool takesPicture = false;
    std::string uploadFile; ///< application image, UTF-8; empty: none
};

struct ToolReading {
    std::string key; ///< of service::readings()
    bool succeeded = false;
};

struct PictureEvidence {
    bool taken = false;
    Bytes jpeg;
    Bytes digest; ///< of the record; empty: there is none
};

struct UploadEvidence {
    bool succeeded = false;
    std::optional<std::chrono::milliseconds> returnedAfter; ///< from the verdict on
};

struct Evidence {
    Plan plan;
    std::uint32_t baudRate = 0;
    std::vector<ReadingRequest> requests;
    std::vector<Exchange> exchanges; ///< in the order of time
    std::vector<ToolReading> toolReadings;
    std::optional<PictureEvidence> picture;
    std::optional<UploadEvidence> upload;
    bool complete = false; ///< false: the link was stopped or failed

    [[nodiscard]] std::vector<const Exchange*> named(std::string_view name) const;
    /// Anything came at all.
    [[nodiscard]] bool isAnswered() const;
    /// From the end of the request to the first byte, without the time on the line.
    [[nodiscard]] std::optional<std::chrono::microseconds> delayOf(const Exchange& exchange) const;
    /// Of all answers to the request, in rising order.
    [[nodiscard]] std::vector<std::chrono::microseconds> delays(std::string_view name) const;
};

inline constexpr unsigned medianPercent = 50;
inline constexpr unsigned mostPercent = 95;
/// The time below which so many of a hundred are. Times in rising order, at least one.
[[nodiscard]] std::chrono::microseconds quantile(const std::vector<std::chrono::microseconds>& rising,
                                                 unsigned percent);

/// Blocks; a stopped link ends it. `telling` gets the name of each request.
[[nodiscard]] Evidence visit(CameraSp& camera, const Plan& plan,
                             const std::function<void(const std::string& name)>& telling);

} // namespace conform
