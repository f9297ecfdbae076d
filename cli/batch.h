// The command batch of shelf-camera.
#pragma once

#include "cli/options.h"
#include "cli/output.h"

namespace cli {

/// Runs the jobs of the file: ports in parallel, the jobs of a port in their order. A failed job ends its
/// port's list unless --keep-going is given. Throws UsageError for a file that holds no job list.
[[nodiscard]] ExitCode runBatch(const Options& options, Output& output);

} // namespace cli
