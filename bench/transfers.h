// Picture downloads and uploads, each against a bare program on the same library and line.
#pragma once

#include "bench/results.h"

#include <cstdint>

namespace bench {

struct TransferSizes {
    std::uint32_t picture;           ///< bytes
    std::uint32_t file;              ///< bytes of an upload
    std::uint32_t pace = 46080;      ///< bytes per second
    std::uint32_t fastPace = 460800; ///< the same, ten times
    int rounds = 3;                  ///< downloads of which the median counts
};

void measureDownloads(Results& results, const TransferSizes& sizes);
/// In the working directory, which must be an empty one of its own.
void measureUploads(Results& results, const TransferSizes& sizes);
/// A system image of a quarter of the file's size behind a modelled USB adapter, whose driver knows low
/// latency or not. In the working directory, as above.
void measureAdapter(Results& results, const TransferSizes& sizes);
/// Uploads of 64 KiB, four times that and so on up to `largest` bytes, as fast as the line goes: what a unit
/// costs as the files grow. In the working directory, as above.
void measureUploadGrowth(Results& results, std::uint32_t largest);

} // namespace bench
