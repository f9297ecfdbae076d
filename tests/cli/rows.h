// The program's commands and how each ends in each situation.
#pragma once

#include "tests/cli/tool.h"

#include <iosfwd>
#include <map>

namespace clitest {

/// Exit codes by fault, as the virtual camera takes it without the request.
using Column = std::map<std::string, int>;

/// A command of one camera.
struct Row {
    std::string name;    ///< of the test
    std::string line;    ///< its words
    std::string request; ///< that is struck, as the virtual camera calls it
    Column cells;
    emulator::CameraType type = emulator::CameraType::ostra;
    std::string key{}; ///< a field that only success has a value in; empty: none
};

/// For messages and names of tests.
std::ostream& operator<<(std::ostream& out, const Row& row);

/// Every command that works on one open port and ends by itself.
[[nodiscard]] const std::vector<Row>& rows();

} // namespace clitest
