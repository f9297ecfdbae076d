// The command line of shelf-camera-practice.
#include "tests/support/process.h"

#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;
using Words = std::vector<std::string>;

int run(const Words& arguments, const std::string& platform) {
    return Process(SHELF_CAMERA_PRACTICE, arguments, {"/dev/null", "out", "err"},
                   {{"QT_QPA_PLATFORM", platform}})
        .wait();
}

TEST(PracticeProgram, HelpAndVersionNeedNoDisplay) {
    EXPECT_EQ(run({"--help"}, "missing"), 0);
    EXPECT_THAT(Process::text("out"), HasSubstr("--lesson <N>"));
    EXPECT_EQ(run({"--version"}, "missing"), 0);
    EXPECT_THAT(Process::text("out"), testing::MatchesRegex("shelf-camera-practice [0-9.]+\n"));
}

TEST(PracticeProgram, UnknownLessonNamesTheKnownOnes) {
    EXPECT_EQ(run({"--lesson", "9"}, "offscreen"), 2);
    EXPECT_THAT(Process::text("err"), HasSubstr("shelf-camera-practice: --lesson: there is no lesson \"9\"; "
                                                "known: 1, 2, 3, 4, 5, 6, 7, 8\n"));
}

TEST(PracticeProgram, BadCommandLineEndsWithCode2) {
    EXPECT_EQ(run({"--nonsense"}, "offscreen"), 2);
    EXPECT_THAT(Process::text("err"), HasSubstr("unknown option \"nonsense\"; see --help\n"));
    EXPECT_EQ(run({"--lesson"}, "offscreen"), 2);
    EXPECT_THAT(Process::text("err"), HasSubstr("--lesson needs a value: N\n"));
}

} // namespace
