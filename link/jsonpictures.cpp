// Pictures and properties of cameras that speak JSON.
#include "link/camerasp.h"
#include "link/diagnostics.h"
#include "link/picturefile.h"
#include "link/protocol/jsonenvelope.h"
#include "link/runcommand.h"

using namespace protocol;

namespace {

constexpr const char* unanswered = "error";

void logLaterPieceFailed() {
    diagnostics::line("check2 failed");
    diagnostics::line("read failed");
}

/// All pieces in order; nothing after a failure, which is logged. Sets `logFailure` to the log line of the
/// current piece.
std::optional<Bytes> downloadPicture(CameraLine& line, std::function<void()>& logFailure) {
    const CameraLine::Answer first =
        line.exchange(rules::quentaFirstChunk, bytesOf(jsonChunkRequest(0, jsonFirstChunk)));
    if (!first.accepted) {
        logFailure();
        return std::nullopt;
    }
    diagnostics::line("first end");
    const ByteView body = jsonBody(first.bytes);
    Bytes picture = jsonPictureData(body).toBytes();
    const std::optional<int> stated = jsonPictureSize(body);
    if (!stated) {
        line.setEnd(CommandEnd::unusable);
        diagnostics::line("picture size missing");
        return std::nullopt;
    }
    logFailure = logLaterPieceFailed;
    const std::int64_t total = *stated; // may be negative: then the first piece was the whole picture
    for (std::int64_t offset = jsonFirstChunk; offset < total;) {
        const std::int64_t length = std::min(total - offset, jsonLaterChunk);
        const CameraLine::Answer later =
            line.exchange(rules::quentaLaterChunk, bytesOf(jsonChunkRequest(offset, length)));
        if (!later.accepted) {
            logFailure();
            return std::nullopt;
        }
        offset += length;
        append(picture, jsonPictureData(jsonBody(later.bytes)));
    }
    return picture;
}

} // namespace

std::string CameraSp::getQuentaModbusProperty(const std::string& request) {
    return runCommand(*m_line, LineUser::command, unanswered, std::string(), [&]() -> std::string {
        const std::string json = request.empty() ? jsonPropertyQuery() : request;
        const CameraLine::Answer answer = m_line->exchange(rules::quentaProperty, bytesOf(json));
        if (!answer.accepted) {
            diagnostics::line(unanswered);
            return {};
        }
        return jsonBody(answer.bytes).toText();
    });
}

bool CameraSp::getQuentaModbusPic(std::uint8_t number) {
    std::function<void()> logFailure = [] { diagnostics::line(unanswered); };
    const FailureLog log("command failed:", [&] { logFailure(); });
    return runCommand(*m_line, LineUser::download, log, false, [&] {
        const std::optional<Bytes> picture = downloadPicture(*m_line, logFailure);
        if (!picture)
            return false;
        const bool written = writePicture(std::to_string(number) + ".jpg", *picture, m_line->pictureFolder);
        if (!written)
            m_line->setEnd(CommandEnd::fileUnusable);
        return written;
    });
}
