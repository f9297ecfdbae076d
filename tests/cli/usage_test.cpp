// Command lines that are refused, and files that cannot be used.
#include "tests/cli/tool.h"
#include "tests/support/otheruser.h"
#include "tests/support/workingdirectory.h"

#include <QJsonArray>

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace clitest {
namespace {

using testing::HasSubstr;

struct BadLine {
    const char* name;
    const char* line;
    const char* sentence;
};

void PrintTo(const BadLine& bad, std::ostream* out) {
    *out << bad.line;
}

class BadCommandLine : public testing::TestWithParam<BadLine> {};

TEST_P(BadCommandLine, EndsWithASentenceAndCode2) {
    for (const char* const before : {"", "--json "}) {
        const Ending ending = run(joined(wordsOf(before), wordsOf(GetParam().line)));
        EXPECT_EQ(ending.code, usage);
        EXPECT_EQ(ending.out, "");
        EXPECT_THAT(ending.err, HasSubstr(GetParam().sentence));
        EXPECT_EQ(std::count(ending.err.begin(), ending.err.end(), '\n'), 1) << ending.err;
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, BadCommandLine,
    testing::Values(
        BadLine{"NoCommand", "-p x", "No command; known: ports, find, heartbeat, "},
        BadLine{"UnknownCommand", "-p x fly", "There is no command \"fly\"; known: ports, find, heartbeat, "},
        BadLine{"UnknownSubcommand", "-p x pictures fly",
                "There is no command \"fly\"; known: list, get, get-all, delete, delete-all; see --help"},
        BadLine{"UnknownArgument", "-p x heartbeat now", "There is no place for \"now\"; see --help"},
        BadLine{"ValueMissing", "-p x heartbeat -b", "--baud needs a value: RATE; see --help"},
        BadLine{"ValueEmpty", "-p x --type= heartbeat", "--type needs a value: TYPE"},
        BadLine{"ValueOfFlag", "-p x heartbeat --quiet=now", "--quiet takes no value; see --help"},
        BadLine{"ArgumentMissing", "-p x upload", "Too few or too many values: app|system|model; see --help"},
        BadLine{"ArgumentsTooMany", "-p x angles 1 2 3", "Too few or too many values: A B; see --help"},
        BadLine{"PortOfPorts", "-p x ports", "--port means nothing with ports; leave it out"},
        BadLine{"RateOfPorts", "-b 9600 ports", "--baud means nothing with ports"},
        BadLine{"AddressOfPorts", "-a 1 ports", "--address means nothing with ports"},
        BadLine{"TypeOfPorts", "-t 0 ports", "--type means nothing with ports"},
        BadLine{"AddressOfBatch", "-a 1 batch jobs", "--address means nothing with batch"},
        BadLine{"TypeOfBatch", "-t 0 batch jobs", "--type means nothing with batch"},
        BadLine{"RateBesideRates", "-p x -b 9600 find --rates 9600", "--baud means nothing with --rates"},
        BadLine{"AddressBesideAddresses", "-p x -a 1 find --addresses 1",
                "--address means nothing with --addresses"},
        BadLine{"NameOfApp", "-p x -y upload app f --name n", "--name means nothing with upload app"},
        BadLine{"NameOfSystem", "-p x -y upload system f --name n",
                "--name means nothing with upload system"},
        BadLine{"NoWaitOfModel", "-p x -y upload model f --no-wait",
                "--no-wait means nothing with upload model"},
        BadLine{"UnknownOption", "-p x --fly heartbeat", "There is no option \"--fly\"; see --help"},
        BadLine{"TypeName", "-p x -t shiny heartbeat",
                "There is no type \"shiny\"; known: 0 ostra, 1 dorvel, 2 sales-static, 3 quenta, 4 "
                "sales-dynamic"},
        BadLine{"TypeNumber", "-p x -t 5 heartbeat", "There is no type \"5\""},
        BadLine{"Rate", "-p x -b fast heartbeat", "baud rate: \"fast\" is not a number from 1 to 4000000"},
        BadLine{"Address", "-p x -a 256 heartbeat", "slave address: \"256\" is not a number from 0 to 255"},
        BadLine{"Heater", "-p x --yes heater 101", "heater duty: \"101\" is not a number from 0 to 100"},
        BadLine{"Compression", "-p x --yes compression x",
                "picture compression: \"x\" is not a number from 0 to 100"},
        BadLine{"Angle", "-p x --yes angles 1 256", "capture angles: \"256\" is not a number from 0 to 255"},
        BadLine{"OneAngle", "-p x --yes angles 1", "capture angles: 2 values are needed"},
        BadLine{"Direction", "-p x --yes direction left",
                "capture direction: use clockwise or anticlockwise"},
        BadLine{"GyroState", "-p x --yes gyro-state maybe", "gyro switch: use on or off"},
        BadLine{"Door", "-p x door ajar", "door: use open or close"},
        BadLine{"Upload", "-p x --yes upload kernel f", "there is no \"kernel\"; use app, system or model"},
        BadLine{"PictureId", "-p x pictures get 65536 -o f",
                "picture id: \"65536\" is not a number from 0 to 65535"},
        BadLine{"FindRates", "-p x find --rates 9600,0",
                "baud rate: \"0\" is not a number from 1 to 4000000"},
        BadLine{"FindAddresses", "-p x find --addresses none", "slave address: \"none\""},
        BadLine{"Interval", "-p x watch --interval 0", "interval: \"0\" is not a number from 1 to 3600"},
        BadLine{"Repeats", "-p x conform --repeats 0", "repeats: \"0\" is not a number from 1 to 1000"},
        BadLine{"ReportName", "-p x check -o report.doc",
                "The report's extension must be .html, .pdf, .json or .csv"},
        BadLine{"NotConfirmed", "-p x reboot", "This command changes the camera; add --yes"},
        BadLine{"PortTwice", "-p x -p y -p x heartbeat", "A port is named twice"},
        BadLine{"RecordOfTwo", "-p x -p y --record r heartbeat", "--record takes one port only"},
        BadLine{"RecordOfBatch", "--record r batch jobs", "--record cannot be used with batch and ports"},
        BadLine{"PortOfBatch", "-p x batch jobs", "leave out -p"},
        BadLine{"NoJobFile", "batch missing", "The job file cannot be read: missing"}),
    [](const auto& bad) { return std::string(bad.param.name); });

TEST(Usage, GeneralOptionsMayStandBehindTheCommand) {
    Camera camera;
    const Ending ending = run({"pictures", "--json", "list", "-t", "ostra", "-p", camera.port()});
    EXPECT_EQ(ending.code, done);
    const std::vector<QJsonObject> objects = objectsOf(ending.out);
    ASSERT_EQ(objects.size(), 1U);
    EXPECT_EQ(objects[0]["command"], "pictures list");
    EXPECT_EQ(objects[0]["pictures"].toArray().size(), 1);
}

TEST(Usage, SerialNumberOf65BytesIsRefused) {
    const Ending ending = run({"-p", "x", "--yes", "sn", std::string(65, '7')});
    EXPECT_EQ(ending.code, usage);
    EXPECT_THAT(ending.err, HasSubstr("serial number: 1 to 64 bytes"));
}

TEST(Usage, HelpNamesEveryCommand) {
    const Ending ending = run({"--help"});
    EXPECT_EQ(ending.code, done);
    for (const char* const command :
         {"ports",      "find",    "heartbeat", "versions",    "model",  "orientation",
          "gyro",       "sn",      "heater",    "compression", "angles", "direction",
          "gyro-state", "capture", "pictures",  "upload",      "reboot", "factory-reset",
          "door",       "check",   "batch",     "watch"})
        EXPECT_THAT(ending.out, HasSubstr(std::string("\n  ") + command + " "));
}

TEST(Usage, VersionIsPrinted) {
    const Ending ending = run({"--version"});
    EXPECT_EQ(ending.code, done);
    EXPECT_THAT(ending.out, testing::MatchesRegex("shelf-camera [0-9.]+\n"));
}

TEST(Usage, TypeIsTakenByName) {
    const Camera camera(emulator::CameraType::quenta);
    const Ending ending = run({"-p", camera.port(), "-t", "quenta", "--json", "versions"});
    EXPECT_EQ(ending.code, done) << ending.err;
    EXPECT_EQ(objectsOf(ending.out).at(0)["rate"].toInt(), 230400);
    EXPECT_EQ(objectsOf(ending.out).at(0)["address"].toInt(), 3);
}

TEST(Usage, PictureListOfAJsonCameraIsRefused) {
    const Camera camera(emulator::CameraType::quenta);
    const Ending ending = camera.run("pictures list");
    EXPECT_EQ(ending.code, usage);
    EXPECT_THAT(ending.err, HasSubstr("This type has no picture list; use capture"));
}

TEST(Usage, AbsentPictureIsRefused) {
    const Camera camera;
    for (const char* const line : {"pictures get 7 -o one.jpg", "pictures delete 7"}) {
        const Ending ending = camera.run(line);
        EXPECT_EQ(ending.code, refused);
        EXPECT_EQ(ending.err, "The camera holds no picture with id 7\n");
    }
    EXPECT_FALSE(std::filesystem::exists("one.jpg"));
}

// --- ports that cannot be opened ---------------------------------------------------------------------------

void expectRefusedPort(const Camera& camera, int permissions, const char* sentence) {
    ASSERT_EQ(chmod(camera.port().c_str(), static_cast<mode_t>(permissions)), 0);
    const OtherUser other;
    if (eaccess(SHELF_CAMERA_PROGRAM, X_OK) != 0)
        GTEST_SKIP() << "the build folder is closed to other users";
    const Ending ending = camera.run("heartbeat");
    EXPECT_EQ(ending.code, noPort);
    EXPECT_THAT(ending.err, HasSubstr(sentence));
}

TEST(Usage, PortInUseIsTold) {
    Camera camera;
    camera.front().setBusy(true);
    expectRefusedPort(camera, 0666, "Another program uses the port");
}

TEST(Usage, PortWithoutPermissionIsTold) {
    const Camera camera;
    expectRefusedPort(camera, 0, "No permission for the port");
}

TEST(Usage, FileInsteadOfAPortIsTold) {
    std::ofstream("file") << "no port";
    const Ending ending = run({"-p", "file", "heartbeat"});
    EXPECT_EQ(ending.code, noPort);
    EXPECT_THAT(ending.err, HasSubstr("The device is no serial port; choose another."));
}

// --- the only port -----------------------------------------------------------------------------------------

std::size_t portsOfThisMachine() {
    const Ending ending = run({"--json", "ports"});
    EXPECT_EQ(ending.code, done);
    EXPECT_EQ(schemaComplaints(ending.out), "");
    return static_cast<std::size_t>(objectsOf(ending.out).at(0)["ports"].toArray().size());
}

TEST(Usage, PortIsAskedForUnlessThereIsOne) {
    const std::size_t ports = portsOfThisMachine();
    const Ending ending = run({"heartbeat"});
    if (ports == 1)
        EXPECT_NE(ending.code, usage) << ending.err;
    else
        EXPECT_EQ(ending.code, usage) << ending.err;
    EXPECT_EQ(ending.err.find("with -p") != std::string::npos, ports != 1) << ending.err;
}

} // namespace
} // namespace clitest
