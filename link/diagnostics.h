// The link's diagnostic lines on standard output.
#pragma once

#include <iostream>
#include <mutex>

namespace diagnostics {

/// One line at a time, whichever thread writes it.
inline std::mutex& lineMutex() {
    static std::mutex mutex;
    return mutex;
}

/// Writes the pieces and a line break to standard output and flushes it, so that a reader of a pipe sees the
/// line when it is complete. Numbers come out in the stream's present base, which an upload switches to
/// hexadecimal for good; what has to be decimal is handed over as text.
template <typename... Pieces>
void line(const Pieces&... pieces) {
    const std::lock_guard lock(lineMutex());
    (std::cout << ... << pieces) << '\n' << std::flush;
}

/// The switch to hexadecimal.
void useHexadecimal();

} // namespace diagnostics
