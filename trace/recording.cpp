#include "trace/recording.h"

#include "language/language.h"

#include <array>
#include <charconv>
#include <istream>

namespace trace {

namespace {

constexpr std::string_view title = "camera line recording 1";
constexpr std::string_view toolName = "tool";
constexpr std::string_view cameraName = "camera";
constexpr std::size_t timeWidth = 12;
constexpr std::size_t nameWidth = 7;
constexpr std::string_view digits = "0123456789ABCDEF";

std::string padded(std::string_view text, std::size_t width, bool left) {
    const std::string blanks(width > text.size() ? width - text.size() : 0, ' ');
    return left ? std::string(text) + blanks : blanks + std::string(text);
}

/// Milliseconds with three decimals.
std::string timeText(Time at) {
    const auto micros = static_cast<std::uint64_t>(at.count());
    std::string fraction = std::to_string(micros % 1000);
    fraction.insert(0, 3 - fraction.size(), '0');
    return std::to_string(micros / 1000) + '.' + fraction;
}

template <typename Number>
std::optional<Number> numberIn(std::string_view text, int base = 10) {
    Number value{};
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value, base);
    const bool whole = !text.empty() && parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
    return whole ? std::optional(value) : std::nullopt;
}

/// Removes the next word from the front of the line; empty at its end.
std::string_view takeWord(std::string_view& line) {
    const std::size_t first = std::min(line.find_first_not_of(' '), line.size());
    const std::size_t last = std::min(line.find(' ', first), line.size());
    const std::string_view word = line.substr(first, last - first);
    line.remove_prefix(last);
    return word;
}

std::optional<Time> timeIn(std::string_view word) {
    constexpr std::size_t places = 3;
    const std::size_t point = word.find('.');
    if (point == std::string_view::npos || word.size() - point - 1 != places)
        return std::nullopt;
    const auto millis = numberIn<std::uint32_t>(word.substr(0, point));
    const auto micros = numberIn<std::uint16_t>(word.substr(point + 1));
    if (!millis || !micros)
        return std::nullopt;
    return std::chrono::milliseconds(*millis) + std::chrono::microseconds(*micros);
}

/// Reads line by line and counts the lines.
class Reader {
public:
    explicit Reader(std::istream& text) : m_text(text) {}

    Recording read() {
        Recording recording;
        if (!nextLine() || m_line != title)
            fail("the first line of a recording is \"%1\"", {std::string(title)});
        readHead(recording.head);
        while (nextLine()) {
            if (!isRemark())
                recording.entries.push_back(readEntry());
        }
        return recording;
    }

private:
    [[noreturn]] void fail(const char* what, std::initializer_list<std::string> arguments = {}) const {
        throw RecordingError(language::sentence(
            "line %1: %2", {std::to_string(m_number), language::sentence(what, arguments)}));
    }

    bool nextLine() {
        ++m_number;
        if (!std::getline(m_text, m_line))
            return false;
        if (m_text.eof())
            fail("the file ends in the middle of this line; take the line out");
        m_line.erase(m_line.find_last_not_of('\r') + 1); // conversions of line ends may have added several
        return true;
    }

    [[nodiscard]] bool isRemark() const {
        const std::size_t first = m_line.find_first_not_of(' ');
        return first == std::string::npos || m_line[first] == '#';
    }

    std::string value(std::string_view name) {
        if (!nextLine() || m_line.rfind(std::string(name) + ' ', 0) != 0 || m_line.size() < name.size() + 2)
            fail("\"%1\" and its value are missing here", {std::string(name)});
        return m_line.substr(name.size() + 1);
    }

    template <typename Number>
    Number number(std::string_view name) {
        const std::string text = value(name);
        const auto found = numberIn<Number>(text);
        if (!found)
            fail("\"%1\" is no value for \"%2\"", {text, std::string(name)});
        return *found;
    }

    void readHead(RecordingHead& head) {
        head.start = value("start");
        head.device = value("device");
        head.baudRate = number<std::uint32_t>("baud");
        head.pictureOffset = number<std::uint8_t>("offset");
        const std::string serials = value("serials");
        if (serials != "kept" && serials != "blanked")
            fail("\"serials\" is \"kept\" or \"blanked\", not \"%1\"", {serials});
        head.serialsBlanked = serials == "blanked";
    }

    RecordingEntry readEntry() {
        std::string_view rest = m_line;
        RecordingEntry entry;
        const std::string_view time = takeWord(rest);
        const auto at = timeIn(time);
        if (!at)
            fail("\"%1\" is no time in ms with three places", {std::string(time)});
        if (*at < m_lastAt)
            fail("the time runs back");
        entry.at = m_lastAt = *at;
        const std::string_view from = takeWord(rest);
        if (from != toolName && from != cameraName)
            fail("the bytes are from \"tool\" or \"camera\", not \"%1\"", {std::string(from)});
        entry.from = from == toolName ? Side::tool : Side::camera;
        for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
            const auto byte = numberIn<std::uint8_t>(word, 16);
            if (!byte || word.size() != 2)
                fail("\"%1\" is no byte of two hexadecimal digits", {std::string(word)});
            entry.bytes.push_back(*byte);
        }
        if (entry.bytes.empty())
            fail("no bytes");
        return entry;
    }

    std::istream& m_text;
    std::string m_line;
    std::size_t m_number = 0;
    Time m_lastAt{0};
};

} // namespace

std::string headText(const RecordingHead& head) {
    return std::string(title) + "\nstart " + head.start + "\ndevice " + head.device + "\nbaud " +
           std::to_string(head.baudRate) + "\noffset " + std::to_string(head.pictureOffset) + "\nserials " +
           (head.serialsBlanked ? "blanked" : "kept") +
           "\n#  time, ms  from    bytes; what they mean stands below them\n";
}

std::string entryText(const RecordingEntry& entry) {
    std::string text = padded(timeText(entry.at), timeWidth, false) + ' ' +
                       padded(entry.from == Side::tool ? toolName : cameraName, nameWidth, true);
    text.reserve(text.size() + 3 * entry.bytes.size() + 1);
    for (const std::uint8_t byte : entry.bytes) {
        text += ' ';
        text += digits[byte >> 4];
        text += digits[byte & 0x0FU];
    }
    return text + '\n';
}

std::string remarkText(std::string_view words) {
    return '#' + std::string(timeWidth + nameWidth, ' ') + ' ' + std::string(words) + '\n';
}

Recording readRecording(std::istream& text) {
    return Reader(text).read();
}

} // namespace trace
