// shelf-camera from its options to its exit code.
#pragma once

#include "cli/options.h"
#include "cli/output.h"

namespace cli {

/// Runs the command on its ports, one thread each, and prints the results. The highest exit code of all.
[[nodiscard]] ExitCode runProgram(const Options& options);

/// Watches the jobs until all are done: progress, interruption, a reader of the output that has gone.
class PortJob;
void superviseJobs(const std::vector<std::unique_ptr<PortJob>>& jobs, Output& output);

/// The head of each JSON object of a port.
[[nodiscard]] QJsonObject headOf(const Options& options, const std::string& port);

} // namespace cli
