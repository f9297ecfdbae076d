// Runs a command: turn, report, exceptions.
#pragma once

#include "link/cameraline.h"

#include <functional>
#include <utility>

/// Log lines of a command after an exception: the tag with the exception's text, then, if the port threw it,
/// the command's own line.
struct FailureLog {
    FailureLog() = default;
    /// The text is the command's own line.
    FailureLog(const char* text);
    FailureLog(const char* tag, std::function<void()> line) : exceptionTag(tag), ownLine(std::move(line)) {}

    const char* exceptionTag = "command failed:";
    std::function<void()> ownLine; ///< may be empty
};

/// A running command: holds the turn and reports its end to this thread's report scopes.
class RunningCommand {
public:
    RunningCommand(CameraLine& line, LineUser user) : m_line(line), m_turn(line.take(user)) {}
    ~RunningCommand();
    RunningCommand(const RunningCommand&) = delete;
    RunningCommand& operator=(const RunningCommand&) = delete;

    /// Throws if the line was refused.
    void begin();
    /// Logs the current exception. Call in a handler.
    void fail(const FailureLog& log);

private:
    CameraLine& m_line;
    LineTurn::Hold m_turn;
    CommandReport m_report; ///< after an exception; else the line has the end
    bool m_failed = false;
};

/// Runs a command's body with a turn on the line. Logs an exception and returns the failure value.
template <typename Result, typename Body>
Result runCommand(CameraLine& line, LineUser user, const FailureLog& log, Result failure, Body&& body) {
    RunningCommand command(line, user);
    try {
        command.begin();
        return std::forward<Body>(body)();
    } catch (...) {
        command.fail(log);
    }
    return failure;
}
