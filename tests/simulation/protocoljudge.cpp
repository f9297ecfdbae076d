#include "tests/simulation/protocoljudge.h"

#include "tests/simulation/seenexchange.h"
#include "tests/support/markdown.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

using namespace std::chrono_literals;
using protocol::Bytes;
using protocol::ByteView;

namespace simulation {

namespace {

constexpr auto pauseOfCaptureV1 = 500ms;
constexpr int mostVerdictTries = 30;
constexpr std::uint8_t appAnnouncement = 0x1B;
constexpr std::uint8_t systemAnnouncement = 0x0B;
constexpr std::uint8_t modelAnnouncement = 0xCB;
constexpr std::uint8_t door = 0xCD;
constexpr std::size_t doorSequenceAt = 13;

/// As the document writes a code.
std::string hexByte(std::uint8_t value) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    return {digits[value >> 4U], digits[value & 0xFU]};
}

bool isAnnouncement(std::uint8_t code) {
    return code == appAnnouncement || code == systemAnnouncement || code == modelAnnouncement;
}

/// Codes that a caller gives.
bool isCallers(const std::string& code) {
    return code == "02" || code == "03" || code == "0F" || code == "C2";
}

/// The second protocol sets its timeouts before its first announcement and before its packets.
bool setsTimeoutsOnce(const std::string& code) {
    return code == "1D" || code == "1E";
}

bool isFirstGeneration(std::uint8_t code) {
    return code >= 0x06 && code <= 0x09;
}

std::vector<DocumentedExchange> readTable() {
    const std::string document = markdown::contentOf(markdown::sourceFolder() / "docs/protocol.md");
    std::vector<DocumentedExchange> exchanges;
    for (const markdown::Row& row : markdown::tableRows(markdown::section(document, "## Exchange rules"))) {
        DocumentedExchange exchange{row.at(0),          row.at(1),          {},
                                    row.at(3) == "yes", row.at(4) == "yes", row.at(5)};
        if (row.at(2) != "kept")
            exchange.timeoutMs = static_cast<std::uint32_t>(std::stoul(row.at(2)));
        exchange.readSize = static_cast<std::uint32_t>(std::stoul(row.at(6)));
        exchange.tries = std::stoi(row.at(7));
        exchanges.push_back(exchange);
    }
    if (exchanges.empty())
        throw std::runtime_error("docs/protocol.md has no table of exchanges");
    return exchanges;
}

} // namespace

Bytes headOf(const std::string& call) {
    Bytes bytes;
    std::istringstream words(call.substr(call.find(':') + 1));
    for (std::string word; words >> word && word != "..";)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(word, nullptr, 16)));
    return bytes;
}

std::vector<std::uint32_t> numbersOf(const std::string& call) {
    std::vector<std::uint32_t> numbers;
    std::istringstream words(call.substr(call.find(' ')));
    for (std::string word; std::getline(words, word, ',');)
        numbers.push_back(static_cast<std::uint32_t>(std::stoul(word)));
    return numbers;
}

const std::vector<DocumentedExchange>& documentedExchanges() {
    static const std::vector<DocumentedExchange> table = readTable();
    return table;
}

std::string ProtocolJudge::called(const std::string& port, const std::string& call,
                                  std::chrono::nanoseconds now) {
    Line& line = m_lines[port];
    if (call.starts_with("open ") || call == "close") {
        line = {};
        m_logged.clear();
        return {};
    }
    if (call.starts_with("read "))
        return read(line, static_cast<std::uint32_t>(std::stoul(call.substr(5))), now);
    std::string complaint = ended(line);
    line.rows.clear();
    if (call.starts_with("setTimeout ")) {
        // The second protocol's own, which no packet may follow: other time for writes than for reads.
        const std::vector<std::uint32_t> values = numbersOf(call);
        if (values.at(1) == values.at(3))
            line.preparation.timeoutMs = values.at(1);
    } else if (call == "flushInput") {
        line.preparation.discards = true;
    } else if (call == "flush") {
        line.preparation.flushes = true;
    } else if (call.starts_with("write ") && complaint.empty()) {
        complaint = wrote(line, headOf(call), now);
    }
    return complaint;
}

void ProtocolJudge::logged(const std::string& line) {
    constexpr std::string_view tag = "every:";
    if (line.starts_with(tag))
        m_logged.push_back(static_cast<std::uint32_t>(std::stoul(line.substr(tag.size()), nullptr, 16)));
}

void ProtocolJudge::received(const std::string& port, const Bytes& bytes) {
    Bytes& answer = m_lines[port].answer;
    protocol::append(answer, bytes);
    dropGarbage(answer, frameStart);
}

