// Reading a file that is to be uploaded.
#pragma once

#include "link/protocol/bytes.h"

#include <optional>
#include <string>

/// A whole file in memory with its digest; neither changes during an upload.
struct UploadFile {
    protocol::Bytes content;
    protocol::Bytes digest; ///< MD5, 16 raw bytes
    std::string digestText; ///< the same in 32 lower-case hexadecimal digits
};

/// What became of an attempt to read.
struct UploadFileResult {
    bool opened = false;            ///< false: the file could not be opened, nothing was logged
    std::optional<UploadFile> file; ///< empty: a directory, 2 GiB or more, or a read that failed
};

/// Reads the file at a UTF-8 path and logs "fsize:" with its size. Announcements carry the size as a signed
/// 32-bit count, so 2 GiB - 1 is the most that can be uploaded.
[[nodiscard]] UploadFileResult readUploadFile(const std::string& utf8Path);
