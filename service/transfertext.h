// The progress of a transfer in words and numbers.
#pragma once

#include "link/transferprogress.h"

#include <QString>

/// The numbers of one moment.
struct TransferSnapshot {
    TransferProgress::Phase phase = TransferProgress::Phase::idle;
    std::uint64_t startOffset = 0; ///< bytes
    std::uint64_t done = 0;        ///< bytes, startOffset included
    std::uint64_t total = 0;       ///< bytes
    double seconds = 0;            ///< since sending began
};

[[nodiscard]] TransferSnapshot snapshotOf(const TransferProgress& progress);

/// Percent of what there was to send when sending began, 0 to 100.
[[nodiscard]] int transferPercent(const TransferSnapshot& snapshot);
/// One line: phase, bytes done of bytes, rate, time left, and where a resumed upload went on.
[[nodiscard]] QString transferText(const TransferSnapshot& snapshot);
