#include "tests/simulation/answerjudge.h"

#include "link/protocol/commands.h"
#include "tests/simulation/world/scheduler.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

using protocol::Bytes;
using protocol::ByteView;

namespace simulation {

namespace {

using protocol::code;
using protocol::Command;

constexpr std::size_t transferOverhead = 11;
constexpr std::size_t pictureAt = 9;
constexpr std::size_t jsonTextAt = 12;

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

/// A line of the log and the exchange that it follows.
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
    thread.series = thread.exchange.isPictureTransfer() && next.isPictureTransfer();
    thread.exchange = next;
    thread.garbage = 0;
    thread.stopped = false;
    thread.emptyReads.reset();
    m_writers[port] = world::threadNumber();
    if (!next.isAmbiguous())
        wrong += followUpload(next);
    if (!hasRightCheck(bytes, json))
        wrong += "a request with a wrong check code";
    return wrong;
}

std::string AnswerJudge::followUpload(const SeenExchange& next) {
    const bool goesOn = !next.isUpload() && m_upload && m_upload->goesOn(next);
    if (next.isUpload() || (next.code() == code(Command::appV1Announce) && !goesOn))
        m_upload.emplace(next, m_file);
    return m_upload && m_upload->port() == next.port() && world::threadNumber() != 0
               ? m_upload->wrongRequest(next)
               : std::string();
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

/// Each byte of garbage is logged before the next read.
std::string AnswerJudge::wrongGarbage(const Thread& thread) {
    const SeenExchange& exchange = thread.exchange;
    const bool logs = !thread.stopped && !exchange.isAmbiguous() &&
                      exchange.code() != code(Command::originRead) &&
                      exchange.code() != code(Command::readV1);
    return logs && exchange.garbage() != thread.garbage ? "O6: the log tells other garbage than came" : "";
}

/// A download that was stopped reads on only as long as bytes come.
std::string AnswerJudge::wrongRest(Thread& thread) {
    constexpr int mostEmptyReads = 3;
    return thread.emptyReads && ++*thread.emptyReads > mostEmptyReads ? "O3: a stopped download goes on" : "";
}

std::string AnswerJudge::reads(const std::string& port) {
    if (const auto writer = m_writers.find(port);
        writer != m_writers.end() && writer->second != world::threadNumber())
        return "O2: a user of the line reads the answer to another";
    const auto thread = m_threads.find(world::threadNumber());
    if (thread == m_threads.end())
        return {};
    if (thread->second.exchange.port() == port) {
        const std::string wrong = wrongGarbage(thread->second) + wrongRest(thread->second);
        if (!wrong.empty())
            return wrong;
    }
    if (!thread->second.exchange.isUpload() || !m_upload || m_upload->port() != port)
        return {};
    const std::string wrong = m_upload->goesOnReading();
    return wrong.empty() ? wrong : "O1: " + wrong;
}

void AnswerJudge::received(const Bytes& bytes) {
    Thread& thread = m_threads[world::threadNumber()];
    thread.exchange.received(bytes);
    if (thread.emptyReads)
        thread.emptyReads = 0;
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
        world::threadNumber() != 0) {
        // A capture that does not know its picture asks for one of no size.
        thread.refused =
            exchange.pictureSize() > 0 && exchange.bytes().size() > headerSize && isTransferRefused(exchange);
    }
    if (const auto offset = pieceOffset(exchange); offset && exchange.answered()) {
        if (*offset == 0)
            thread.pieces.clear();
        protocol::append(thread.pieces, jsonData(exchange.answer()));
        const std::string request = textOf(exchange.payload());
        const long size =
            *offset == 0 ? numberIn(textOf(exchange.answer()), "\"size\":").value_or(0) : thread.pictureSize;
        if (*offset + numberIn(request, "\"length\":").value_or(0) >= size)
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
    SeenExchange& exchange = m_threads[world::threadNumber()].exchange;
    exchange.failed();
    if (m_upload && m_upload->port() == exchange.port())
        m_upload->portFailed();
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
    if (line.starts_with("check data"))
        ++thread.garbage;
    if (line.find("download ended") != std::string::npos)
        thread.stopped = true;
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

void AnswerJudge::downloadStopped() {
    for (auto& [number, thread] : m_threads) {
        const bool underWay =
            thread.exchange.bytes().size() < thread.exchange.pictureSize() + transferOverhead;
        if (number != 0 && thread.series && underWay && !thread.exchange.hasFailed())
            thread.emptyReads = 0;
    }
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
