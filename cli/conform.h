// The command conform.
#pragma once

#include "cli/commands.h"

namespace cli {

/// Examines the camera, prints the checks and writes the profile that the options ask for.
[[nodiscard]] Result runConform(const CommandContext& context);

} // namespace cli
