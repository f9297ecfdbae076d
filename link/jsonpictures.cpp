// Pictures and properties of cameras that speak JSON.
#include "link/camerasp.h"
#include "link/diagnostics.h"
#include "link/guarded.h"
#include "link/picturefile.h"
#include "link/protocol/jsonenvelope.h"

using namespace protocol;

std::string CameraSp::getQuentaModbusProperty(const std::string& request) {
    return guarded(std::string(), [&]() -> std::string {
        const std::string json = request.empty() ? std::string(jsonPropertyQuery()) : request;
        const Answer answer = exchange(rules::quentaProperty, bytesOf(json));
        if (!answer.accepted) {
            diagnostics::line("error");
            return {};
        }
        return jsonBody(answer.bytes).toText();
    });
}

/// All pieces in order; nothing, with its line logged, when one is missing or the size is not told.
std::optional<Bytes> CameraSp::downloadJsonPicture() {
    const Answer first = exchange(rules::quentaFirstChunk, bytesOf(jsonChunkRequest(0, jsonFirstChunk)));
    if (!first.accepted) {
        diagnostics::line("error");
        return std::nullopt;
    }
    diagnostics::line("first end");
    const ByteView body = jsonBody(first.bytes);
    Bytes picture = jsonPictureData(body).toBytes();
    const std::optional<int> stated = jsonPictureSize(body);
    if (!stated) {
        diagnostics::line("picture size missing");
        return std::nullopt;
    }
    const std::int64_t total = *stated; // may be negative: then the first piece was the whole picture
    for (std::int64_t offset = jsonFirstChunk; offset < total;) {
        const std::int64_t length = std::min(total - offset, jsonLaterChunk);
        const Answer later = exchange(rules::quentaLaterChunk, bytesOf(jsonChunkRequest(offset, length)));
        if (!later.accepted) {
            diagnostics::line("check2 failed");
            diagnostics::line("read failed");
            return std::nullopt;
        }
        offset += length;
        append(picture, jsonPictureData(jsonBody(later.bytes)));
    }
    return picture;
}

bool CameraSp::getQuentaModbusPic(std::uint8_t number) {
    return guarded(false, [&] {
        const std::optional<Bytes> picture = downloadJsonPicture();
        return picture && writePicture(std::to_string(number) + ".jpg", *picture);
    });
}
