// Starting window programs: how long until the first painted window, and what they cost when idle.
#pragma once

#include "bench/results.h"

namespace bench {

struct StartSettings {
    std::string programFolder = "."; ///< holds the programs tool_window and bare_window
    int rounds = 11;                 ///< starts of each program; the median counts
    int idleSeconds = 5;             ///< watched once for each program
};

/// The tool beside a program with one window. Before anything else of this process starts threads or a GUI.
void measureStarts(Results& results, const StartSettings& settings);

} // namespace bench
