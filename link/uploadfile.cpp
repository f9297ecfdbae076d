#include "link/uploadfile.h"

#include "link/diagnostics.h"
#include "link/guarded.h"

#include <QCryptographicHash>

#include <filesystem>
#include <fstream>
#include <limits>

using namespace protocol;

namespace {

/// A UTF-8 text names the file on every system, whatever its narrow code page is.
std::filesystem::path fromUtf8(const std::string& path) {
    return {std::u8string(path.begin(), path.end())};
}

/// Nothing when this is no file of a size that can be announced, or when it cannot be read to its end.
std::optional<UploadFile> readWhole(std::ifstream& stream) {
    stream.seekg(0, std::ios::end);
    const std::int64_t size = stream.tellg();
    diagnostics::line("fsize:", size);
    stream.seekg(0, std::ios::beg);

    if (!stream || size < 0 || size > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    UploadFile file;
    file.content.resize(static_cast<std::size_t>(size));
    stream.read(reinterpret_cast<char*>(file.content.data()), size);
    if (stream.gcount() != size)
        return std::nullopt;
    const QByteArrayView content(file.content.data(), static_cast<qsizetype>(file.content.size()));
    const QByteArray digest = QCryptographicHash::hash(content, QCryptographicHash::Md5);
    file.digest.assign(digest.begin(), digest.end());
    file.digestText = digest.toHex().toStdString();
    return file;
}

} // namespace

UploadFileResult readUploadFile(const std::string& utf8Path) {
    std::ifstream stream(fromUtf8(utf8Path), std::ios::binary);
    if (!stream)
        return {};
    // A file that does not fit into the memory is one that cannot be read.
    return {true, guarded(std::optional<UploadFile>(), [&stream] { return readWhole(stream); })};
}
