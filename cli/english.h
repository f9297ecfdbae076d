// The English of shelf-camera.
#pragma once

#include "language/texts.h"

namespace cli {

/// Of every Chinese text of the program and its services.
[[nodiscard]] std::span<const language::Text> englishTexts();

} // namespace cli
