// Progress of a transfer.
#pragma once

#include <atomic>
#include <cstdint>

/// Written by the thread of the upload or download, read by any thread. Values read together may be from
/// different moments.
struct TransferProgress {
    enum class Phase : int { idle, reading, announcing, sending, awaitingVerdict, downloading };

    std::atomic<Phase> phase{Phase::idle};
    std::atomic<std::uint64_t> startOffset{0}; ///< bytes that the camera already held (uploads), else 0
    std::atomic<std::uint64_t> done{0};        ///< bytes, startOffset included
    std::atomic<std::uint64_t> total{0};       ///< bytes
};

/// Marks a transfer as running while it lives.
class TransferScope {
public:
    TransferScope(TransferProgress& progress, TransferProgress::Phase phase, std::uint64_t total)
        : m_progress(progress) {
        progress.startOffset = 0;
        progress.done = 0;
        progress.total = total;
        progress.phase = phase;
    }
    ~TransferScope() { m_progress.phase = TransferProgress::Phase::idle; }
    TransferScope(const TransferScope&) = delete;
    TransferScope& operator=(const TransferScope&) = delete;

private:
    TransferProgress& m_progress;
};
