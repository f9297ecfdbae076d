// Uploads: one raw-chunk upload with a description per kind of file, and the packet upload of V1 cameras.
#include "link/protocol/uploads.h"

#include "link/camerasp.h"
#include "link/diagnostics.h"
#include "link/runcommand.h"
#include "link/uploadfile.h"

#include <algorithm>

using namespace protocol;
using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds pauseAfterAnnouncement{pauseAfterAnnouncementMs};
constexpr auto pauseBetweenChunks = 1000ns;
constexpr auto v1PauseBetweenAnnouncements = 50ms;
constexpr auto v1PauseAfterAnnouncements = 1s;
constexpr auto v1PauseBeforePacket = 30ms;
constexpr std::uint8_t v1NoResult = 0xFF; // as bad as any above the last good one
constexpr const char* v1UnansweredText = "appupdateV1 queryCanUpdate checkfailed";

/// Differences of the three raw-chunk uploads.
struct UploadKind {
    const ExchangeRule& rule;
    bool flushesChunks;
    int verdictTries;           ///< 0: no verdict is awaited
    const char* cannotOpenText; ///< thrown
    const char* digestTag;
    const char* unansweredText;
    const char* canUpdateTag;
    const char* cannotUpdateText;
    const char* offsetTag;
    const char* shortWriteTag;
    const char* shortWriteTargetTag;
    const char* noVerdictText;

    [[nodiscard]] bool named() const { return isNamed(rule.command); }
};

/// An upload of any kind. The calling thread has the turn on the line.
class Upload {
public:
    /// Reads the file; failed() gives the reason of a failure.
    Upload(CameraLine& line, const std::string& path);

    [[nodiscard]] CommandEnd failed() const { return m_file.end; }
    [[nodiscard]] ByteView content() const { return m_file.content; }
    [[nodiscard]] std::uint32_t size() const { return static_cast<std::uint32_t>(m_file.content.size()); }
    /// Throws LinkStopped if the link is closed meanwhile.
    [[nodiscard]] UploadDigest digest();
    /// Starts counting the file's bytes.
    void beginTransfer();

private:
    [[nodiscard]] FileProgress countFrom(std::uint64_t firstByte);

    CameraLine& m_line;
    TransferScope m_scope;
    UploadFileResult m_file;
};

Upload::Upload(CameraLine& line, const std::string& path)
    : m_line(line), m_scope(line.progress, TransferProgress::Phase::reading, 0),
      m_file(readUploadFile(path, countFrom(0))) {}

/// The file is read, then digested.
FileProgress Upload::countFrom(std::uint64_t firstByte) {
    return [this, firstByte](std::uint64_t done, std::uint64_t total) {
        m_line.progress.total = 2 * total;
        m_line.progress.done = firstByte + done;
        return !m_line.stopRequested();
    };
}

UploadDigest Upload::digest() {
    std::optional<UploadDigest> digest = digestOf(content(), countFrom(size()));
    if (!digest)
        throw LinkStopped();
    return std::move(*digest);
}

void Upload::beginTransfer() {
    m_line.progress.done = 0;
    m_line.progress.total = size();
    m_line.progress.phase = TransferProgress::Phase::announcing;
}

bool appCanUpdate(ByteView answer, std::uint32_t& offset) {
    offset = answer.get(inFrame(image_answer::offset));
    return answer.get(inFrame(image_answer::status)) == answer_result::success;
}

/// Resume offset, signed. Nothing without an answer or, for a model, after a refusal. An image is sent
/// although the camera says that it cannot update: cameras say so and take it.
std::optional<std::int32_t> announce(CameraLine& line, const UploadKind& kind, ByteView payload) {
    ExchangeRule rule = kind.rule;
    rule.timeoutMs = kept; // set before the digest was made
    const CameraLine::Answer answer = line.exchange(rule, payload);
    if (!answer.accepted) {
        diagnostics::line(kind.unansweredText);
        return std::nullopt;
    }
    line.pause(pauseAfterAnnouncement);
    std::uint32_t offset = 0;
    if (kind.named()) {
        const ByteView view(answer.bytes);
        const unsigned type = view.get(inFrame(named_answer::type));
        const unsigned result = view.get(inFrame(named_answer::result));
        if (result != answer_result::success || type != named_answer::announcementType) {
            line.setEnd(CommandEnd::refused);
            diagnostics::line(kind.cannotUpdateText, result, "  ", type);
            return std::nullopt;
        }
        offset = view.get(inFrame(named_answer::offset));
        diagnostics::line(kind.canUpdateTag, "0"); // always a literal zero
    } else if (appCanUpdate(answer.bytes, offset)) {
        diagnostics::line(kind.canUpdateTag, static_cast<std::int32_t>(offset));
    } else {
        diagnostics::line(kind.cannotUpdateText);
    }
    diagnostics::line(kind.offsetTag, static_cast<std::int32_t>(offset));
    return static_cast<std::int32_t>(offset);
}

