// Reading a file for an upload.
#pragma once

#include "link/commandreport.h"
#include "link/protocol/bytes.h"

#include <functional>
#include <optional>
#include <string>

/// Progress of reading or digesting a file in bytes; called at least every 50 ms unless the disk is slow.
/// False ends the work.
using FileProgress = std::function<bool(std::uint64_t done, std::uint64_t total)>;

/// Result of reading a file.
struct UploadFileResult {
    CommandEnd end =
        CommandEnd::done;    ///< fileMissing (nothing was logged), fileTooLarge, fileUnreadable, stopped
    protocol::Bytes content; ///< the whole file, when done
};

/// Reads the file at a UTF-8 path and logs "fsize:" with its size. Announcements carry the size as a signed
/// 32-bit count, so 2 GiB - 1 is the most that can be uploaded.
[[nodiscard]] UploadFileResult readUploadFile(const std::string& utf8Path, const FileProgress& progress);

struct UploadDigest {
    protocol::Bytes bytes; ///< MD5, 16 raw bytes
    std::string text;      ///< the same in 32 lower-case hexadecimal digits
};

/// Nothing when the progress ended it.
[[nodiscard]] std::optional<UploadDigest> digestOf(protocol::ByteView content, const FileProgress& progress);
