// The requests by which a camera is examined: they read and change nothing.
#pragma once

#include "link/protocol/cameratypes.h"
#include "link/protocol/exchangetable.h"

#include <span>

namespace conform {

enum class Family : std::uint8_t { heartbeat, setting, text, orientation, gyro, catalogue, json };

struct ReadingRequest {
    std::string_view name; ///< as the virtual camera calls it
    protocol::Command command;
    Family family;
    protocol::Bytes payload;        ///< JSON: the text
    std::uint32_t firstReadMs;      ///< of the tool
    std::size_t longest = 0;        ///< bytes of the value that the tool can read; 0: no value
    std::size_t shortest = longest; ///< bytes of the value

    /// Answers with id and result.
    [[nodiscard]] bool hasId() const {
        return family == Family::setting || family == Family::text || family == Family::orientation;
    }
};

/// Those that cameras of this type know.
[[nodiscard]] std::vector<ReadingRequest> readingRequests(protocol::CameraType type);
[[nodiscard]] const ReadingRequest* requestNamed(std::span<const ReadingRequest> requests,
                                                 std::string_view name);

/// The whole request.
[[nodiscard]] protocol::Bytes requestBytes(const ReadingRequest& request, std::uint8_t address);

} // namespace conform