/// Sends raw slices of the file, neither framed nor acknowledged. A short write is logged but not repeated:
/// the camera finds the gap by the digest and asks for the rest at the next upload. False after such a write.
bool sendChunks(CameraLine& line, const UploadKind& kind, ByteView file, std::size_t offset) {
    TransferProgress& progress = line.progress;
    // At most to the end of the file, at any resume offset.
    progress.startOffset = std::min(offset, file.size());
    progress.done = progress.startOffset.load();
    progress.phase = TransferProgress::Phase::sending;
    bool complete = true;
    while (offset < file.size()) {
        const ByteView chunk = file.range(offset, offset + rawChunkSize);
        if (kind.flushesChunks)
            line.flush();
        const std::size_t written = line.write(chunk);
        line.pause(pauseBetweenChunks);
        if (written != chunk.size()) {
            complete = false;
            diagnostics::line(kind.shortWriteTag, written, kind.shortWriteTargetTag, chunk.size());
        }
        offset += chunk.size();
        progress.done = offset;
    }
    return complete;
}

bool isGoodVerdict(const UploadKind& kind, ByteView answer) {
    if (!kind.named())
        return answer.get(inFrame(image_answer::status)) == answer_result::success;
    const std::uint8_t result = answer.get(inFrame(named_answer::result));
    const char type = static_cast<char>(answer.get(inFrame(named_answer::type)));
    diagnostics::line("update end-result:", unsigned{result}, "  type:", type);
    return result == answer_result::success;
}

bool awaitVerdict(CameraLine& line, const UploadKind& kind) {
    if (kind.verdictTries == 0) {
        line.setEnd(line.stopRequested() ? CommandEnd::stopped : CommandEnd::done);
        return !line.stopRequested(); // an interrupted upload is no success
    }
    line.progress.phase = TransferProgress::Phase::awaitingVerdict;
    Bytes answer;
    if (!line.readAnswer(answer, rules::verdictReadSize, kind.verdictTries, frameForm)) {
        line.setEnd(CommandEnd::noVerdict);
        diagnostics::line(kind.noVerdictText);
        return false;
    }
    const bool good = isGoodVerdict(kind, answer);
    line.setEnd(good ? CommandEnd::done : CommandEnd::verdictBad);
    return good;
}

/// Logs the current text after an exception of the port.
FailureLog logOfPhase(const char* const& failureText) {
    return {"command failed:", [&failureText] {
                if (failureText != nullptr)
                    diagnostics::line(failureText);
            }};
}

/// Announcement to verdict. Sets `failureText` to the line of the current phase.
bool transfer(CameraLine& line, const UploadKind& kind, Upload& upload, const std::string& name,
              const char*& failureText) {
    if (kind.flushesChunks)
        line.beginLowLatency();
    line.setTimeouts(*kind.rule.timeoutMs, *kind.rule.timeoutMs);
    const UploadDigest digest = upload.digest();
    diagnostics::line(kind.digestTag, digest.text);
    upload.beginTransfer();
    const std::optional<std::int32_t> offset =
        announce(line, kind,
                 kind.named() ? buildNamedAnnouncement(upload.size(), digest.bytes, name)
                              : buildAnnouncement(upload.size(), digest.bytes));
    if (!offset)
        return false;
    failureText = kind.noVerdictText;
    const bool beyondFile = *offset < 0 || static_cast<std::uint32_t>(*offset) > upload.size();
    bool success = false;
    // An offset of 2 GiB or more reads as negative.
    if (*offset >= 0) {
        const bool complete = sendChunks(line, kind, upload.content(), static_cast<std::size_t>(*offset));
        success = awaitVerdict(line, kind);
        const bool confirmed = success && kind.verdictTries > 0;
        if (!complete && !confirmed && line.end() != CommandEnd::stopped)
            line.setEnd(CommandEnd::writtenShort);
    }
    if (beyondFile)
        line.setEnd(CommandEnd::offsetBeyondFile);
    return success;
}

