// Reading the project's documents: sections, tables, links.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace markdown {

/// Cells without the blanks and backticks around them.
using Row = std::vector<std::string>;

/// The root of the source tree.
[[nodiscard]] std::filesystem::path sourceFolder();

/// Text of a file. Throws if it cannot be read.
[[nodiscard]] std::string contentOf(const std::filesystem::path& file);

/// From the line of this heading ("## Frame") up to the next one of its level or above; empty without it.
[[nodiscard]] std::string section(std::string_view document, std::string_view heading);

/// The rows of all tables in a text, without heads.
[[nodiscard]] std::vector<Row> tableRows(std::string_view text);

/// Where the links and pictures of a document point to, as written.
[[nodiscard]] std::vector<std::string> targets(const std::string& document);

/// The names by which the headings of a document are linked to.
[[nodiscard]] std::vector<std::string> anchors(std::string_view document);

} // namespace markdown
