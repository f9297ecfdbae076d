// The virtual-camera program as a process.
#include "emulator/camera/fault.h"
#include "tests/emulator/line/ptyclient.h"
#include "tests/emulator/program/program.h"

#include <filesystem>

namespace emulatortest {
namespace {

namespace fs = std::filesystem;

TEST(Program, HelpNamesEveryOption) {
    EXPECT_EQ(Program({"--help"}).wait(), 0);
    const std::string help = Program::text("out");
    for (const char* const option :
         {"--type", "--address", "--device", "--link", "--pace", "--fault", "--pictures", "--offset", "--tap",
          "--record", "--blank-serials", "--replay", "--at-once", "--lesson", "--list-faults", "--help"})
        EXPECT_THAT(help, testing::HasSubstr(option));
}

TEST(Program, ListFaultsNamesEveryKindAndRequest) {
    EXPECT_EQ(Program({"--list-faults"}).wait(), 0);
    const std::string list = Program::text("out");
    for (const FaultKindInfo& info : faultKinds())
        EXPECT_THAT(list, testing::HasSubstr("  " + std::string(info.name)));
    for (const protocol::RequestName& name : protocol::requestNames())
        EXPECT_THAT(list, testing::HasSubstr("  " + std::string(name.name) + " "));
}

TEST(Program, ManualListsEveryFault) {
    const std::string manual = Program::text(VIRTUAL_CAMERA_MANUAL);
    for (const FaultKindInfo& info : faultKinds()) {
        const std::size_t row = manual.find("\n|`" + std::string(info.name) + "`|");
        ASSERT_NE(row, std::string::npos) << info.name;
        const std::string line = manual.substr(row + 1, manual.find('\n', row + 1) - row - 1);
        EXPECT_THAT(line, testing::EndsWith("|" + std::string(info.description) + "|"));
    }
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

TEST_P(BadArguments, EndWithAMessageAndCode2) {
    EXPECT_EQ(Program(GetParam().arguments).wait(), 2);
    EXPECT_THAT(Program::text("err"), testing::HasSubstr(GetParam().message));
    EXPECT_EQ(Program::text("out"), "");
}

INSTANTIATE_TEST_SUITE_P(
    All, BadArguments,
    testing::Values(BadLine{{"--nonsense"}, "unknown option \"--nonsense\""},
                    BadLine{{"stray"}, "unknown option"}, BadLine{{"--type", "5"}, "--type"},
                    BadLine{{"--type", "shiny"}, "\"shiny\""}, BadLine{{"--type"}, "needs a value"},
                    BadLine{{"--address", "256"}, "from 0 to 255"}, BadLine{{"--address="}, "needs a value"},
                    BadLine{{"--pace", "0"}, "--pace"}, BadLine{{"--offset", "-1"}, "--offset"},
                    BadLine{{"--fault", "boom"}, "no kind \"boom\""},
                    BadLine{{"--help=now"}, "takes no value"}, BadLine{{"--device", "missing"}, "missing"},
                    BadLine{{"--device", "out"}, "not a serial device"},
                    BadLine{{"--pictures", "missing"}, "cannot read the folder missing"},
                    BadLine{{"--link", "no/such/folder/link"}, "no/such/folder"},
                    BadLine{{"--device", "d", "--link", "l"}, "--link"}));

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
