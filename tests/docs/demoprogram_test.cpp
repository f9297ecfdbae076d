// The command line of shelf-camera-demo.
#include "tests/support/process.h"

#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using Words = std::vector<std::string>;

int run(const Words& arguments, const std::string& platform) {
    return Process(SHELF_CAMERA_DEMO, arguments, {"/dev/null", "out", "err"}, {{"QT_QPA_PLATFORM", platform}})
        .wait();
}

TEST(DemoProgram, HelpNeedsNoDisplay) {
    for (const char* const option : {"-h", "--help"}) {
        EXPECT_EQ(run({option}, "missing"), 0);
        for (const char* const named : {"--tour <FOLDER>", "--dark", "--version", "-h, --help"})
            EXPECT_THAT(Process::text("out"), HasSubstr(named));
        EXPECT_EQ(Process::text("err"), "");
    }
}

TEST(DemoProgram, VersionNeedsNoDisplay) {
    EXPECT_EQ(run({"--version"}, "missing"), 0);
    EXPECT_THAT(Process::text("out"), MatchesRegex("shelf-camera-demo [0-9.]+\n"));
    EXPECT_EQ(Process::text("err"), "");
}

struct BadLine {
    Words arguments;
    const char* sentence;
};

class DemoBadLine : public testing::TestWithParam<BadLine> {};

TEST_P(DemoBadLine, EndsWithASentenceAndCode2) {
    EXPECT_EQ(run(GetParam().arguments, "offscreen"), 2);
    EXPECT_THAT(Process::text("err"), HasSubstr(GetParam().sentence));
    EXPECT_EQ(Process::text("out"), "");
}

INSTANTIATE_TEST_SUITE_P(
    All, DemoBadLine,
    testing::Values(
        BadLine{{"--nonsense"}, "shelf-camera-demo: unknown option \"nonsense\"; see --help\n"},
        BadLine{{"stray"}, "shelf-camera-demo: unknown argument \"stray\"; see --help\n"},
        BadLine{{"--tour"}, "shelf-camera-demo: --tour needs a value: FOLDER\n"},
        BadLine{{"--picture="}, "shelf-camera-demo: --picture needs a value: FILE\n"},
        BadLine{{"--dark=now"}, "shelf-camera-demo: an option lacks its value, or takes none; see --help\n"},
        BadLine{{"--tour", "a", "--picture", "b"}, "--tour and --picture exclude each other\n"},
        BadLine{{"--tool-port", "a"}, "--camera-port and --tool-port belong together; give two ports"},
        BadLine{{"--line-seed", "2"}, "--line-seed belongs to --line\n"},
        BadLine{{"--tour", "a", "--line", "ftdi"}, "--tour and --line exclude each other\n"},
        BadLine{{"--line", "soggy"}, "--line: there is no line \"soggy\"; known: good, "},
        BadLine{{"--line", "good", "--line-seed", "x"}, "--line-seed: \"x\" is not a number\n"},
        BadLine{{"--camera-port", "a", "--tool-port", "a"}, "are two ports that are joined; name two\n"},
        BadLine{{"--camera-port", "a", "--tool-port", "b"},
                "cannot open the device a: it does not exist; "}));

} // namespace
