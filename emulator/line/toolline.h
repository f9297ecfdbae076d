// A line for the tool to open, on systems that can make one: toolline_unix.cpp, toolline_windows.cpp.
#pragma once

#include "emulator/line/byteline.h"

namespace emulator {

/// A new pseudo-terminal, with a symbolic link at the path unless that is empty. Throws std::exception with a
/// text for people on failure, and always on Windows, which has no pseudo-terminals.
[[nodiscard]] std::unique_ptr<ByteLine> openToolLine(const std::string& link);

} // namespace emulator
