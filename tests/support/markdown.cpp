#include "tests/support/markdown.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace markdown {

namespace {

constexpr std::string_view aroundCells = " `";

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    std::istringstream in{std::string(text)};
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

/// 0 for a line that is no heading.
std::size_t headingLevel(std::string_view line) {
    const std::size_t level = std::min(line.find_first_not_of('#'), line.size());
    return level < line.size() && line[level] == ' ' ? level : 0;
}

std::string trimmed(std::string_view cell) {
    const std::size_t first = cell.find_first_not_of(aroundCells);
    if (first == std::string_view::npos)
        return {};
    return std::string(cell.substr(first, cell.find_last_not_of(aroundCells) - first + 1));
}

Row cellsOf(std::string_view line) {
    Row cells;
    for (std::size_t at = 1; at < line.size();) {
        const std::size_t bar = std::min(line.find('|', at), line.size());
        cells.push_back(trimmed(line.substr(at, bar - at)));
        at = bar + 1;
    }
    return cells;
}

} // namespace

std::filesystem::path sourceFolder() {
    return CAMERA_SOURCE_DIR;
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read " + file.string());
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string section(std::string_view document, std::string_view heading) {
    const std::size_t level = headingLevel(heading);
    std::string text;
    bool inside = false;
    for (const std::string& line : linesOf(document)) {
        const std::size_t lineLevel = headingLevel(line);
        if (inside && lineLevel > 0 && lineLevel <= level)
            break;
        inside = inside || line == heading;
        if (inside)
            text += line + '\n';
    }
    return text;
}

std::vector<Row> tableRows(std::string_view text) {
    std::vector<Row> rows;
    bool afterHead = false;
    for (const std::string& line : linesOf(text)) {
        if (line.empty() || line.front() != '|')
            afterHead = false;
        else if (line.rfind("|---", 0) == 0)
            afterHead = true;
        else if (afterHead)
            rows.push_back(cellsOf(line));
    }
    return rows;
}

std::vector<std::string> targets(const std::string& document) {
    static const std::regex link(R"(\]\(([^)\s]+)\))");
    std::vector<std::string> found;
    for (std::sregex_iterator match(document.begin(), document.end(), link), end; match != end; ++match)
        found.push_back((*match)[1]);
    return found;
}

std::vector<std::string> anchors(std::string_view document) {
    std::vector<std::string> found;
    for (const std::string& line : linesOf(document)) {
        const std::size_t level = headingLevel(line);
        if (level == 0)
            continue;
        std::string anchor;
        for (const char character : line.substr(level + 1)) {
            const auto byte = static_cast<unsigned char>(character);
            if (character == ' ')
                anchor += '-';
            else if (byte >= 0x80 || std::isalnum(byte) != 0 || character == '-' || character == '_')
                anchor += static_cast<char>(std::tolower(byte));
        }
        found.push_back(anchor);
    }
    return found;
}

} // namespace markdown
