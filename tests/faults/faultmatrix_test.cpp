// Commands under faults: all cells on the simulated line, a part of them over a pseudo-terminal with the real
// serial library.
#include "tests/faults/report.h"
#include "tests/faults/sample.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <set>

using namespace faultmatrix;
using namespace std::chrono_literals;

namespace {

/// Page of results, named by the environment; its rows are stored beside it.
std::filesystem::path pagePath() {
    const char* const path = std::getenv("CAMERA_FAULT_REPORT");
    return path == nullptr ? "" : path;
}

std::filesystem::path rowsFolder() {
    return pagePath().string() + ".rows";
}

/// In real time all cells wait for two hours: a part of them, unless the page or CAMERA_FAULT_CELLS=all asks
/// for all.
bool runsAllCells() {
#ifdef CAMERA_VIRTUAL_TIME
    return true;
#else
    const char* const cells = std::getenv("CAMERA_FAULT_CELLS");
    return !pagePath().empty() || (cells != nullptr && std::string_view(cells) == "all");
#endif
}

const std::vector<Command>& commandsToRun() {
    return runsAllCells() ? commands() : sampledCommands();
}

class PageAtTheEnd : public testing::Environment {
    void TearDown() override {
        if (!pagePath().empty()) {
            EXPECT_TRUE(writePage(rowsFolder(), pagePath())) << pagePath();
        }
    }
};

[[maybe_unused]] const auto* const pageAtTheEnd = testing::AddGlobalTestEnvironment(new PageAtTheEnd);

class FaultMatrix : public testing::TestWithParam<Command> {};

TEST_P(FaultMatrix, MatchesExpectedOutcome) {
    const Command& command = GetParam();
    const std::vector<Cell> cells = runRow(command);
    for (const Cell& cell : cells) {
        for (const std::string& complaint : cell.complaints)
            ADD_FAILURE() << complaint;
    }
    EXPECT_EQ(cells.size(), command.cells.size());
    EXPECT_FALSE(cells.empty());
    if (!pagePath().empty())
        storeRow(rowsFolder(), command, cells);
}

/// Letters and digits only.
std::string testName(const testing::TestParamInfo<Command>& test) {
    std::string name = test.param.method;
    bool newWord = true;
    for (const char c : test.param.part) {
        if (c == ' ')
            newWord = true;
        else
            name += std::exchange(newWord, false) ? static_cast<char>(std::toupper(c)) : c;
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(EveryCommand, FaultMatrix, testing::ValuesIn(commandsToRun()), testName);

/// Method names in the declarations of a header between two headings.
std::set<std::string> methodsBetween(const std::string& header, const std::string& from,
                                     const std::string& to) {
    std::set<std::string> names;
    const std::size_t first = header.find(from);
    const std::size_t last = header.find(to);
    if (first == std::string::npos || last == std::string::npos)
        return names;
    std::istringstream lines(header.substr(first, last - first));
    const std::regex declaration(R"(^    \w[\w:<> ]* (\w+)\()");
    std::smatch found;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_search(line, found, declaration))
            names.insert(found[1]);
    }
    return names;
}

TEST(FaultMatrixTable, HasARowForEveryCommandOfTheClient) {
    std::ifstream in(CAMERA_SOURCE_DIR "/link/camerasp.h");
    const std::string header{std::istreambuf_iterator<char>(in), {}};
    std::set<std::string> methods =
        methodsBetween(header, "// --- status and properties", "// --- the turn on the line");
    EXPECT_EQ(methods.erase("testHeartBeatAt"), 1U) << "the exchange of testHeartBeat at another address";
    EXPECT_EQ(methods.erase("checkQuentaData"), 1U) << "reads the answers of the two JSON commands";
    EXPECT_EQ(methods.erase("probe"), 1U) << "reads whatever comes";
    std::set<std::string> rows;
    for (const Command& command : commands())
        rows.insert(command.method);
    EXPECT_GT(methods.size(), 25U);
    EXPECT_EQ(rows, methods);
}

TEST(FaultMatrixTable, HasACellForEveryKindOfFault) {
    std::set<std::string> kinds;
    for (const Command& command : commands()) {
        for (const auto& [fault, expected] : command.cells)
            kinds.insert(kindOf(fault));
    }
    for (const auto& info : emulator::faultKinds())
        EXPECT_TRUE(kinds.contains(std::string(info.name))) << info.name;
}

TEST(FaultMatrixTable, PartHasEveryRowAndKind) {
    std::set<std::string> kinds;
    std::size_t cells = 0;
    for (const Command& command : sampledCommands()) {
        EXPECT_FALSE(command.cells.empty()) << command;
        cells += command.cells.size();
        for (const auto& [fault, expected] : command.cells)
            kinds.insert(kindOf(fault));
    }
    EXPECT_EQ(sampledCommands().size(), commands().size());
    EXPECT_EQ(kinds.size(), emulator::faultKinds().size());
    EXPECT_GE(cells, 100U);
    EXPECT_LE(cells, 150U);
    RecordProperty("cells", static_cast<int>(cells));
}

TEST(FaultMatrixTable, HasNoEmptyRowAndNamesEachOnce) {
    std::set<std::string> names;
    for (const Command& command : commands()) {
        EXPECT_TRUE(names.insert(nameOf(command)).second) << command;
        EXPECT_FALSE(command.cells.empty()) << command;
        EXPECT_LE(command.cells.size(), 250U) << command << ": ids of pictures have eight bits";
    }
}

} // namespace