/// One raw-chunk upload. Throws kind.cannotOpenText if the file cannot be opened.
bool uploadRaw(CameraLine& line, const UploadKind& kind, const std::string& path, const std::string& name) {
    bool missing = false;
    const char* failureText = kind.unansweredText;
    const bool success = runCommand(line, LineUser::upload, logOfPhase(failureText), false, [&] {
        Upload upload(line, path);
        if (upload.failed() != CommandEnd::done) {
            missing = upload.failed() == CommandEnd::fileMissing;
            line.setEnd(upload.failed());
            return false;
        }
        return transfer(line, kind, upload, name, failureText);
    });
    if (missing)
        throw kind.cannotOpenText; // the only exception that leaves a command
    return success;
}

// --- second protocol -------------------------------------------------------------------------------------

/// Always five announcements, answered or not; only the answer to the last one counts.
std::optional<Bytes> announceV1(CameraLine& line, const Bytes& request) {
    for (std::uint32_t attempt = 1;; ++attempt) {
        CameraLine::Answer answer = line.exchangeRequest(rules::appUpdateV1Announce, request);
        const bool last = attempt == appV1Announcements;
        if (answer.accepted && last)
            return std::move(answer.bytes);
        if (answer.accepted)
            continue;
        diagnostics::line(v1UnansweredText);
        if (last)
            return std::nullopt;
        line.pause(v1PauseBetweenAnnouncements);
    }
}

/// Resume offset; nothing after a refusal or a short answer.
std::optional<std::uint32_t> offsetV1(CameraLine& line, ByteView answer) {
    if (!answer.has(inFrame(named_answer::offset))) {
        line.setEnd(CommandEnd::unusable);
        return std::nullopt;
    }
    const std::uint32_t offset = answer.get(inFrame(named_answer::offset));
    if (answer.get(inFrame(named_answer::result)) != answer_result::success) {
        line.setEnd(CommandEnd::refused);
        diagnostics::line("cant update");
        return std::nullopt;
    }
    diagnostics::line("can update,offset is ", offset);
    return offset;
}

/// Always eleven closing packets; the last received result counts.
std::uint8_t sendClosingPackets(CameraLine& line, std::uint32_t fileSize) {
    diagnostics::line("after data-send2");
    line.progress.phase = TransferProgress::Phase::awaitingVerdict;
    const Bytes request = line.buildRequest(rules::appUpdateV1Closing, buildPacket(fileSize, {}));
    std::uint8_t packageResult = v1NoResult;
    for (std::uint32_t sent = 0; sent < appV1ClosingPackets; ++sent) {
        const CameraLine::Answer answer = line.exchangeRequest(rules::appUpdateV1Closing, request);
        if (!answer.accepted) {
            diagnostics::line("continue last cmd");
        } else if (answer.bytes.size() <= answer_layout::status.offset) {
            diagnostics::line("packageResult little2");
        } else {
            packageResult = ByteView(answer.bytes).get(answer_layout::status);
            diagnostics::line("now packageResult:", unsigned{packageResult});
        }
    }
    return packageResult;
}

/// Sends no data packets: the camera must hold the whole file.
bool logPacketInsteadOfSending(CameraLine& line, ByteView file, std::uint32_t offset) {
    const Bytes packet = buildPacket(offset, file.range(offset, offset + packetDataSize));
    line.pause(v1PauseBeforePacket);
    diagnostics::line("data cmd:", paddedHexText(line.buildRequest(rules::appUpdateV1Closing, packet)));
    line.setEnd(CommandEnd::dataNotSupported);
    return false;
}

bool closeV1(CameraLine& line, std::uint32_t offset, std::uint32_t size) {
    diagnostics::line("after data-send");
    const std::uint8_t packageResult = offset == size ? sendClosingPackets(line, size) : v1NoResult;
    diagnostics::line("after data-send3");
    line.setEnd(offset > size                          ? CommandEnd::offsetBeyondFile
                : packageResult == v1NoResult          ? CommandEnd::noVerdict
                : packageResult > packetLastGoodResult ? CommandEnd::verdictBad
                                                       : CommandEnd::done);
    if (packageResult > packetLastGoodResult)
        return false;
    diagnostics::line("packageResult:", unsigned{packageResult});
    return true;
}

