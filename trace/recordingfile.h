// A recording on disk.
#pragma once

#include "trace/recording.h"

#include <cstdio>
#include <memory>

namespace trace {

/// A new file of complete lines. Each append reaches the operating system before it returns: a killed program
/// loses nothing.
class RecordingFile {
public:
    /// Throws std::runtime_error with a text for people when the file exists or cannot be created.
    explicit RecordingFile(const std::string& path);

    /// Throws std::runtime_error with a text for people when the write fails.
    void append(const std::string& lines);

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::string m_path;
    std::unique_ptr<std::FILE, Close> m_file;
};

/// Throws RecordingError for a file that cannot be read or is no recording; what() starts with the path.
[[nodiscard]] Recording loadRecording(const std::string& path);

/// "2026-11-21T09:00:05.123Z".
[[nodiscard]] std::string wallClockText(std::chrono::system_clock::time_point now);
/// File name of a recording of this time: "camera-20261121-090005.rec".
[[nodiscard]] std::string freshRecordingName(std::chrono::system_clock::time_point now);

} // namespace trace
