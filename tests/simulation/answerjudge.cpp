#include "tests/simulation/answerjudge.h"

#include "link/protocol/commands.h"
#include "tests/simulation/world/scheduler.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

using protocol::Bytes;
using protocol::ByteView;

namespace simulation {

namespace {

using protocol::code;
using protocol::Command;

constexpr std::size_t frameOverhead = 10;
constexpr std::size_t headerSize = 8;
constexpr std::size_t leastAnswer = 9;
constexpr std::size_t transferOverhead = 11;
constexpr std::size_t pictureAt = 9;
constexpr std::size_t jsonTextAt = 12;
constexpr std::size_t jsonOverhead = 6;

std::uint64_t littleEndian(ByteView bytes, std::size_t at, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size && at + i < bytes.size(); ++i)
        value |= std::uint64_t{bytes.begin()[at + i]} << (8 * i);
    return value;
}

std::uint8_t byteAt(const Bytes& bytes, std::size_t at) {
    return at < bytes.size() ? bytes[at] : std::uint8_t{0xFF};
}

bool startsWith(const Bytes& bytes, const std::array<std::uint8_t, 2>& start) {
    return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

bool isWholeJson(const Bytes& answer) {
    return answer.size() >= leastAnswer && startsWith(answer, jsonStart) &&
           (std::size_t{answer[2]} << 8U) + answer[3] + jsonOverhead == answer.size();
}

std::uint16_t xmodem(ByteView bytes) {
    std::uint16_t check = 0;
    for (const std::uint8_t byte : bytes) {
        check = static_cast<std::uint16_t>(check ^ (unsigned{byte} << 8U));
        for (int bit = 0; bit < 8; ++bit)
            check = static_cast<std::uint16_t>((check & 0x8000U) != 0 ? (unsigned{check} << 1U) ^ 0x1021U
                                                                      : unsigned{check} << 1U);
    }
    return check;
}

std::uint16_t modbus(ByteView bytes) {
    std::uint16_t check = 0xFFFF;
    for (const std::uint8_t byte : bytes) {
        check = static_cast<std::uint16_t>(check ^ byte);
        for (int bit = 0; bit < 8; ++bit)
            check = static_cast<std::uint16_t>((check & 1U) != 0 ? (unsigned{check} >> 1U) ^ 0xA001U
                                                                 : unsigned{check} >> 1U);
    }
    return check;
}

bool isRequestFrame(const Bytes& bytes) {
    return startsWith(bytes, frameStart) && bytes.size() >= frameOverhead &&
           littleEndian(bytes, 4, 4) + frameOverhead == bytes.size();
}

bool isRequestJson(const Bytes& bytes) {
    return startsWith(bytes, jsonStart) && bytes.size() >= 22 && bytes[12] == 0xFD && bytes[13] == 0xFC;
}

bool hasRightCheck(const Bytes& request, bool json) {
    const ByteView checked = ByteView(request).range(0, request.size() - 2);
    return littleEndian(request, request.size() - 2, 2) == (json ? modbus(checked) : xmodem(checked));
}

bool isPictureCommand(unsigned code) {
    return code >= 0x06 && code <= 0x09;
}

bool isPropertyCommand(std::uint8_t commandCode) {
    return commandCode == code(Command::getProperty) || commandCode == code(Command::setProperty) ||
           commandCode == code(Command::getInfo);
}

std::string textOf(ByteView bytes) {
    return {bytes.begin(), bytes.end()};
}

/// The picture's bytes in a JSON answer.
Bytes jsonData(const Bytes& answer) {
    static constexpr std::string_view marker = "<<BINARY>>";
    const std::string text = textOf(ByteView(answer).range(jsonTextAt, answer.size() - 2));
    const std::size_t at = text.find(marker);
    if (at == std::string::npos)
        return {};
    return {text.begin() + static_cast<std::ptrdiff_t>(at + marker.size()), text.end()};
}

/// The number behind the name in a JSON text; nothing if there is none.
std::optional<long> numberIn(const std::string& text, std::string_view name) {
    const std::size_t at = text.find(name);
    if (at == std::string::npos)
        return std::nullopt;
    const char* const begin = text.c_str() + at + name.size();
    char* end = nullptr;
    const long number = std::strtol(begin, &end, 10);
    return end == begin ? std::nullopt : std::optional(number);
}

/// Offset of the piece of a picture that a JSON request asks for.
std::optional<long> pieceOffset(const SeenExchange& exchange) {
    return exchange.isJson() ? numberIn(textOf(exchange.payload()), "\"offset\":") : std::nullopt;
}

struct CatalogueForm {
    std::size_t recordSize;
    std::size_t sizeAt; ///< of the file size in a record
};
constexpr std::size_t recordsAt = 9;

CatalogueForm formOf(const SeenExchange& exchange) {
    return exchange.code() == code(Command::catalogueV1) ? CatalogueForm{33, 13} : CatalogueForm{27, 7};
}

bool isCatalogue(const SeenExchange& exchange) {
    return exchange.answered() && (exchange.code() == code(Command::originCatalogue) ||
                                   exchange.code() == code(Command::catalogueV1));
}

std::size_t recordCount(const SeenExchange& exchange) {
    return (exchange.answer().size() - recordsAt) / formOf(exchange).recordSize;
}

// --- lines of the client -----------------------------------------------------------------------------------

using Holds = bool (*)(const SeenExchange&);

bool isUnanswered(const SeenExchange& exchange) {
    return !exchange.answered();
}
bool isAnswered(const SeenExchange& exchange) {
    return exchange.answered();
}
bool isGranted(const SeenExchange& exchange) {
    return exchange.granted();
}
bool isRefused(const SeenExchange& exchange) {
    return exchange.refused();
}
bool isNotGranted(const SeenExchange& exchange) {
    return !exchange.granted();
}
bool isGrantedProperty(const SeenExchange& exchange) {
    return exchange.granted() && exchange.sameProperty();
}
bool isOtherProperty(const SeenExchange& exchange) {
    return exchange.answered() && !exchange.sameProperty();
}
bool isRefusedOrOther(const SeenExchange& exchange) {
    return exchange.answered() && !isGrantedProperty(exchange);
}
bool isTransferRefused(const SeenExchange& exchange) {
    return byteAt(exchange.bytes(), headerSize) != 0;
}
bool isTransferred(const SeenExchange& exchange) {
    return exchange.bytes().size() >= exchange.pictureSize() + std::size_t{transferOverhead} &&
           (exchange.code() == code(Command::readV1) || !isTransferRefused(exchange));
}

/// What a line says about the exchange before it.
struct Line {
    std::string_view text;       ///< at its beginning
    std::vector<unsigned> codes; ///< empty: of any command
    Holds holds;
    bool whole = false; ///< the line is nothing but the text
    bool fails = false; ///< a command that could not begin says it as well
};

constexpr unsigned jsonCommand = 0x100;

const std::vector<Line>& lines() {
    static const std::vector<Line> all = {
        {"getSnFailed", {0x02}, isUnanswered, true, true},
        {"get sn failed2", {0x02}, isRefusedOrOther},
        {"sn:", {0x02}, isGrantedProperty},
        {"getModelInfo checkData error", {0xC2}, isUnanswered, true, true},
        {"getModelInfo id error", {0xC2}, isOtherProperty},
        {"getModelInfo result error", {0xC2}, isRefused},
        {"getModel end", {0xC2}, isGrantedProperty},
        {"propertyValue error:", {0xC2}, isNotGranted, false, true},
        {"getCommonProperty error2:check failed", {}, isUnanswered, false, true},
        {"getCommonProperty error2:getCommonProperty result", {}, isRefused},
        {"end commonproperty", {}, isGranted, true},
        {"setSnFailed", {}, isUnanswered, true, true},
        {"set sn flag:", {0x03}, isAnswered},
        {"set CommonProperty flag:", {}, isAnswered},
        {"reset failed2", {0x04, 0x05}, isRefused},
        {"reset failed", {0x04, 0x05}, isUnanswered, true, true},
        {"error in originCapture", {0x06}, isUnanswered, false, true},
        {"error in getOriginPicInfos", {0x07}, isUnanswered, false, true},
        {"error in delOriginPic", {0x08}, isUnanswered, false, true},
        {"error in captureV1", {0xC6}, isUnanswered, false, true},
        {"error in getPicInfos", {0xC7}, isUnanswered, false, true},
        {"error in delPicV1", {0xC8}, isUnanswered, false, true},
        {"pic num:", {0x07, 0xC7}, isAnswered},
        {"read result error", {0x09}, isTransferRefused},
        {"read over", {0x09, 0xC9}, isTransferred},
        {"first end", {jsonCommand}, isAnswered},
        {"check2 failed", {jsonCommand}, isUnanswered, false, true},
        {"appupdate queryCanUpdate checkfailed", {0x1B}, isUnanswered, false, true},
        {"fireware can update", {0x0B}, isGranted},
        {"fireware cant update", {0x0B}, isRefused},
        {"firewareupdate queryfireware cmd checkfailed", {0x0B}, isUnanswered, false, true},
        {"can update2", {0xCB}, isGranted},
        {"cant update:", {0xCB}, isRefused},
        {"updateModel queryModelInfo checkfailed", {0xCB}, isUnanswered, false, true},
    };
    return all;
}

unsigned lineCode(const SeenExchange& exchange) {
    return exchange.isJson() ? jsonCommand : exchange.code();
}

// --- words of the status bar -------------------------------------------------------------------------------

/// Commands that end on the thread of the windows, and their codes.
struct CommandName {
    std::string_view text; ///< at its beginning
    std::vector<unsigned> codes;
};

const std::vector<CommandName>& commandNames() {
    static const std::vector<CommandName> all = {
        {"测试心跳", {0x01}},           {"读取序列号", {0x02}}, {"写入序列号", {0x03}},
        {"恢复出厂设置", {0x04}},       {"重启摄像头", {0x05}}, {"读取模型信息", {0xC2}},
        {"读取图片列表", {0x07, 0xC7}}, {"删除", {0x08, 0xC8}}, {"下载图片", {0x09, 0xC9}},
    };
    return all;
}

bool isDone(const SeenExchange& exchange) {
    switch (exchange.code()) {
    case code(Command::heartbeat):
        return exchange.isHeartbeatAnswer();
    case code(Command::originCatalogue):
    case code(Command::catalogueV1):
        return exchange.answered();
    default:
        break;
    }
    if (exchange.isPictureTransfer())
        return isTransferred(exchange);
    const bool asksForText =
        exchange.code() == code(Command::getProperty) || exchange.code() == code(Command::getInfo);
    return exchange.granted() && (!asksForText || exchange.sameProperty());
}

bool isSilent(const SeenExchange& exchange) {
    return exchange.bytes().empty();
}
bool isUnusable(const SeenExchange& exchange) {
    return !exchange.bytes().empty() && !isDone(exchange);
}
bool isDeclined(const SeenExchange& exchange) {
    return exchange.isPictureTransfer() ? isTransferRefused(exchange) : exchange.refused();
}

struct Words {
    std::string_view text; ///< at its beginning
    Holds holds;
};

constexpr std::array<Words, 4> words{
    {{"完成", isDone}, {"没有应答", isSilent}, {"应答不完整", isUnusable}, {"摄像头拒绝执行", isDeclined}}};

std::string hex(unsigned value) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    return {digits[(value >> 4U) & 0xFU], digits[value & 0xFU]};
}

} // namespace

