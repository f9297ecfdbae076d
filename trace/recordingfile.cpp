#include "trace/recordingfile.h"

#include "language/language.h"

#include <array>
#include <cerrno>
#include <ctime>
#include <fstream>

namespace trace {

namespace {

using language::sentence;
using Clock = std::chrono::system_clock;

std::string formatted(Clock::time_point when, const char* format) {
    const std::time_t seconds = Clock::to_time_t(std::chrono::floor<std::chrono::seconds>(when));
    std::array<char, 64> text{};
    std::strftime(text.data(), text.size(), format, std::gmtime(&seconds));
    return text.data();
}

} // namespace

RecordingFile::RecordingFile(const std::string& path)
    : m_path(path), m_file(std::fopen(path.c_str(), "wbx")) {
    if (m_file)
        return;
    if (errno == EEXIST)
        throw std::runtime_error(sentence("%1 is there already; choose another name with --record", {path}));
    throw std::runtime_error(
        sentence("cannot write the recording %1: %2", {path, language::reasonOf(errno)}));
}

void RecordingFile::append(const std::string& lines) {
    const std::size_t written = std::fwrite(lines.data(), 1, lines.size(), m_file.get());
    if (written != lines.size() || std::fflush(m_file.get()) != 0)
        throw std::runtime_error(
            sentence("cannot write the recording %1 any more: %2", {m_path, language::reasonOf(errno)}));
}

Recording loadRecording(const std::string& path) {
    std::ifstream text(path, std::ios::binary);
    if (!text)
        throw RecordingError(sentence("cannot read %1: %2", {path, language::reasonOf(errno)}));
    try {
        return readRecording(text);
    } catch (const RecordingError& error) {
        throw RecordingError(sentence("%1, %2", {path, error.what()}));
    }
}

std::string wallClockText(Clock::time_point now) {
    const auto millis =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::string fraction = std::to_string(millis);
    fraction.insert(0, 3 - fraction.size(), '0');
    return formatted(now, "%Y-%m-%dT%H:%M:%S") + '.' + fraction + 'Z';
}

std::string freshRecordingName(Clock::time_point now) {
    return formatted(now, "camera-%Y%m%d-%H%M%S.rec");
}

} // namespace trace
