#include "link/uploadfile.h"

#include "link/diagnostics.h"
#include "link/guarded.h"

#include <QCryptographicHash>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>

using namespace protocol;

namespace {

// Bytes between two checks of the stop flag: a few ms even on a slow stick.
constexpr std::size_t step = std::size_t{16} * 1024;

/// UTF-8 on every system, independent of the code page.
std::filesystem::path fromUtf8(const std::string& path) {
    return {std::u8string(path.begin(), path.end())};
}

UploadFileResult readWhole(std::ifstream& stream, const std::filesystem::path& path,
                           const FileProgress& progress) {
    stream.seekg(0, std::ios::end);
    const std::int64_t size = stream.tellg();
    diagnostics::line("fsize:", size);
    stream.seekg(0, std::ios::beg);
    if (!stream || size < 0 || std::filesystem::is_directory(path))
        return {CommandEnd::fileUnreadable, {}};
    if (size > std::numeric_limits<std::int32_t>::max())
        return {CommandEnd::fileTooLarge, {}};

    UploadFileResult result;
    const auto total = static_cast<std::size_t>(size);
    result.content.reserve(total);
    while (result.content.size() < total) {
        const std::size_t done = result.content.size();
        if (!progress(done, total))
            return {CommandEnd::stopped, {}};
        const std::size_t count = std::min(step, total - done);
        result.content.resize(done + count);
        stream.read(reinterpret_cast<char*>(result.content.data() + done),
                    static_cast<std::streamsize>(count));
        if (static_cast<std::size_t>(stream.gcount()) != count)
            return {CommandEnd::fileUnreadable, {}};
    }
    return result;
}

} // namespace

UploadFileResult readUploadFile(const std::string& utf8Path, const FileProgress& progress) {
    const std::filesystem::path path = fromUtf8(utf8Path);
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        return {CommandEnd::fileMissing, {}};
    // A file that does not fit into memory counts as unreadable.
    return guarded(UploadFileResult{CommandEnd::fileUnreadable, {}},
                   [&] { return readWhole(stream, path, progress); });
}

std::optional<UploadDigest> digestOf(ByteView content, const FileProgress& progress) {
    QCryptographicHash hash(QCryptographicHash::Md5);
    for (std::size_t done = 0; done < content.size(); done += step) {
        if (!progress(done, content.size()))
            return std::nullopt;
        const ByteView piece = content.range(done, done + step);
        hash.addData(QByteArrayView(piece.begin(), static_cast<qsizetype>(piece.size())));
    }
    const QByteArray digest = hash.result();
    return UploadDigest{{digest.begin(), digest.end()}, digest.toHex().toStdString()};
}