bool isWholeFrame(const Bytes& answer) {
    return answer.size() >= leastAnswer && startsWith(answer, frameStart) &&
           littleEndian(answer, 4, 4) + frameOverhead == answer.size();
}

void dropGarbage(Bytes& answer, const std::array<std::uint8_t, 2>& start) {
    auto begin = std::search(answer.begin(), answer.end(), start.begin(), start.end());
    if (begin == answer.end() && !answer.empty())
        --begin; // may be the first byte of the start
    answer.erase(answer.begin(), begin);
}

// --- an exchange -------------------------------------------------------------------------------------------

SeenExchange::SeenExchange(std::string port, Bytes request)
    : m_port(std::move(port)), m_request(std::move(request)) {}

bool SeenExchange::isJson() const {
    return isRequestJson(m_request);
}

std::uint8_t SeenExchange::address() const {
    return byteAt(m_request, 2);
}

std::uint8_t SeenExchange::code() const {
    return isJson() || m_request.size() < frameOverhead ? std::uint8_t{0}
                                                        : static_cast<std::uint8_t>(m_request[3] - m_offset);
}

ByteView SeenExchange::payload() const {
    const std::size_t from = isJson() ? 20 : headerSize;
    return m_request.size() < from + 2 ? ByteView() : ByteView(m_request).range(from, m_request.size() - 2);
}

