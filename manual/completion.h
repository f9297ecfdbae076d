// Completion of a command line by bash.
#pragma once

#include <map>
#include <string>

namespace CLI {
class App;
}

namespace manual {

/// By name of a value: "file", "folder", or words to choose from. A name like "on|off" needs no entry.
using ValueCompletions = std::map<std::string, std::string>;

/// A script that completes commands, options and their values.
[[nodiscard]] std::string bashCompletion(const CLI::App& app, const ValueCompletions& values);

} // namespace manual
