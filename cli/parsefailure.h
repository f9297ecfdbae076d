// A parser's error in the words of shelf-camera.
#pragma once

#include <QString>

#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
} // namespace CLI

namespace cli {

/// Sentence about an error that the app's parse threw.
[[nodiscard]] QString parseFailure(const CLI::App& app, const CLI::ParseError& error);

/// Throws UsageError for "--name=": the parser would take the next argument for the value.
void refuseEmptyValues(const CLI::App& app, const std::vector<std::string>& arguments);

} // namespace cli