bool SeenExchange::isUpload() const {
    return code() == simulation::code(Command::appAnnounce) ||
           code() == simulation::code(Command::firewareAnnounce) ||
           code() == simulation::code(Command::modelAnnounce);
}

bool SeenExchange::isPictureTransfer() const {
    return (code() == simulation::code(Command::originRead) && payload().size() == 9) ||
           (code() == simulation::code(Command::readV1) && payload().size() == 10);
}

/// With some offsets the code is that of another command; a transfer shows by its size.
void SeenExchange::shift(std::uint8_t offset) {
    static constexpr std::array<std::uint8_t, 18> plainCodes{0x01, 0x02, 0x03, 0x04, 0x05, 0x0B,
                                                             0x0F, 0x1B, 0x1D, 0x1E, 0xC2, 0xC6,
                                                             0xC7, 0xC8, 0xC9, 0xCB, 0xCD, 0x00};
    constexpr std::size_t transferSize = 9;
    const bool ambiguous = std::find(plainCodes.begin(), plainCodes.end(), code()) != plainCodes.end();
    const unsigned plain = (code() - unsigned{offset}) & 0xFFU;
    const bool transfer = plain == simulation::code(Command::originRead) &&
                          payload().size() == transferSize && littleEndian(payload(), 1, 4) == 0;
    if (isPictureCommand(plain) && (!ambiguous || transfer))
        m_offset = offset;
    else
        m_ambiguous = isPictureCommand(plain) && offset != 0;
}

