// The link's diagnostic lines.
#pragma once

#include <mutex>
#include <ostream>

namespace diagnostics {

/// Serialises lines of all threads.
inline std::mutex& lineMutex() {
    static std::mutex mutex;
    return mutex;
}

/// Standard output unless setStream() was called.
[[nodiscard]] std::ostream& stream();
/// Where the lines go from now on; outlives every client. Called before the first client is made.
void setStream(std::ostream& stream);

/// Writes the pieces and a line break to the stream and flushes it, so that a reader of a pipe
/// sees whole lines. Numbers have the stream's base, which an upload switches to hexadecimal for good; pass
/// numbers that stay decimal as text.
template <typename... Pieces>
void line(const Pieces&... pieces) {
    const std::lock_guard lock(lineMutex());
    (stream() << ... << pieces) << '\n' << std::flush;
}

/// The switch to hexadecimal.
void useHexadecimal();

} // namespace diagnostics