bool transferV1(CameraLine& line, Upload& upload, const std::string& fileName, const char*& failureText) {
    line.setTimeouts(appV1AnnounceTimeoutMs, appV1AnnounceTimeoutMs);
    const UploadDigest digest = upload.digest();
    upload.beginTransfer();
    const Bytes request = line.buildRequest(rules::appUpdateV1Announce,
                                            buildNamedAnnouncement(upload.size(), digest.bytes, fileName));
    diagnostics::line("1D cmd:", paddedHexText(request));
    const std::optional<Bytes> answer = announceV1(line, request);
    if (!answer)
        return false;
    failureText = nullptr;
    line.pause(v1PauseAfterAnnouncements);
    const std::optional<std::uint32_t> offset = offsetV1(line, *answer);
    if (!offset)
        return false;
    line.setTimeouts(appV1ReadTimeoutMs, appV1WriteTimeoutMs);
    if (*offset < upload.size())
        return logPacketInsteadOfSending(line, upload.content(), *offset);
    return closeV1(line, *offset, upload.size());
}

} // namespace

bool CameraSp::appUpdate() {
    static constexpr UploadKind kind{
        .rule = rules::appUpdate,
        .flushesChunks = false,
        .verdictTries = rules::appVerdictTries,
        .cannotOpenText = "file cant open in appUpdate",
        .digestTag = "md5Value2:",
        .unansweredText = "appupdate queryCanUpdate checkfailed",
        .canUpdateTag = "can update,offset is ",
        .cannotUpdateText = "cant update",
        .offsetTag = "offset:",
        .shortWriteTag = "Warning :write length !=targetGap  writeLength:",
        .shortWriteTargetTag = " targetgap:",
        .noVerdictText = "appupdate update-end failed",
    };
    return uploadRaw(*m_line, kind, m_texts.appPath, {});
}

bool CameraSp::firewareUpdate() {
    static constexpr UploadKind kind{
        .rule = rules::firewareUpdate,
        .flushesChunks = true,
        .verdictTries = 0,
        .cannotOpenText = "file cant open in firewareUpdate",
        .digestTag = "md5Value:",
        .unansweredText = "firewareupdate queryfireware cmd checkfailed",
        .canUpdateTag = "fireware can update,offset is ",
        .cannotUpdateText = "fireware cant update",
        .offsetTag = "fireware offset:",
        .shortWriteTag = "warning:::::: writeLength:",
        .shortWriteTargetTag = "  targetGap:",
        .noVerdictText = nullptr,
    };
    return uploadRaw(*m_line, kind, m_texts.firewarePath, {});
}

bool CameraSp::modelUpdate() {
    static constexpr UploadKind kind{
        .rule = rules::modelUpdate,
        .flushesChunks = true,
        .verdictTries = rules::modelVerdictTries,
        .cannotOpenText = "file cant open in appUpdate", // the model shares the application's text
        .digestTag = "md5Value2:",
        .unansweredText = "updateModel queryModelInfo checkfailed",
        .canUpdateTag = "can update2,offset is ",
        .cannotUpdateText = "cant update:",
        .offsetTag = "offset:",
        .shortWriteTag = "Warning :write length !=targetGap  writeLength:",
        .shortWriteTargetTag = " targetgap:",
        .noVerdictText = "modelupdate update-end failed2",
    };
    return uploadRaw(*m_line, kind, m_texts.modelPath, m_texts.modelName);
}

bool CameraSp::appUpdateV1(const std::string& fileName, const std::string& path) {
    const char* failureText = v1UnansweredText;
    return runCommand(*m_line, LineUser::upload, logOfPhase(failureText), false, [&] {
        Upload upload(*m_line, path);
        if (upload.failed() == CommandEnd::fileMissing)
            diagnostics::line("appupdate2 file cant open");
        if (upload.failed() != CommandEnd::done) {
            m_line->setEnd(upload.failed());
            return false;
        }
        return transferV1(*m_line, upload, fileName, failureText);
    });
}
