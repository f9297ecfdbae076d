// Turns an exception into a log line and a failure value.
#pragma once

#include "link/diagnostics.h"

#include <string>
#include <utility>

/// The exception at hand in words: its message, or the plain text that was thrown. To be called in a handler.
[[nodiscard]] std::string exceptionText();

/// Runs the body; logs what is thrown in it in one line and answers with the failure value.
template <typename Result, typename Body>
Result guarded(Result failure, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        diagnostics::line("command failed:", exceptionText());
    }
    return failure;
}
