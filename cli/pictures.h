// The picture commands of shelf-camera.
#pragma once

#include "cli/commands.h"

namespace cli {

/// capture and pictures.
[[nodiscard]] Result runPictureCommand(const CommandContext& context);

} // namespace cli
