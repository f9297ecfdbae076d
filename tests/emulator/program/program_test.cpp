// The virtual-camera program as a process.
#include "emulator/line/cameraprofile.h"
#include "tests/emulator/line/ptyclient.h"
#include "tests/emulator/program/program.h"
#include "tests/support/otheruser.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace emulatortest {
namespace {

namespace fs = std::filesystem;

TEST(Program, HelpNamesEveryOption) {
    EXPECT_EQ(Program({"--help"}).wait(), 0);
    const std::string help = Program::text("out");
    for (const char* const option :
         {"--type", "--address", "--device", "--link", "--pace", "--line", "--line-seed", "--fault",
          "--pictures", "--offset", "--tap", "--record", "--blank-serials", "--replay", "--at-once",
          "--lesson", "--list-faults", "--help"})
        EXPECT_THAT(help, testing::HasSubstr(option));
}

TEST(Program, HelpHasAShortName) {
    EXPECT_EQ(Program({"--help"}).wait(), 0);
    const std::string help = Program::text("out");
    EXPECT_EQ(Program({"-h"}).wait(), 0);
    EXPECT_EQ(Program::text("out"), help);
}

TEST(Program, PrintsItsVersion) {
    EXPECT_EQ(Program({"--version"}).wait(), 0);
    EXPECT_THAT(Program::text("out"), testing::MatchesRegex("virtual-camera [0-9.]+\n"));
}

bool isChinese(const std::string& text) {
    return std::any_of(text.begin(), text.end(),
                       [](char letter) { return static_cast<unsigned char>(letter) >= 0xE4; });
}

TEST(Program, HelpSpeaksChinese) {
    EXPECT_EQ(Program({"--help"}, {}, {{"LANGUAGE", "zh_CN"}}).wait(), 0);
    std::istringstream lines(Program::text("out"));
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(line.empty() || isChinese(line)) << line;
    }
}

TEST(Program, ListFaultsNamesEveryKindAndRequest) {
    EXPECT_EQ(Program({"--list-faults"}).wait(), 0);
    const std::string list = Program::text("out");
    for (const FaultKindInfo& info : faultKinds())
        EXPECT_THAT(list, testing::HasSubstr("  " + std::string(info.name)));
    for (const protocol::RequestName& name : protocol::requestNames())
        EXPECT_THAT(list, testing::HasSubstr("  " + std::string(name.name) + " "));
}

/// The manual from this heading on.
std::string manualFrom(const std::string& heading) {
    const std::string manual = Program::text(VIRTUAL_CAMERA_MANUAL);
    return manual.substr(std::min(manual.size(), manual.find('\n' + heading + '\n')));
}

TEST(Program, ManualListsEveryFault) {
    const std::string manual = manualFrom("## Faults");
    for (const FaultKindInfo& info : faultKinds()) {
        const std::size_t row = manual.find("\n|`" + std::string(info.name) + "`|");
        ASSERT_NE(row, std::string::npos) << info.name;
        const std::string line = manual.substr(row + 1, manual.find('\n', row + 1) - row - 1);
        EXPECT_THAT(line, testing::EndsWith("|" + std::string(info.description) + "|"));
    }
}

TEST(Program, ManualListsEveryLineAndTrait) {
    const std::string manual = manualFrom("### Bad lines");
    const auto rowOf = [](std::string_view name, std::string_view description) {
        return "\n|`" + std::string(name) + "`|" + std::string(description) + "|";
    };
    for (const LinePreset& preset : linePresets())
        EXPECT_THAT(manual, testing::HasSubstr(rowOf(preset.name, preset.description)));
    for (const LineTrait& trait : lineTraits())
        EXPECT_THAT(manual, testing::HasSubstr(rowOf(trait.form, trait.description)));
}

struct BadLine {
    std::vector<std::string> arguments;
    const char* message;

    friend void PrintTo(const BadLine& line, std::ostream* out) {
        for (const std::string& argument : line.arguments)
            *out << argument << ' ';
    }
};

class BadArguments : public testing::TestWithParam<BadLine> {};

void expectOneLine(const std::string& text) {
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
}

TEST_P(BadArguments, EndWithAMessageAndCode2) {
    EXPECT_EQ(Program(GetParam().arguments).wait(), 2);
    EXPECT_THAT(Program::text("err"), testing::HasSubstr(GetParam().message));
    expectOneLine(Program::text("err"));
    EXPECT_EQ(Program::text("out"), "");
}