void SeenExchange::received(const Bytes& bytes) {
    if (isUpload() && answered()) {
        protocol::append(m_verdict, bytes);
        dropGarbage(m_verdict, frameStart);
        return;
    }
    protocol::append(m_bytes, bytes);
    protocol::append(m_answer, bytes);
    dropGarbage(m_answer, isJson() ? jsonStart : frameStart);
}

bool SeenExchange::answered() const {
    return isJson() ? isWholeJson(m_answer) : isWholeFrame(m_answer);
}

bool SeenExchange::granted() const {
    if (!answered())
        return false;
    const std::size_t at = headerSize;
    if (code() == simulation::code(Command::modelAnnounce))
        return byteAt(m_answer, at) == 1 && byteAt(m_answer, at + 1) == 0;
    const bool second = isPropertyCommand(code()) || code() == simulation::code(Command::appV1Announce);
    return byteAt(m_answer, second ? at + 1 : at) == 0;
}

bool SeenExchange::sameProperty() const {
    return !payload().empty() && byteAt(m_answer, headerSize) == payload().begin()[0];
}

std::string SeenExchange::value() const {
    return textOf(ByteView(m_answer).range(headerSize + 2, m_answer.size() - 2));
}

std::uint32_t SeenExchange::pictureSize() const {
    const ByteView request = payload();
    return request.size() < 4 ? 0 : static_cast<std::uint32_t>(littleEndian(request, request.size() - 4, 4));
}

bool SeenExchange::isHeartbeatAnswer() const {
    return m_bytes.size() == 11 && startsWith(m_bytes, frameStart) && m_bytes[3] == 1 &&
           littleEndian(m_bytes, 4, 4) == 1 && m_bytes[8] == 1;
}

// --- an upload ---------------------------------------------------------------------------------------------

SeenUpload::SeenUpload(const SeenExchange& announcement, const File& file)
    : m_port(announcement.port()), m_code(announcement.code()), m_address(announcement.address()),
      m_last(announcement) {
    const ByteView payload = announcement.payload();
    const std::size_t at = announcement.code() == code(Command::appAnnounce) ||
                                   announcement.code() == code(Command::firewareAnnounce)
                               ? 0
                               : 1;
    m_size = static_cast<std::uint32_t>(littleEndian(payload, at, 4));
    m_content = file(payload.range(at + 4, at + 20).toBytes());
}

