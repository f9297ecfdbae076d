// What the modes of virtual-camera share: its lines and its end.
#pragma once

#include "emulator/camera/camerarecord.h"
#include "emulator/program/options.h"

namespace emulator {

/// Exit codes.
inline constexpr int done = 0;
inline constexpr int lineLost = 1; ///< or the recording could not be written any more
inline constexpr int badInput = 2; ///< the command line, the device or a file is no good

/// One line on standard output: seconds, direction, text.
void printEvent(const Event& event);
/// A sentence on standard error, behind the program's name.
void printFailure(const std::string& sentence);

/// From now on an interrupt or a request to terminate is an answer to endAsked.
void watchForEnd();
[[nodiscard]] bool endAsked();
/// How often the modes look for it.
inline constexpr std::chrono::milliseconds lookEvery{50};

/// The other modes: they serve until they are told to end, and return the exit code. They throw
/// std::exception with a text for people when they cannot begin.
int runTap(const Options& options);
int runReplay(const Options& options);
int runLesson(const Options& options);

} // namespace emulator