TEST_P(BadArguments, EndWithAChineseMessage) {
    EXPECT_EQ(Program(GetParam().arguments, {}, {{"LANGUAGE", "zh_CN"}}).wait(), 2);
    EXPECT_TRUE(isChinese(Program::text("err"))) << Program::text("err");
    expectOneLine(Program::text("err"));
}

TEST_P(BadArguments, LeaveNothingBehind) {
    fs::create_directory("left");
    fs::current_path("left");
    std::ofstream("file") << "precious";
    EXPECT_EQ(Program(GetParam().arguments, "../").wait(), 2);
    EXPECT_EQ(Program::text("file"), "precious");
    EXPECT_EQ(std::distance(fs::directory_iterator("."), fs::directory_iterator()), 1);
    fs::current_path("..");
}

INSTANTIATE_TEST_SUITE_P(
    Values, BadArguments,
    testing::Values(
        BadLine{{"--nonsense"}, "unknown option \"--nonsense\"; see --help"},
        BadLine{{"stray"}, "unknown option \"stray\""},
        BadLine{{"--type", "5"},
                "there is no type \"5\"; known: 0 ostra, 1 dorvel, 2 sales-static, 3 quenta, 4 "
                "sales-dynamic"},
        BadLine{{"--type", "shiny"}, "there is no type \"shiny\"; known: 0 ostra"},
        BadLine{{"--type"}, "--type needs a value: TYPE"}, BadLine{{"--address", "256"}, "from 0 to 255"},
        BadLine{{"--address="}, "--address needs a value: N"}, BadLine{{"--pace", "0"}, "--pace"},
        BadLine{{"--offset", "-1"}, "--offset"}, BadLine{{"--help=now"}, "--help takes no value"},
        BadLine{{"--lesson", "9"}, "--lesson: there is no lesson \"9\"; known: 1, 2, 3, 4, 5, 6, 7"},
        BadLine{{"--line", "soggy"}, "--line: there is no line \"soggy\"; known: good, long-cable"},
        BadLine{{"--line", "bits=2"}, "--line: \"bits=2\" cannot be used; write it like bits=1e-5"},
        BadLine{{"--line"}, "--line needs a value: MODEL"},
        BadLine{{"--line", "good", "--line-seed", "-1"}, "--line-seed: \"-1\" is not a number"},
        BadLine{{"--device", "missing"}, "cannot open the device missing: it does not exist"},
        BadLine{{"--device", "/dev/null"}, "/dev/null is not a serial device; choose another"},
        BadLine{{"--pictures", "missing"}, "cannot read the folder missing: it does not exist"}));

INSTANTIATE_TEST_SUITE_P(
    Links, BadArguments,
    testing::Values(BadLine{{"--link", "no/such/link"},
                            "--link: there is no folder no/such; make it or choose another\n"},
                    BadLine{{"--link", "/dev"}, "--link: /dev exists and is no link; remove it"},
                    BadLine{{"--link", "/dev/null"}, "--link: /dev/null exists and is no link; remove it"},
                    BadLine{{"--link", "/dev/null/link"},
                            "--link: /dev/null is no folder; choose another path\n"},
                    BadLine{{"--lesson", "1", "--link", "no/such/link"}, "no/such"},
                    BadLine{{"--replay", KEPT_RECORDINGS "/ostra.rec", "--link", "no/such/link"},
                            "--link: there is no folder no/such"}));

INSTANTIATE_TEST_SUITE_P(
    Together, BadArguments,
    testing::Values(BadLine{{"--tap", "a", "--replay", "b"}, "--tap and --replay exclude each other"},
                    BadLine{{"--tap", "a", "--lesson", "1"}, "--tap and --lesson exclude each other"},
                    BadLine{{"--tap", "a", "--list-faults"}, "--tap and --list-faults exclude each other"},
                    BadLine{{"--replay", "a", "--lesson", "1"}, "--replay and --lesson exclude each other"},
                    BadLine{{"--device", "a", "--link", "b"}, "leave it out with --device"},
                    BadLine{{"--tap", "a", "--device", "a"}, "name another one for the tool"},
                    BadLine{{"--tap", "a", "--link", "a"}, "name another one for the tool"},
                    BadLine{{"--record", "a"}, "--record belongs to --tap"},
                    BadLine{{"--blank-serials"}, "--blank-serials belongs to --tap"},
                    BadLine{{"--at-once"}, "--at-once belongs to --replay"},
                    BadLine{{"--line-seed", "2"}, "--line-seed belongs to --line"},
                    BadLine{{"--holds-image"}, "--holds-image belongs to --type sales-dynamic"},
                    BadLine{{"--replay", "a", "--baud", "9600"},
                            "--baud with --replay belongs to --device"}));