/// Layout and address of the announcement; the address of everything that follows.
std::string SeenUpload::wrongRequest(const SeenExchange& exchange) const {
    if (exchange.address() != m_address)
        return "the address changes inside an upload";
    if (exchange.code() != m_code)
        return {};
    const bool named = m_code == code(Command::modelAnnounce) || isSecondProtocol();
    const bool rightType = !named || exchange.payload().begin()[0] == 1;
    return m_content && m_content->size() == m_size && rightType ? std::string()
                                                                 : "an announcement of no chosen file";
}

bool SeenUpload::isSecondProtocol() const {
    return m_code == code(Command::appV1Announce);
}

bool SeenUpload::goesOn(const SeenExchange& exchange) {
    if (!isSecondProtocol() || exchange.port() != m_port)
        return false;
    if (exchange.code() == code(Command::appV1Announce))
        ++m_announcements;
    else if (exchange.code() == code(Command::appV1Packet))
        ++m_packets;
    else
        return false;
    if (m_packets == 1)
        m_ready = m_last.granted() && m_last.answer().size() >= 16 &&
                  littleEndian(m_last.answer(), 10, 4) == m_size;
    m_last = exchange;
    return true;
}

std::uint64_t SeenUpload::resumeOffset() const {
    return littleEndian(m_last.answer(), m_code == code(Command::modelAnnounce) ? 10 : 9, 4);
}

void SeenUpload::answered(const SeenExchange& exchange) {
    if (exchange.code() != m_code && !(isSecondProtocol() && exchange.code() == code(Command::appV1Packet)))
        return;
    m_last = exchange;
    if (exchange.code() == code(Command::appV1Packet) && exchange.answered())
        m_packetResult = byteAt(exchange.answer(), headerSize);
}

std::string SeenUpload::goesOnReading() const {
    if (isSecondProtocol() || !m_last.answered())
        return {};
    if (m_code == code(Command::modelAnnounce) && !m_last.granted())
        return "an upload goes on after it was refused";
    if (resumeOffset() >= 0x80000000U)
        return "an upload goes on after a negative offset";
    return {};
}

std::string SeenUpload::sent(const Bytes& data) {
    if (!m_last.answered())
        return "an upload sends without an answer";
    if (const std::string wrong = goesOnReading(); !wrong.empty())
        return wrong;
    if (!m_content)
        return {}; // the announcement was judged
    constexpr std::uint64_t sliceSize = 512;
    const std::uint64_t from = m_sent.value_or(resumeOffset());
    const Bytes slice = ByteView(*m_content).range(from, from + sliceSize).toBytes();
    m_sent = from + slice.size();
    return slice == data ? std::string() : "an upload sends another slice than the next";
}

bool SeenUpload::secondProtocolSucceeded() const {
    constexpr int wantedAnnouncements = 5;
    constexpr int wantedPackets = 11;
    return m_announcements == wantedAnnouncements && m_ready && m_packets == wantedPackets &&
           m_packetResult && *m_packetResult <= 1;
}

bool SeenUpload::succeeded() const {
    if (isSecondProtocol())
        return secondProtocolSucceeded();
    if (!m_last.answered() || !goesOnReading().empty() || m_sent.value_or(resumeOffset()) < m_size)
        return false;
    const Bytes& verdict = m_last.verdict();
    if (m_code == code(Command::appAnnounce))
        return m_back && isWholeFrame(verdict) && verdict[8] == 0;
    if (m_code == code(Command::modelAnnounce))
        return isWholeFrame(verdict) && verdict[9] == 0;
    return m_back;
}

// --- all threads -------------------------------------------------------------------------------------------

void AnswerJudge::prepares() {
    m_threads[world::threadNumber()].prepares = true;
}

std::string AnswerJudge::writes(const std::string& port, const Bytes& bytes, std::uint8_t offset) {
    Thread& thread = m_threads[world::threadNumber()];
    const bool json = isRequestJson(bytes);
    if (!json && !isRequestFrame(bytes))
        return m_upload && m_upload->port() == port ? m_upload->sent(bytes) : "data without an upload";
    thread.prepares = false;
    thread.concluded = false;
    SeenExchange next(port, bytes);
    if (!json)
        next.shift(offset);
    std::string wrong = wrongPiece(thread, next) + wrongTransfer(next);
    if (thread.refused && next.isPictureTransfer())
        wrong += "a job reads another picture after a refused one";
    thread.exchange = next;
    m_writers[port] = world::threadNumber();
    const bool ofUpload = !next.isUpload() && m_upload && m_upload->goesOn(next);
    if (next.isUpload() || (next.code() == code(Command::appV1Announce) && !ofUpload))
        m_upload.emplace(next, m_file);
    if (m_upload && m_upload->port() == port && world::threadNumber() != 0)
        wrong += m_upload->wrongRequest(next);
    if (!hasRightCheck(bytes, json))
        wrong += "a request with a wrong check code";
    return wrong;
}

