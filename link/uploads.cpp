// Uploads: one raw-chunk upload with a description per kind of file, and the packet upload of V1 cameras.
#include "link/protocol/uploads.h"

#include "link/camerasp.h"
#include "link/diagnostics.h"
#include "link/guarded.h"
#include "link/uploadfile.h"

#include <algorithm>

using namespace protocol;
using namespace std::chrono_literals;

/// What the three kinds of raw-chunk upload differ in.
struct CameraSp::UploadKind {
    const ExchangeRule& rule;
    bool named; ///< announced with a name, answered with type and result before the offset
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
};

namespace {

constexpr auto pauseAfterAnnouncement = 2s;
constexpr auto pauseBetweenChunks = 1000ns;
constexpr int v1Announcements = 5;
constexpr auto v1PauseBetweenAnnouncements = 50ms;
constexpr auto v1PauseAfterAnnouncements = 1s;
constexpr auto v1PauseBeforePacket = 30ms;
constexpr int v1ClosingPackets = 11;
constexpr std::uint8_t v1LastGoodResult = 1;
constexpr std::uint8_t v1NoResult = 0xFF; // as bad as any above the last good one

} // namespace

bool CameraSp::appUpdate() {
    static constexpr UploadKind kind{
        .rule = rules::appUpdate,
        .named = false,
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
    return upload(kind, m_appFilePath, {});
}

bool CameraSp::firewareUpdate() {
    static constexpr UploadKind kind{
        .rule = rules::firewareUpdate,
        .named = false,
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
        .noVerdictText = "",
    };
    return upload(kind, m_firewareFilePath, {});
}

bool CameraSp::modelUpdate() {
    static constexpr UploadKind kind{
        .rule = rules::modelUpdate,
        .named = true,
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
    return upload(kind, m_modelFilePath, m_modelName);
}

bool CameraSp::upload(const UploadKind& kind, const std::string& path, const std::string& name) {
    const UploadFileResult read = readUploadFile(path);
    if (!read.opened)
        throw kind.cannotOpenText; // the one failure that leaves a command
    if (!read.file)
        return false;
    return guarded(false, [&] {
        const UploadFile& file = *read.file;
        const TransferScope transfer(m_progress, TransferProgress::Phase::announcing, file.content.size());
        const auto size = static_cast<std::uint32_t>(file.content.size());
        diagnostics::line(kind.digestTag, file.digestText);
        const std::optional<std::int32_t> offset =
            announce(kind, kind.named ? buildNamedAnnouncement(size, file.digest, name)
                                      : buildAnnouncement(size, file.digest));
        // An offset beyond 31 bits reads as negative: no place in any file.
        if (!offset || *offset < 0)
            return false;
        sendChunks(kind, file.content, static_cast<std::size_t>(*offset));
        return awaitVerdict(kind);
    });
}

bool CameraSp::appCanUpdate(const std::vector<std::uint8_t>& answer, std::uint32_t& offset) const {
    const ByteView view(answer);
    offset = view.get(image_answer::offset);
    return view.get(image_answer::status) == 0;
}

/// The offset at which the camera wants the upload to go on, as a signed number; nothing when there is no
/// answer or, for a model, when the camera refuses. An image is sent even if the camera says that it cannot
/// update: cameras say so and take it.
std::optional<std::int32_t> CameraSp::announce(const UploadKind& kind, ByteView payload) {
    const Answer answer = exchange(kind.rule, payload);
    if (!answer.accepted) {
        diagnostics::line(kind.unansweredText);
        return std::nullopt;
    }
    pause(pauseAfterAnnouncement);
    std::uint32_t offset = 0;
    if (kind.named) {
        const ByteView view(answer.bytes);
        const unsigned type = view.get(named_answer::type);
        const unsigned result = view.get(named_answer::result);
        if (result != 0 || type != 1) {
            diagnostics::line(kind.cannotUpdateText, result, "  ", type);
            return std::nullopt;
        }
        offset = view.get(named_answer::offset);
        diagnostics::line(kind.canUpdateTag, "0"); // a literal zero, whatever the offset is
    } else if (appCanUpdate(answer.bytes, offset)) {
        diagnostics::line(kind.canUpdateTag, static_cast<std::int32_t>(offset));
    } else {
        diagnostics::line(kind.cannotUpdateText);
    }
    diagnostics::line(kind.offsetTag, static_cast<std::int32_t>(offset));
    return static_cast<std::int32_t>(offset);
}

/// Raw slices of the file, neither framed nor acknowledged. A short write is logged and not made good: the
/// camera finds the gap by the digest and asks for the rest at the next upload.
void CameraSp::sendChunks(const UploadKind& kind, ByteView file, std::size_t offset) {
    // No more than the file has, wherever the camera wants to go on.
    m_progress.startOffset = std::min(offset, file.size());
    m_progress.done = m_progress.startOffset.load();
    m_progress.phase = TransferProgress::Phase::sending;
    while (offset < file.size()) {
        const ByteView chunk = file.range(offset, offset + rawChunkSize);
        if (kind.flushesChunks)
            port().flush();
        const std::size_t written = port().write(chunk);
        pause(pauseBetweenChunks);
        if (written != chunk.size())
            diagnostics::line(kind.shortWriteTag, written, kind.shortWriteTargetTag, chunk.size());
        offset += chunk.size();
        m_progress.done = offset;
    }
}

bool CameraSp::awaitVerdict(const UploadKind& kind) {
    if (kind.verdictTries == 0)
        return !m_stop; // what was broken off is never called a success
    m_progress.phase = TransferProgress::Phase::awaitingVerdict;
    Bytes answer;
    if (!checkData(answer, rules::verdictReadSize, kind.verdictTries)) {
        diagnostics::line(kind.noVerdictText);
        return false;
    }
    const ByteView view(answer);
    if (!kind.named)
        return view.get(image_answer::status) == 0;
    const std::uint8_t result = view.get(named_answer::result);
    const char type = static_cast<char>(view.get(named_answer::type));
    diagnostics::line("update end-result:", unsigned{result}, "  type:", type);
    return result == 0;
}

// --- second protocol -------------------------------------------------------------------------------------

bool CameraSp::appUpdateV1(const std::string& fileName, const std::string& path) {
    const UploadFileResult read = readUploadFile(path);
    if (!read.opened)
        diagnostics::line("appupdate2 file cant open");
    if (!read.file)
        return false;
    return guarded(false, [&] {
        const UploadFile& file = *read.file;
        const TransferScope transfer(m_progress, TransferProgress::Phase::announcing, file.content.size());
        const auto size = static_cast<std::uint32_t>(file.content.size());
        port().setTimeouts(appV1AnnounceTimeoutMs, appV1AnnounceTimeoutMs);
        const Bytes announcementPayload = buildNamedAnnouncement(size, file.digest, fileName);
        diagnostics::line("1D cmd:",
                          paddedHexText(buildRequest(rules::appUpdateV1Announce, announcementPayload)));
        const std::optional<Bytes> answer = announceV1(announcementPayload);
        if (!answer)
            return false;
        pause(v1PauseAfterAnnouncements);
        const ByteView view(*answer);
        if (!view.has(named_answer::offset))
            return false;
        const std::uint32_t offset = view.get(named_answer::offset);
        if (view.get(named_answer::result) != 0) {
            diagnostics::line("cant update");
            return false;
        }
        diagnostics::line("can update,offset is ", offset);
        port().setTimeouts(appV1ReadTimeoutMs, appV1WriteTimeoutMs);
        if (offset < size) {
            // This version sends no data packets: the camera has to hold the whole file already.
            const Bytes packet =
                buildPacket(offset, ByteView(file.content).range(offset, offset + packetDataSize));
            pause(v1PauseBeforePacket);
            diagnostics::line("data cmd:", paddedHexText(buildRequest(rules::appUpdateV1Closing, packet)));
            return false;
        }
        diagnostics::line("after data-send");
        const std::uint8_t packageResult = offset == size ? sendClosingPackets(size) : v1NoResult;
        diagnostics::line("after data-send3");
        if (packageResult > v1LastGoodResult)
            return false;
        diagnostics::line("packageResult:", unsigned{packageResult});
        return true;
    });
}

/// Always five announcements, answered or not; only the answer to the last one counts.
std::optional<Bytes> CameraSp::announceV1(ByteView payload) {
    for (int attempt = 1;; ++attempt) {
        Answer answer = exchange(rules::appUpdateV1Announce, payload);
        const bool last = attempt == v1Announcements;
        if (answer.accepted && last)
            return std::move(answer.bytes);
        if (answer.accepted)
            continue;
        diagnostics::line("appupdateV1 queryCanUpdate checkfailed");
        if (last)
            return std::nullopt;
        pause(v1PauseBetweenAnnouncements);
    }
}

/// Always eleven closing packets; the last result that came is the one that counts.
std::uint8_t CameraSp::sendClosingPackets(std::uint32_t fileSize) {
    diagnostics::line("after data-send2");
    m_progress.phase = TransferProgress::Phase::awaitingVerdict;
    const Bytes payload = buildPacket(fileSize, {});
    std::uint8_t packageResult = v1NoResult;
    for (int sent = 0; sent < v1ClosingPackets; ++sent) {
        const Answer answer = exchange(rules::appUpdateV1Closing, payload);
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
