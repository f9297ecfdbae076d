// Waiting for a serial line and moving its bytes, as the system does it: lineio_unix.cpp, lineio_windows.cpp.
#pragma once

#include "link/protocol/bytes.h"

#include <cstdint>
#include <optional>
#include <span>

namespace emulator {

using protocol::ByteView;

/// One thread waits and moves bytes; any thread may wake it. The line itself belongs to the caller, who
/// opened it so that neither reading nor writing blocks for long.
class LineIo {
public:
    /// A file descriptor, or what Windows calls a handle.
    using Line = std::intptr_t;
    static constexpr Line none = -1;

    struct Readiness {
        bool reads = false;
        bool writes = false;
    };

    /// Throws std::system_error when the system has nothing left to wake with.
    LineIo();
    ~LineIo();
    LineIo(const LineIo&) = delete;
    LineIo& operator=(const LineIo&) = delete;

    /// Ends the present wait, or the next one at once.
    void wake();
    /// Waits for what is wanted, until woken or for the time in ms (-1: for ever). A failed line is ready:
    /// the next read or write tells.
    [[nodiscard]] Readiness wait(Line line, Readiness wanted, int timeoutMs);

    /// How many bytes were moved, which may be none; nothing when the line is gone.
    [[nodiscard]] static std::optional<std::size_t> write(Line line, ByteView bytes);
    [[nodiscard]] static std::optional<std::size_t> read(Line line, std::span<std::uint8_t> buffer);

private:
    Line m_waker[2] = {none, none}; ///< a pipe's two ends, or one event
};

} // namespace emulator
