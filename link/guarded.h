// The edge of every command: what is thrown inside becomes the command's failure value.
#pragma once

#include "link/diagnostics.h"

#include <exception>
#include <utility>

/// Runs a command's body. A plain text, a standard exception (the serial library's among them) or anything
/// else thrown in it is logged in one line and answered with the failure value.
template <typename Result, typename Body>
Result guarded(Result failure, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (const char* text) {
        diagnostics::line("command failed:", text);
    } catch (const std::exception& error) {
        diagnostics::line("command failed:", error.what());
    } catch (...) {
        diagnostics::line("command failed:unknown error");
    }
    return failure;
}
