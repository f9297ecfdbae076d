// The matrix as a page: what each command was seen to do at each fault.
#pragma once

#include "tests/faults/cell.h"

#include <filesystem>

namespace faultmatrix {

/// Keeps what was seen of a row in the folder, which is made when it is missing. Rows of several processes
/// meet there.
void storeRow(const std::filesystem::path& folder, const Command& command, const std::vector<Cell>& cells);

/// Markdown from all rows that were stored; false when the file cannot be written.
[[nodiscard]] bool writePage(const std::filesystem::path& folder, const std::filesystem::path& page);

} // namespace faultmatrix
