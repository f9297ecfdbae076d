// The upload command of shelf-camera.
#pragma once

#include "cli/commands.h"

namespace cli {

/// Versions, upload, return wait, versions.
[[nodiscard]] Result runUpload(const CommandContext& context);

} // namespace cli