/// Each mode with the options that are for other modes.
std::vector<BadLine> meaninglessLines() {
    using Words = std::vector<std::string>;
    const std::vector<Words> served = {{"--address", "1"},   {"--check-baud"},    {"--pace", "9"},
                                       {"--line", "good"},   {"--pictures", "."}, {"--holds-image"},
                                       {"--fault", "silent"}};
    const auto with = [&served](std::vector<Words> more) {
        more.insert(more.end(), served.begin(), served.end());
        return more;
    };
    const std::vector<std::pair<Words, std::vector<Words>>> modes = {
        {{"--tap", "a"}, with({{"--at-once"}})},
        {{"--replay", "a"},
         with({{"--type", "3"}, {"--offset", "1"}, {"--record", "r"}, {"--blank-serials"}})},
        {{"--lesson", "1"},
         with({{"--type", "3"}, {"--baud", "9600"}, {"--offset", "1"}, {"--record", "r"}, {"--at-once"}})},
        {{"--lesson"}, with({{"--type", "3"}, {"--link", "l"}, {"--device", "d"}})},
        {{"--list-faults"}, with({{"--type", "3"}, {"--link", "l"}, {"--device", "d"}})}};
    std::vector<BadLine> lines;
    for (const auto& [mode, options] : modes) {
        for (const Words& option : options) {
            Words words = option;
            words.insert(words.end(), mode.begin(), mode.end());
            lines.push_back({words, "; leave it out\n"});
        }
    }
    return lines;
}

INSTANTIATE_TEST_SUITE_P(OfOtherModes, BadArguments, testing::ValuesIn(meaninglessLines()));

TEST(Program, UnknownFaultListsTheKinds) {
    EXPECT_EQ(Program({"--fault", "boom"}).wait(), 2);
    EXPECT_THAT(Program::text("err"),
                testing::HasSubstr("there is no kind \"boom\"; known: silent, delay, "));
    expectOneLine(Program::text("err"));
}

TEST(Program, UnknownRequestListsTheNames) {
    EXPECT_EQ(Program({"--fault", "silent@boom"}).wait(), 2);
    EXPECT_THAT(Program::text("err"),
                testing::HasSubstr("\"boom\" is no request; known: any, a code (0x02), heartbeat, "));
    expectOneLine(Program::text("err"));
}

TEST(Program, RefusesALinkInAClosedFolder) {
    fs::create_directory("closed");
    fs::permissions("closed", fs::perms::owner_read | fs::perms::owner_exec);
    const OtherUser other;
    if (eaccess(VIRTUAL_CAMERA_PROGRAM, X_OK) != 0)
        GTEST_SKIP() << "the build folder is closed to other users";
    EXPECT_EQ(Program({"--link", "closed/camera"}).wait(), 2);
    EXPECT_THAT(Program::text("err"), testing::HasSubstr("--link: cannot write to the folder closed (no "
                                                         "permission); use sudo or choose another\n"));
}

// --- the owner of the pseudo-terminal
// ------------------------------------------------------------------------

struct Owner {
    uid_t user;
    gid_t group;

    bool operator==(const Owner&) const = default;
};

/// Owners of the link itself and of the terminal that it leads to.
std::pair<Owner, Owner> ownersOf(const char* link) {
    struct stat own {};
    struct stat target {};
    EXPECT_EQ(lstat(link, &own), 0);
    EXPECT_EQ(stat(link, &target), 0);
    return {{own.st_uid, own.st_gid}, {target.st_uid, target.st_gid}};
}

constexpr const char* rootHint = "only root can open it; for another user: sudo chown USER camera\n";

class SudoMode : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(SudoMode, GivesTheTerminalToItsUser) {
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    std::vector<std::string> arguments = GetParam();
    arguments.insert(arguments.end(), {"--link", "camera"});
    Program program(arguments, {}, {{"LANGUAGE", "en"}, {"SUDO_UID", "65534"}, {"SUDO_GID", "65533"}});
    ASSERT_TRUE(comesTrue([] { return fs::is_symlink("camera") && !Program::text("out").empty(); }));
    const auto [link, terminal] = ownersOf("camera");
    EXPECT_EQ(link, (Owner{65534, 65533}));
    EXPECT_EQ(terminal, (Owner{65534, 65533}));
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(Program::text("out"), testing::Not(testing::HasSubstr("chown")));
}

