// Output, exit codes and the stop request of all modes of virtual-camera.
#pragma once

#include "emulator/camera/camerarecord.h"
#include "emulator/program/options.h"

#include <functional>

namespace emulator {

/// Exit codes.
inline constexpr int done = 0;
inline constexpr int lineLost = 1; ///< or writing the recording failed
inline constexpr int badInput = 2; ///< unusable command line, device or file

/// One line on standard output: seconds, direction, text.
void printEvent(const Event& event);
/// The program's name and a sentence on standard error.
void printFailure(const std::string& sentence);

/// For root without sudo, one line: how another user gets the pseudo-terminal.
void sayWhoOpens(const std::string& port);

/// Makes an interrupt or a termination signal a stop request.
void watchForStop();
/// Waits while the condition, asked several times a second, is true. True when a stop was requested.
bool waitWhile(const std::function<bool()>& condition);

/// The other modes: serve until a stop is requested and return the exit code. They throw std::exception with
/// a text for people when they cannot start.
int runTap(const Options& options);
int runReplay(const Options& options);
int runLesson(const Options& options);

} // namespace emulator
