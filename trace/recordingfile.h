// A recording on disk.
#pragma once

#include "trace/recording.h"

#include <cstdio>
#include <memory>

namespace trace {

/// A new file that grows by whole lines. Each append reaches the operating system before it returns: nothing
/// is lost when the program is killed.
class RecordingFile {
public:
    /// Throws std::runtime_error with a text for people when the file is there already or cannot be made.
    explicit RecordingFile(const std::string& path);

    /// Throws std::runtime_error with a text for people when the disk does not take it.
    void append(const std::string& lines);

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::string m_path;
    std::unique_ptr<std::FILE, Close> m_file;
};

/// Throws RecordingError, with the path in front, for a file that cannot be read or is no recording.
[[nodiscard]] Recording loadRecording(const std::string& path);

/// "2026-11-21T09:00:05.123Z".
[[nodiscard]] std::string wallClockText(std::chrono::system_clock::time_point now);
/// A name that says when: "camera-20261121-090005.rec".
[[nodiscard]] std::string freshRecordingName(std::chrono::system_clock::time_point now);

} // namespace trace
