// How shelf-camera ends.
#pragma once

#include "link/commandreport.h"

namespace cli {

enum class ExitCode : int {
    done = 0,
    refused = 1, ///< the camera refused, or its answer or result is bad
    usage = 2,
    portFailed = 3,
    noAnswer = 4,
    file = 5,
    interrupted = 130,
};

[[nodiscard]] ExitCode exitCodeOf(CommandEnd end);

} // namespace cli
