// The table of endings in docs/shelf-camera.md against the table of commands and faults.
#include "tests/cli/rows.h"
#include "tests/support/markdown.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace clitest {
namespace {

/// Faults in the order of the document's columns.
const std::array<std::string, 10> faults{"",        "silent",     "late",      "result=1",  "truncate=3",
                                         "stray=1", "split=4,20", "before=33", "bad-check", "hang-up"};

/// The row's command as the document names it: "`sn`", "`sn VALUE`", "`pictures get`", "`capture` (type 4)".
std::string labelOf(const Row& row) {
    const Words words = wordsOf(row.line);
    std::string label = words.front();
    if (label == "pictures" || label == "upload")
        label += ' ' + words[1];
    else if (row.name.starts_with("Set"))
        label += " VALUE";
    label = '`' + label + '`';
    if (row.type != emulator::CameraType::ostra)
        label += " (type " + std::to_string(static_cast<int>(row.type)) + ")";
    return label;
}

/// Commands and exit codes, a line each.
std::vector<std::pair<std::string, std::vector<std::string>>> documentRows() {
    const std::string page = markdown::contentOf(markdown::sourceFolder() / "docs/shelf-camera.md");
    std::vector<std::pair<std::string, std::vector<std::string>>> found;
    for (const markdown::Row& cells : markdown::tableRows(markdown::section(page, "## Endings")))
        found.emplace_back('`' + cells.at(0) + '`', std::vector(cells.begin() + 1, cells.end()));
    return found;
}

bool names(const std::string& commands, const std::string& label) {
    const std::size_t at = commands.find(label);
    return at != std::string::npos && !commands.substr(at + label.size()).starts_with(" (");
}

} // namespace

TEST(Endings, StandInTheDocument) {
    const auto document = documentRows();
    ASSERT_FALSE(document.empty());
    for (const Row& row : rows()) {
        const auto line = std::find_if(document.begin(), document.end(),
                                       [&row](const auto& each) { return names(each.first, labelOf(row)); });
        ASSERT_NE(line, document.end()) << labelOf(row);
        ASSERT_EQ(line->second.size(), faults.size()) << line->first;
        for (const auto& [fault, code] : row.cells) {
            const auto column =
                static_cast<std::size_t>(std::find(faults.begin(), faults.end(), fault) - faults.begin());
            ASSERT_LT(column, faults.size()) << fault;
            EXPECT_EQ(line->second[column], std::to_string(code)) << labelOf(row) << " with " << fault;
        }
    }
}

} // namespace clitest
