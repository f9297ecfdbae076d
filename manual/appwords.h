// The parts of a command line's description, for the manual page and the completion.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace manual {

/// Options with a dash, in the order of their definition.
[[nodiscard]] std::vector<const CLI::Option*> namedOptions(const CLI::App& app);
/// Arguments without one.
[[nodiscard]] std::vector<const CLI::Option*> positionals(const CLI::App& app);
[[nodiscard]] std::vector<const CLI::App*> commandsOf(const CLI::App& app);
/// "-p", "--port".
[[nodiscard]] std::vector<std::string> namesOf(const CLI::Option& option);
/// Name of the option's value; empty for a flag.
[[nodiscard]] std::string valueName(const CLI::Option& option);
[[nodiscard]] std::vector<std::string> split(const std::string& text, const std::string& separator);

} // namespace manual
