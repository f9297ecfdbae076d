// Starting other programs.
#pragma once

#include <string>
#include <vector>

namespace bench {

/// In the child between fork and exec: the descriptors become standard input and output, standard error goes
/// nowhere.
[[noreturn]] void become(const std::vector<std::string>& program, int input, int output);

/// Runs the program to its end with this file as its standard input and output; its exit code, -1 when it was
/// killed.
int runOn(const std::vector<std::string>& program, const std::string& file);

} // namespace bench