/// The tool asks for a picture piece by piece, and for none after one that did not come.
std::string AnswerJudge::wrongPiece(Thread& thread, const SeenExchange& next) {
    constexpr long firstPiece = 500;
    constexpr long longestPiece = 6500;
    const auto from = pieceOffset(next);
    if (!from)
        return {};
    const long length = numberIn(textOf(next.payload()), "\"length\":").value_or(0);
    if (*from == 0)
        return length == firstPiece ? "" : "the first piece of a picture has another length";
    const auto before = pieceOffset(thread.exchange);
    if (!before || thread.exchange.port() != next.port() || *from <= *before)
        return "a later piece of a picture without the first";
    if (!thread.exchange.answered())
        return "a picture goes on after a piece that did not come";
    if (*before == 0)
        thread.pictureSize = numberIn(textOf(thread.exchange.answer()), "\"size\":").value_or(0);
    return length == std::min(longestPiece, thread.pictureSize - *from)
               ? ""
               : "a piece of a picture has another length";
}

/// The tool reads pictures that a catalogue lists, with the size that it tells. A capture whose picture is
/// not known in time reads nothing of picture 0.
std::string AnswerJudge::wrongTransfer(const SeenExchange& next) const {
    if (!next.isPictureTransfer() || next.isAmbiguous())
        return {};
    const std::pair picture{next.payload().begin()[0], next.pictureSize()};
    const bool unknown = picture.first == 0 && picture.second == 0;
    return unknown || m_listed.contains(picture) ? "" : "a picture is read that no catalogue lists so";
}

std::string AnswerJudge::reads(const std::string& port) const {
    if (const auto writer = m_writers.find(port);
        writer != m_writers.end() && writer->second != world::threadNumber())
        return "a user of the line reads the answer to another";
    const auto thread = m_threads.find(world::threadNumber());
    const bool ofUpload = thread != m_threads.end() && thread->second.exchange.isUpload();
    return ofUpload && m_upload && m_upload->port() == port ? m_upload->goesOnReading() : std::string();
}

void AnswerJudge::received(const Bytes& bytes) {
    Thread& thread = m_threads[world::threadNumber()];
    thread.exchange.received(bytes);
    learn(thread);
}

void AnswerJudge::learn(Thread& thread) {
    const SeenExchange& exchange = thread.exchange;
    const std::uint8_t requested =
        exchange.payload().empty() ? std::uint8_t{0} : exchange.payload().begin()[0];
    if (m_upload && m_upload->port() == exchange.port()) {
        if (exchange.isHeartbeatAnswer() && exchange.code() == code(Command::heartbeat))
            m_upload->cameBack();
        m_upload->answered(exchange);
    }
    if (isPropertyCommand(exchange.code()) && exchange.granted())
        m_values[requested].push_back(exchange.value());
    if (exchange.isPictureTransfer() && exchange.bytes().size() >= exchange.pictureSize() + transferOverhead)
        m_pictures.emplace_back(
            requested,
            ByteView(exchange.bytes()).range(pictureAt, pictureAt + exchange.pictureSize()).toBytes());
    if (isCatalogue(exchange))
        list(exchange);
    if (exchange.code() == code(Command::originRead) && exchange.isPictureTransfer() &&
        world::threadNumber() != 0)
        thread.refused = exchange.bytes().size() > headerSize && isTransferRefused(exchange);
    if (const auto offset = pieceOffset(exchange); offset && exchange.answered()) {
        if (*offset == 0)
            thread.pieces.clear();
        protocol::append(thread.pieces, jsonData(exchange.answer()));
        m_pictures.emplace_back(std::uint8_t{1}, thread.pieces);
    }
}

