// Waiting, reading and writing on a serial line by system calls: lineio_unix.cpp, lineio_windows.cpp.
#pragma once

#include "link/protocol/bytes.h"

#include <cstdint>
#include <optional>
#include <span>

namespace emulator {

using protocol::ByteView;

/// One thread waits, reads and writes; any thread may wake it. The line belongs to the caller, who opens it
/// so that neither reading nor writing blocks for long.
class LineIo {
public:
    /// A file descriptor, or a handle of Windows.
    using Line = std::intptr_t;
    static constexpr Line none = -1;
    /// Most bytes of one read.
    static constexpr std::size_t readSize = 4096;

    struct Readiness {
        bool reads = false;
        bool writes = false;
    };

    /// Throws std::runtime_error when the system has no pipe or event left.
    LineIo();
    ~LineIo();
    LineIo(const LineIo&) = delete;
    LineIo& operator=(const LineIo&) = delete;

    /// Ends the current wait, or the next one at once.
    void wake();
    /// Waits until the line is ready, until woken, or until the timeout (-1: none). A failed line is ready;
    /// the next read or write reports it.
    [[nodiscard]] Readiness wait(Line line, Readiness wanted, int timeoutMs);

    /// Number of bytes, which may be 0; nothing when the line is gone.
    [[nodiscard]] static std::optional<std::size_t> write(Line line, ByteView bytes);
    [[nodiscard]] static std::optional<std::size_t> read(Line line, std::span<std::uint8_t> buffer);

private:
    Line m_waker[2] = {none, none}; ///< a pipe's two ends, or one event
};

} // namespace emulator
