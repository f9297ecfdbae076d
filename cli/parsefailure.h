// Words of shelf-camera for its options, and for a parser's errors.
#pragma once

#include <QString>

#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
} // namespace CLI

namespace cli {

/// A text of the options in the chosen language.
[[nodiscard]] QString tr(const char* text);

/// Sentence about an error that the app's parse threw.
[[nodiscard]] QString parseFailure(const CLI::App& app, const CLI::ParseError& error);

/// Throws UsageError for "--name=": the parser would take the next argument for the value.
void refuseEmptyValues(const CLI::App& app, const std::vector<std::string>& arguments);

} // namespace cli
