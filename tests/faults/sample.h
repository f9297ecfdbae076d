// A part of the fault matrix for real time.
#pragma once

#include "tests/faults/command.h"

namespace faultmatrix {

/// About a hundred cells: some of every row, every kind of fault, chosen by their numbers alone. In the order
/// of commands().
[[nodiscard]] const std::vector<Command>& sampledCommands();

/// "delay" of "delay=60"
[[nodiscard]] std::string kindOf(const std::string& fault);

} // namespace faultmatrix
