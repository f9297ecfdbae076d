// The line that the tool opens, where the system can make one: toolline_unix.cpp, toolline_windows.cpp.
#pragma once

#include "emulator/line/byteline.h"

namespace emulator {

/// A new pseudo-terminal, with a link to it unless the path is empty. Throws std::exception with a text for
/// people, as on Windows, which has none.
[[nodiscard]] std::unique_ptr<ByteLine> openToolLine(const std::string& link);

} // namespace emulator
