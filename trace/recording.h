// Recordings of the traffic of a camera's line: the text format, its writing and its strict reading.
#pragma once

#include "link/protocol/cameratypes.h"
#include "trace/linefollower.h"

#include <iosfwd>
#include <stdexcept>

namespace trace {

struct RecordingHead {
    std::string start; ///< wall clock of time 0, "2026-11-21T09:00:05.123Z"
    std::string device;
    std::uint32_t baudRate = protocol::baudRates.front();
    std::uint8_t pictureOffset = 0;
    bool serialsBlanked = false;
};

/// Bytes of one read.
struct RecordingEntry {
    Time at{0};
    Side from = Side::tool;
    Bytes bytes;
};

struct Recording {
    RecordingHead head;
    std::vector<RecordingEntry> entries; ///< in the order of time
};

/// Malformed recording; what() starts with the line number.
class RecordingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One or more complete lines each.
[[nodiscard]] std::string headText(const RecordingHead& head);
[[nodiscard]] std::string entryText(const RecordingEntry& entry);
/// A line for people; reading ignores it.
[[nodiscard]] std::string remarkText(std::string_view words);

/// Throws RecordingError.
[[nodiscard]] Recording readRecording(std::istream& text);

} // namespace trace
