// How every command runs: its turn on the line, its report, and what becomes of an exception in it.
#pragma once

#include "link/cameraline.h"

#include <functional>
#include <utility>

/// What a command logs when something is thrown in it: the tag with the exception's text, then, when the port
/// threw it, its own line.
struct FailureLog {
    FailureLog() = default;
    /// The text is the command's own line.
    FailureLog(const char* text);
    FailureLog(const char* tag, std::function<void()> line) : exceptionTag(tag), ownLine(std::move(line)) {}

    const char* exceptionTag = "command failed:";
    std::function<void()> ownLine; ///< may be empty
};

/// A command while it runs: has its turn on the line, and tells this thread's report scopes how it ended.
class RunningCommand {
public:
    RunningCommand(CameraLine& line, LineUser user) : m_line(line), m_turn(line.take(user)) {}
    ~RunningCommand();
    RunningCommand(const RunningCommand&) = delete;
    RunningCommand& operator=(const RunningCommand&) = delete;

    /// Throws when the line was refused.
    void begin();
    /// Logs the exception at hand. To be called in a handler.
    void fail(const FailureLog& log);

private:
    CameraLine& m_line;
    LineTurn::Hold m_turn;
    CommandReport m_report; ///< of an exception; else the line knows the end
    bool m_failed = false;
};

/// Runs a command's body with a turn on the line. What is thrown in it is logged and becomes the failure
/// value.
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
