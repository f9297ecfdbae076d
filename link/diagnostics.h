// The link's diagnostic lines.
#pragma once

#include <mutex>
#include <ostream>

namespace diagnostics {

/// One line at a time, whichever thread writes it.
inline std::mutex& lineMutex() {
    static std::mutex mutex;
    return mutex;
}

/// Standard output unless setStream() was called.
[[nodiscard]] std::ostream& stream();
/// Where the lines go from now on; outlives every client. Called before the first client is made.
void setStream(std::ostream& stream);

/// Writes the pieces and a line break to the stream and flushes it, so that a reader of a pipe sees the
/// line when it is complete. Numbers come out in the stream's present base, which an upload switches to
/// hexadecimal for good; what has to be decimal is handed over as text.
template <typename... Pieces>
void line(const Pieces&... pieces) {
    const std::lock_guard lock(lineMutex());
    (stream() << ... << pieces) << '\n' << std::flush;
}

/// The switch to hexadecimal.
void useHexadecimal();

} // namespace diagnostics
