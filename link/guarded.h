// Turns an exception into a log line and a failure value.
#pragma once

#include "link/diagnostics.h"

#include <optional>
#include <string>
#include <utility>

/// The exception that is being handled, in words.
struct ExceptionWords {
    std::optional<std::string> text; ///< its message or the thrown plain text; none for any other type
    std::optional<int> portError;    ///< error number of a serial::IOException
};

/// Call both in a handler.
[[nodiscard]] ExceptionWords describeException();
[[nodiscard]] std::string exceptionText();

/// Runs the body. Logs an exception in one line and returns the failure value.
template <typename Result, typename Body>
Result guarded(Result failure, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        diagnostics::line("command failed:", exceptionText());
    }
    return failure;
}
