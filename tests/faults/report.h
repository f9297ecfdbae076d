// The matrix as two pages: the ending of each command under each fault, and the same with times and log
// lines.
#pragma once

#include "tests/faults/cell.h"

#include <filesystem>

namespace faultmatrix {

/// Stores the cells of a row in the folder and creates it when it is missing. Rows of several processes meet
/// there.
void storeRow(const std::filesystem::path& folder, const Command& command, const std::vector<Cell>& cells);

/// Name of the page without times.
inline constexpr const char* endingsFile = "endings.md";

/// Writes the page with times and, in the same folder, the page without, from all stored rows. False when a
/// file cannot be written.
[[nodiscard]] bool writePage(const std::filesystem::path& folder, const std::filesystem::path& page);

} // namespace faultmatrix