INSTANTIATE_TEST_SUITE_P(All, SudoMode,
                         testing::Values(std::vector<std::string>{},
                                         std::vector<std::string>{"--lesson", "1"},
                                         std::vector<std::string>{"--replay", KEPT_RECORDINGS "/ostra.rec"}));

class NoSudoUser : public testing::TestWithParam<Process::Environment> {};

TEST_P(NoSudoUser, LeavesTheTerminalToRootAndTellsHowToShareIt) {
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    Process::Environment environment = GetParam();
    environment["LANGUAGE"] = "en";
    Program program({"--link", "camera"}, {}, environment);
    EXPECT_TRUE(comesTrue([] { return Program::text("out").find(rootHint) != std::string::npos; }));
    const auto [link, terminal] = ownersOf("camera");
    EXPECT_EQ(link.user, 0U);
    EXPECT_EQ(terminal.user, 0U);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(All, NoSudoUser,
                         testing::Values(Process::Environment{{"SUDO_UID", ""}, {"SUDO_GID", ""}},
                                         Process::Environment{{"SUDO_UID", "65534"}, {"SUDO_GID", ""}},
                                         Process::Environment{{"SUDO_UID", "65534x"}, {"SUDO_GID", "1"}},
                                         Process::Environment{{"SUDO_UID", "-1"}, {"SUDO_GID", "1"}},
                                         Process::Environment{{"SUDO_UID", "4294967295"}, {"SUDO_GID", "1"}},
                                         Process::Environment{{"SUDO_UID", "99999999999"}, {"SUDO_GID", "1"}},
                                         Process::Environment{{"SUDO_UID", "0"}, {"SUDO_GID", "0"}}));

TEST(Program, ServesOverItsLinkAndLogsExchanges) {
    Program program({"--link", "camera", "--fault", "silent@heartbeat#2"});
    ASSERT_TRUE(comesTrue([] { return fs::is_symlink("camera"); }));
    PtyClient client("camera");
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(11), hex(heartbeatAnswer));
    EXPECT_TRUE(comesTrue([] {
        const std::string out = Program::text("out");
        return out.find("<- heartbeat (01, address 0x01): 00") != std::string::npos &&
               out.find("-> payload 01, 11 bytes after 8 ms") != std::string::npos;
    })) << Program::text("out");
    client.write(hex(heartbeatRequest));
    EXPECT_TRUE(
        comesTrue([] { return Program::text("out").find("no answer [silent]") != std::string::npos; }));
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_FALSE(fs::is_symlink("camera"));
}

bool saysItServes() {
    return Program::text("out").find("serving a camera") != std::string::npos;
}

TEST(Program, ServesOverABadLine) {
    Program program({"--link", "camera", "--line", "echo"});
    ASSERT_TRUE(comesTrue(&saysItServes));
    PtyClient client("camera");
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(22), hex(std::string(heartbeatRequest) + heartbeatAnswer));
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
}

TEST(Program, ServesTheCameraOfAProfile) {
    std::ofstream("camera.profile")
        << "camera profile 1\ntype dorvel\ndelay any 1 1 1\ntext getSn PROFILE1\n";
    Program program({"--profile", "camera.profile", "--link", "camera"});
    ASSERT_TRUE(comesTrue(&saysItServes));
    PtyClient client("camera");
    client.write(hex("AA5AEE020100000003D796"));
    Bytes payload{3, 0};
    protocol::append(payload, protocol::bytesOf("PROFILE1"));
    const Bytes answer = protocol::buildFrame(2, payload, 0xEE);
    EXPECT_EQ(client.read(answer.size()), answer);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(Program::text("out"), testing::HasSubstr("serving a camera of type 1, address 238"));
}

struct BadProfile {
    const char* name;
    const char* text;
    const char* message;
};

class BadProfileFile : public testing::TestWithParam<BadProfile> {};

TEST_P(BadProfileFile, EndsWithLineKeyAndCode2) {
    std::ofstream("bad.profile") << GetParam().text;
    EXPECT_EQ(Program({"--profile", "bad.profile"}).wait(), 2);
    EXPECT_THAT(Program::text("err"),
                testing::StartsWith(std::string("virtual-camera: bad.profile: ") + GetParam().message));
    expectOneLine(Program::text("err"));
    EXPECT_EQ(Program::text("out"), "");
}