void ProtocolJudge::failed(const std::string& port) {
    Line& line = m_lines[port];
    line.preparation = {};
    line.rows.clear();
    m_logged.clear();
    line.doors.reset(); // a command that failed may have counted
}

void ProtocolJudge::forgivePresentBreaks() {
    for (auto& [port, line] : m_lines) {
        line.rows.clear();
        line.preparation = {}; // of a request that is not sent any more
    }
}

void ProtocolJudge::setPictureOffset(const std::string& port, std::uint8_t offset) {
    m_lines[port].pictureOffset = offset;
}

std::string ProtocolJudge::wrote(Line& line, const Bytes& head, std::chrono::nanoseconds now) {
    const Preparation preparation = std::exchange(line.preparation, {});
    if (!isFrameHead(head) && !isJsonHead(head)) { // data of an upload
        const bool flushes = line.image == systemAnnouncement || line.image == modelAnnouncement;
        return preparation.flushes == flushes ? std::string() : "data of an upload with a wrong flush";
    }
    const std::uint8_t code = isFrameHead(head) ? head[3] : std::uint8_t{0};
    line.request = isFrameHead(head) ? hexByte(code) : "none";
    line.image = isAnnouncement(code) ? code : std::uint8_t{0};
    line.written = now;
    line.reads = 0;
    line.answer.clear();
    line.confirmed = false;
    const std::vector<std::uint32_t> logged = std::exchange(m_logged, {});
    if (line.pictureOffset != 0) {
        const bool ambiguous = line.pictureOffset <= 3;
        return isFirstGeneration(code) && !ambiguous ? "a picture command without its offset" : std::string();
    }
    const bool logsHexadecimal = code == appAnnouncement || code == modelAnnouncement;
    if (logsHexadecimal &&
        (logged.size() < head.size() || !std::equal(head.begin(), head.end(), logged.begin())))
        return "the announcement is not logged in hexadecimal";
    if (code == door && line.doors && head.at(doorSequenceAt) != (*line.doors)++)
        return "a door command out of sequence";
    for (const DocumentedExchange& row : documentedExchanges()) {
        const bool same = row.code == line.request || (row.code == "caller's" && isCallers(line.request));
        const bool callersTimeout = row.timeoutMs == 0U;
        const bool timeouts = callersTimeout
                                  ? preparation.timeoutMs.has_value()
                                  : row.timeoutMs == preparation.timeoutMs || setsTimeoutsOnce(line.request);
        if (same && timeouts && (preparation.discards || !row.discards) && preparation.flushes == row.flushes)
            line.rows.push_back(&row);
    }
    return line.rows.empty() ? "command " + line.request + " is not sent as documented" : std::string();
}

std::string ProtocolJudge::read(Line& line, std::uint32_t size, std::chrono::nanoseconds now) {
    if (line.rows.empty())
        return {}; // of a verdict, or with an offset
    std::erase_if(line.rows, [size](const DocumentedExchange* row) {
        return row->readSize != size && row->readSize != 0;
    });
    const bool tooSoon = line.request == "C6" && line.reads == 0 && now < line.written + pauseOfCaptureV1;
    if (isWholeFrame(line.answer)) {
        const bool more = std::any_of(line.rows.begin(), line.rows.end(),
                                      [](const auto* row) { return row->reading != "frame"; });
        if (line.image == 0 && !more && !line.rows.empty())
            return "command " + line.request + " reads on after its whole answer";
        line.confirmed = line.image != 0;
    }
    ++line.reads;
    // A file of which nothing is missing is announced and then confirmed.
    const int verdictTries = line.image != 0 ? mostVerdictTries : 0;
    const bool tooMany = std::none_of(line.rows.begin(), line.rows.end(), [&](const auto* row) {
        return row->reading == "blocks" || line.reads <= row->tries + verdictTries;
    });
    if (line.rows.empty() || tooMany || tooSoon)
        return "the answer of command " + line.request + " is not read as documented";
    return {};
}

/// A command gives up when its reads are used up.
std::string ProtocolJudge::ended(const Line& line) const {
    if (line.confirmed || line.rows.empty())
        return {};
    const bool early = std::none_of(line.rows.begin(), line.rows.end(), [&line](const auto* row) {
        const bool answered = row->reading == "frame" ? isWholeFrame(line.answer) : !line.answer.empty();
        return row->reading == "blocks" || answered || line.reads >= row->tries;
    });
    return early ? "command " + line.request + " gave up after " + std::to_string(line.reads) + " reads"
                 : std::string();
}

} // namespace simulation
