// The command find of shelf-camera.
#pragma once

#include "cli/portjob.h"

namespace cli {

/// Searches the job's port. A port on which nobody answers is a result of its own: code 4.
[[nodiscard]] Result runSearch(PortJob& job, const Options& options);

} // namespace cli