INSTANTIATE_TEST_SUITE_P(All, BadProfileFile,
                         testing::Values(BadProfile{"Empty", "", "line 1: "},
                                         BadProfile{"OtherVersion", "camera profile 7\ntype 0\n", "line 1: "},
                                         BadProfile{"UnknownKey", "camera profile 1\ntype 0\ncolour 3\n",
                                                    "line 3: there is no key \"colour\""},
                                         BadProfile{"WrongValue", "camera profile 1\ntype 0\naddress x\n",
                                                    "line 3: address: "}),
                         [](const auto& test) { return test.param.name; });

TEST(Program, RefusesAMissingProfile) {
    EXPECT_EQ(Program({"--profile", "missing"}).wait(), 2);
    EXPECT_THAT(Program::text("err"), testing::HasSubstr("cannot read missing: it does not exist"));
}

TEST(Program, ProfileGoesWithoutType) {
    std::ofstream("camera.profile") << "camera profile 1\ntype dorvel\n";
    EXPECT_EQ(Program({"--profile", "camera.profile", "--type", "0"}).wait(), 2);
    EXPECT_THAT(Program::text("err"),
                testing::HasSubstr("--type means nothing with --profile; leave it out"));
}

TEST(Program, ListFaultsNamesEveryKeyOfProfiles) {
    EXPECT_EQ(Program({"--list-faults"}).wait(), 0);
    for (const ProfileKey& key : profileKeys())
        EXPECT_THAT(Program::text("out"), testing::HasSubstr("\n  " + std::string(key.name) + ' '))
            << key.name;
}

TEST(Program, SameSeedGivesTheSameLine) {
    const auto heardFrom = [](const char* seed) {
        Program program({"--link", "camera", "--line", "lost=0.3", "--line-seed", seed});
        EXPECT_TRUE(comesTrue(&saysItServes));
        PtyClient client("camera");
        client.write(countingBytes(20));
        EXPECT_TRUE(comesTrue([] { return Program::text("out").find(" any frame: ") != std::string::npos; }));
        program.signal(SIGTERM);
        EXPECT_EQ(program.wait(), 0);
        const std::string out = Program::text("out");
        return out.substr(out.find("any frame"));
    };
    const std::string one = heardFrom("1");
    EXPECT_EQ(heardFrom("1"), one);
    EXPECT_NE(heardFrom("2"), one);
}

TEST(Program, EndsOnAnInterruptAndRemovesItsLink) {
    Program program({"--link", "camera", "--type", "dorvel", "--pace", "46080"});
    ASSERT_TRUE(comesTrue([] { return fs::is_symlink("camera"); }));
    PtyClient client("camera");
    client.write(hex("AA 5A EE 01 01 00 00 00 00 54 68"));
    EXPECT_EQ(client.read(11), hex("AA 5A EE 01 01 00 00 00 01 75 78"));
    program.signal(SIGINT);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_FALSE(fs::is_symlink("camera"));
}

TEST(Program, HoldsThePicturesOfAFolder) {
    fs::create_directory("pictures");
    std::ofstream("pictures/b.JPG") << "second";
    std::ofstream("pictures/a.jpg") << "first";
    std::ofstream("pictures/notes.txt") << "no picture";
    Program program({"--link", "camera", "--pictures", "pictures"});
    ASSERT_TRUE(comesTrue([] { return fs::is_symlink("camera"); }));
    PtyClient client("camera");
    client.write(hex("AA 5A 01 07 00 00 00 00 38 2C"));
    const Bytes catalogue = client.read(65);
    ASSERT_EQ(catalogue.size(), 65U);
    EXPECT_EQ(catalogue[8], 2);
    Bytes request(9);
    request[0] = catalogue[9];
    request[5] = 5;
    client.write(protocol::buildFrame(0x09, request, 1));
    EXPECT_EQ(ByteView(client.read(16)).range(9, 14).toText(), "first");
}

TEST(Program, EndsWithCode1WhenTheLineIsGone) {
    Program program({"--link", "camera", "--fault", "hang-up@heartbeat"});
    ASSERT_TRUE(comesTrue([] { return fs::is_symlink("camera"); }));
    PtyClient client("camera");
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(program.wait(), 1);
    EXPECT_THAT(Program::text("err"), testing::HasSubstr("the line is gone"));
}

} // namespace
} // namespace emulatortest
