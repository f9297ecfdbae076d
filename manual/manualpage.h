// A manual page of a command line.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace manual {

struct ManualExample {
    std::string purpose;
    std::vector<std::string> lines;
};

/// Texts of the page that the options do not hold.
struct ManualText {
    std::string date; ///< year-month-day
    std::string version;
    std::string description;
    std::vector<ManualExample> examples; ///< may be none
    std::vector<std::string> seeAlso;    ///< pages of section 1
};

/// Roff with the man macros. A line "Title: word text, word text" of the app's footer becomes a section. A
/// section without content is left out.
[[nodiscard]] std::string manualPage(const CLI::App& app, const ManualText& text);

} // namespace manual
