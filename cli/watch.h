// The command watch of shelf-camera.
#pragma once

#include "cli/portjob.h"

namespace cli {

/// Prints a heartbeat after each interval until the job is stopped, then the counts.
[[nodiscard]] Result runWatch(PortJob& job, const Options& options, Output& output);

} // namespace cli
