// The program in a process with a language of its own, and beside the virtual camera's.
#include "tests/cli/tool.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace clitest {
namespace {

struct Language {
    Process::Environment environment;
    bool chinese;
};

class Languages : public testing::TestWithParam<Language> {};

TEST_P(Languages, FollowTheEnvironment) {
    const Camera camera;
    Process::Environment environment{{"LANGUAGE", ""}, {"LC_ALL", ""}, {"LC_MESSAGES", ""}, {"LANG", ""}};
    for (const auto& [name, value] : GetParam().environment)
        environment[name] = value;
    const Ending ending = Tool(camera.with("sn"), Tool::emptyInput(), environment).end();
    EXPECT_EQ(ending.out, GetParam().chinese ? "序列号：SHELF000001\n" : "Serial number: SHELF000001\n");
}

INSTANTIATE_TEST_SUITE_P(All, Languages,
                         testing::Values(Language{{{"LANG", "zh_CN.UTF-8"}}, true}, Language{{}, false},
                                         Language{{{"LANG", "de_DE.UTF-8"}}, false},
                                         Language{{{"LANGUAGE", "zh_CN:en"}, {"LANG", "C"}}, true},
                                         Language{{{"LANGUAGE", "en"}, {"LANG", "zh_CN.UTF-8"}}, false},
                                         Language{{{"LC_ALL", "C"}, {"LANG", "zh_CN.UTF-8"}}, false},
                                         Language{{{"LC_MESSAGES", "zh_CN.UTF-8"}, {"LANG", "C"}}, true}));

TEST(Language, JsonKeysAreEnglish) {
    const Camera camera;
    const Ending ending =
        Tool(joined({"--json"}, camera.with("sn")), Tool::emptyInput(), {{"LANGUAGE", "zh_CN"}}).end();
    EXPECT_EQ(schemaComplaints(ending.out), "");
}

TEST(Recording, IsReplayedByTheVirtualCamera) {
    const Camera camera;
    ASSERT_EQ(run(joined({"--record", "a.rec"}, camera.with("versions"))).code, done);
    Process replay(VIRTUAL_CAMERA_PROGRAM, {"--replay", "a.rec", "--link", "replayed", "--at-once"},
                   {"/dev/null", "replay-out", "replay-err"});
    ASSERT_TRUE(comesTrue([] { return std::filesystem::is_symlink("replayed"); }));
    const Ending ending = run({"-p", "replayed", "versions"});
    EXPECT_EQ(ending.code, done);
    EXPECT_EQ(ending.out, camera.run("versions").out);
}

} // namespace
} // namespace clitest
