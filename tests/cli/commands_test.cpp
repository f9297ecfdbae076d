// Every command: its exit code under faults, its text and its JSON.
#include "tests/cli/rows.h"
#include "tests/support/workingdirectory.h"

#include <gmock/gmock.h>

#include <cctype>

namespace clitest {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

void writeImage() {
    std::ofstream("image.bin") << std::string(3000, 'x');
}

/// Files that are in the working directory besides those of the test itself.
std::vector<std::string> leftFiles() {
    std::vector<std::string> names = files::names();
    std::erase_if(names, [](const std::string& name) {
        return name == "out" || name == "err" || name == "image.bin" || name == "folder";
    });
    if (std::filesystem::exists("folder")) {
        for (const auto& entry : std::filesystem::directory_iterator("folder"))
            names.push_back(entry.path().filename());
    }
    return names;
}

// --- under faults ------------------------------------------------------------------------------------------

struct Cell {
    const Row* row;
    std::string fault; ///< empty: none
    int code;
};

void PrintTo(const Cell& cell, std::ostream* out) {
    *out << *cell.row << " with " << (cell.fault.empty() ? "no fault" : cell.fault);
}

std::vector<Cell> allCells() {
    std::vector<Cell> cells;
    for (const Row& row : rows()) {
        for (const auto& [fault, code] : row.cells)
            cells.push_back({&row, fault, code});
    }
    return cells;
}

std::string cellName(const testing::TestParamInfo<Cell>& info) {
    std::string name = info.param.row->name + "_" + (info.param.fault.empty() ? "good" : info.param.fault);
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

class CommandFaults : public testing::TestWithParam<Cell> {};

TEST_P(CommandFaults, EndWithTheirCode) {
    const auto& [row, fault, code] = GetParam();
    writeImage();
    Camera camera(row->type);
    if (!fault.empty())
        camera.addFault(fault + "@" + row->request);
    const Ending ending = camera.run(row->line);
    EXPECT_EQ(ending.code, code) << ending.out << ending.err;
    EXPECT_EQ(ending.err.empty(), code == done) << ending.err;
    if (code != done) {
        EXPECT_THAT(leftFiles(), IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(All, CommandFaults, testing::ValuesIn(allCells()), cellName);

// --- every row ---------------------------------------------------------------------------------------------

class Commands : public testing::TestWithParam<Row> {
protected:
    void SetUp() override { writeImage(); }
};

TEST_P(Commands, PrintTextOnStandardOutput) {
    const Camera camera(GetParam().type);
    const Ending ending = camera.run(GetParam().line);
    EXPECT_EQ(ending.code, done);
    EXPECT_FALSE(ending.out.empty());
    EXPECT_EQ(ending.out.back(), '\n');
    EXPECT_EQ(ending.err, "");
}

TEST_P(Commands, PrintOneJsonObjectOfTheSchema) {
    const Camera camera(GetParam().type);
    const Ending ending = run(joined({"--json"}, camera.with(GetParam().line)));
    EXPECT_EQ(ending.code, done);
    EXPECT_EQ(ending.err, "");
    const std::vector<QJsonObject> objects = objectsOf(ending.out);
    ASSERT_EQ(objects.size(), 1U) << ending.out;
    EXPECT_EQ(objects[0]["command"].toString().toStdString(), GetParam().line);
    EXPECT_EQ(objects[0]["port"].toString().toStdString(), camera.port());
    EXPECT_TRUE(objects[0]["ok"].toBool());
    if (const QString key = QString::fromStdString(GetParam().key); !key.isEmpty()) {
        EXPECT_FALSE(objects[0][key].isNull() || objects[0][key].isUndefined()) << ending.out;
    }
    EXPECT_EQ(schemaComplaints(ending.out), "");
}

TEST_P(Commands, TellAMissingPort) {
    for (const Words& more : {Words{}, Words{"--json"}}) {
        const Ending ending = run(joined(joined(more, {"-p", "missing", "--yes"}), wordsOf(GetParam().line)));
        EXPECT_EQ(ending.code, noPort);
        const bool json = !more.empty();
        EXPECT_THAT(json ? ending.out : ending.err, HasSubstr("plug the adapter in"));
        EXPECT_EQ(json ? ending.err : ending.out, "");
        if (json) {
            EXPECT_EQ(schemaComplaints(ending.out), "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, Commands, testing::ValuesIn(rows()),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace clitest