void AnswerJudge::list(const SeenExchange& catalogue) {
    const CatalogueForm form = formOf(catalogue);
    for (std::size_t i = 0; i < recordCount(catalogue); ++i) {
        const std::size_t at = recordsAt + i * form.recordSize;
        m_listed.emplace(catalogue.answer().at(at),
                         static_cast<std::uint32_t>(littleEndian(catalogue.answer(), at + form.sizeAt, 4)));
    }
}

std::optional<std::size_t> AnswerJudge::picturesListed() const {
    const auto found = m_threads.find(world::threadNumber());
    if (found == m_threads.end() || found->second.exchange.isAmbiguous() ||
        !isCatalogue(found->second.exchange))
        return std::nullopt;
    return recordCount(found->second.exchange);
}

void AnswerJudge::failed() {
    m_threads[world::threadNumber()].exchange.failed();
}

/// A command is broken off by the port, a stop, another user of the line or an answer that is too short.
std::string AnswerJudge::wrongFailure(const Thread& thread, const std::string& text) {
    static constexpr std::array<std::string_view, 4> reasons{"link is closing", "line is busy",
                                                             "download ended", "answer too short"};
    if (!text.starts_with("command failed:") || thread.exchange.hasFailed())
        return {};
    const bool known = std::any_of(reasons.begin(), reasons.end(), [&text](std::string_view reason) {
        return text.find(reason) != std::string::npos;
    });
    return known ? std::string() : "the log says \"" + text + "\", and the port has not failed";
}

std::string AnswerJudge::said(const std::string& line) {
    if (line.find("unknown error") != std::string::npos)
        return "the log tells an unknown error";
    Thread& thread = m_threads[world::threadNumber()];
    const std::string text = line.substr(0, line.find('\n'));
    if (const std::string wrong = wrongFailure(thread, text); !wrong.empty() || thread.exchange.isAmbiguous())
        return wrong;
    for (const Line& row : lines()) {
        if (row.whole ? text != row.text : !text.starts_with(row.text))
            continue;
        const unsigned commandCode = lineCode(thread.exchange);
        const bool same = row.codes.empty() ||
                          std::find(row.codes.begin(), row.codes.end(), commandCode) != row.codes.end();
        const bool begun = same && !thread.prepares && !thread.concluded && !thread.exchange.hasFailed();
        thread.concluded = true;
        if (row.fails && !begun)
            return {}; // a command that was stopped, or whose port failed
        return same && row.holds(thread.exchange)
                   ? std::string()
                   : "the log says \"" + text + "\" after another answer to command " + hex(commandCode);
    }
    return {};
}

std::string AnswerJudge::told(const std::string& command, const std::string& wordsOfEnd) const {
    const auto found = m_threads.find(world::threadNumber());
    if (found == m_threads.end() || found->second.prepares || found->second.exchange.hasFailed() ||
        found->second.exchange.isAmbiguous())
        return {};
    const SeenExchange& exchange = found->second.exchange;
    const auto name = std::find_if(commandNames().begin(), commandNames().end(),
                                   [&](const CommandName& each) { return command.starts_with(each.text); });
    const auto* const end = std::find_if(
        words.begin(), words.end(), [&](const Words& each) { return wordsOfEnd.starts_with(each.text); });
    if (name == commandNames().end() || end == words.end())
        return {};
    const bool same =
        std::find(name->codes.begin(), name->codes.end(), lineCode(exchange)) != name->codes.end();
    return !same || end->holds(exchange)
               ? std::string()
               : command + " ended with \"" + wordsOfEnd + "\" after another answer";
}

std::string AnswerJudge::toldUpload(bool success) {
    const bool succeeded = m_upload && m_upload->succeeded();
    const bool seen = m_upload.has_value();
    m_upload.reset();
    if (success == succeeded)
        return {};
    if (success)
        return seen ? "success of an upload that the camera did not confirm"
                    : "success of an upload that was not sent";
    return "failure of an upload that the camera confirmed";
}

void AnswerJudge::jobEnded() {
    for (auto& [number, thread] : m_threads)
        thread.refused = false;
}

const std::vector<std::string>& AnswerJudge::values(std::uint8_t property) const {
    static const std::vector<std::string> none;
    const auto found = m_values.find(property);
    return found == m_values.end() ? none : found->second;
}

} // namespace simulation
