// Recordings of what passed over a camera's line: the text format, its writing and its strict reading.
#pragma once

#include "trace/linefollower.h"

#include <iosfwd>
#include <stdexcept>

namespace trace {

struct RecordingHead {
    std::string start; ///< wall clock of time 0, "2026-11-21T09:00:05.123Z"
    std::string device;
    std::uint32_t baudRate = 460800;
    std::uint8_t pictureOffset = 0;
    bool serialsBlanked = false;
};

/// Bytes that passed together.
struct RecordingEntry {
    Time at{0};
    Side from = Side::tool;
    Bytes bytes;
};

struct Recording {
    RecordingHead head;
    std::vector<RecordingEntry> entries; ///< times never run back
};

/// The recording says something that no recording says; what() begins with the number of its line.
class RecordingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Each of these is one or more whole lines.
[[nodiscard]] std::string headText(const RecordingHead& head);
[[nodiscard]] std::string entryText(const RecordingEntry& entry);
/// A line for people, which reading passes over.
[[nodiscard]] std::string remarkText(std::string_view words);

/// Throws RecordingError.
[[nodiscard]] Recording readRecording(std::istream& text);

} // namespace trace
