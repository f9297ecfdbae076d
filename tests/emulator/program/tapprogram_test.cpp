// The virtual-camera program as tap and as replay.
#include "emulator/line/pty.h"
#include "emulator/line/terminal.h"
#include "tests/emulator/camera/camerabench.h"
#include "tests/emulator/line/ptyclient.h"
#include "tests/emulator/program/program.h"
#include "trace/recordingfile.h"

#include <filesystem>

namespace emulatortest {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// A virtual camera at "camera" and a tap of it at "tapped", recording to "a.rec".
class TappedCamera {
public:
    explicit TappedCamera(const std::vector<std::string>& more = {},
                          const Program::Environment& environment = {{"LANGUAGE", "en"}})
        : camera({"--link", "camera"}, "camera-") {
        comesTrue([] { return fs::is_symlink("camera"); });
        std::vector<std::string> arguments = {"--tap", "camera", "--link", "tapped", "--record", "a.rec"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        tap.emplace(arguments, "", environment);
        comesTrue([] { return fs::is_symlink("tapped"); });
    }
    Program camera;
    std::optional<Program> tap;
};

std::size_t entriesIn(const char* path) {
    return loadRecording(path).entries.size();
}

TEST(TapProgram, PassesRecordsAndDescribesFrames) {
    TappedCamera tapped;
    PtyClient client("tapped");
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(11), hex(heartbeatAnswer));
    EXPECT_TRUE(comesTrue([] {
        return Program::text("out").find("check code right: the camera is there") != std::string::npos;
    }));
    tapped.tap->signal(SIGTERM);
    EXPECT_EQ(tapped.tap->wait(), 0);
    EXPECT_THAT(Program::text("out"), HasSubstr("recording to a.rec"));
    EXPECT_EQ(entriesIn("a.rec"), 2U);
    EXPECT_FALSE(fs::is_symlink("tapped"));
}

TEST(TapProgram, LosesNothingWhenItIsKilled) {
    TappedCamera tapped;
    PtyClient client("tapped");
    for (int i = 0; i < 20; ++i) {
        client.write(hex(heartbeatRequest));
        ASSERT_EQ(client.read(11).size(), 11U);
    }
    tapped.tap->signal(SIGKILL);
    EXPECT_EQ(tapped.tap->wait(), -1);
    EXPECT_EQ(entriesIn("a.rec"), 40U);
}

TEST(TapProgram, LeavesSerialNumbersOutWhenAsked) {
    TappedCamera tapped({"--blank-serials"});
    PtyClient client("tapped");
    client.write(hex(getSnRequest));
    EXPECT_EQ(ByteView(client.read(23)).range(10, 21).toText(), "SHELF000001") << "the tool gets it";
    tapped.tap->signal(SIGTERM);
    EXPECT_EQ(tapped.tap->wait(), 0);
    const Recording recording = loadRecording("a.rec");
    EXPECT_EQ(ByteView(recording.entries.at(1).bytes).range(10, 21).toText(), "XXXXXXXXXXX");
    EXPECT_THAT(Program::text("a.rec"), HasSubstr("check code right: id 03, success, value \"XXXXXXXXXXX\""));
    EXPECT_THAT(Program::text("out"), testing::Not(HasSubstr("SHELF000001")));
}

TEST(TapProgram, EndsWithCode1WhenTheCamerasLineIsGone) {
    TappedCamera tapped;
    tapped.camera.signal(SIGTERM);
    EXPECT_EQ(tapped.tap->wait(), 1);
    EXPECT_EQ(Program::text("err"), "virtual-camera: the line is gone: camera\n");
}

TEST(TapProgram, GivesTheRecordingANameOfItsOwn) {
    Program camera({"--link", "camera"}, "camera-");
    ASSERT_TRUE(comesTrue([] { return fs::is_symlink("camera"); }));
    Program tap({"--tap=camera", "--link=tapped"});
    ASSERT_TRUE(comesTrue([] { return fs::is_symlink("tapped"); }));
    tap.signal(SIGTERM);
    EXPECT_EQ(tap.wait(), 0);
    std::size_t recordings = 0;
    for (const auto& entry : fs::directory_iterator("."))
        recordings += entry.path().extension() == ".rec" ? 1U : 0U;
    EXPECT_EQ(recordings, 1U);
}

TEST(TapProgram, RefusesAMissingCamera) {
    EXPECT_EQ(Program({"--tap", "missing"}).wait(), 2);
    EXPECT_EQ(Program::text("err"), "virtual-camera: cannot open the device missing: it does not exist\n");
}

TEST(TapProgram, RefusesARecordingThatCannotBeWritten) {
    Program camera({"--link", "camera"}, "camera-");
    ASSERT_TRUE(comesTrue([] { return fs::is_symlink("camera"); }));
    EXPECT_EQ(Program({"--tap", "camera", "--record", "no/such/a.rec"}).wait(), 2);
    EXPECT_EQ(Program::text("err"),
              "virtual-camera: cannot write the recording no/such/a.rec: it does not exist\n");
}

TEST(TapProgram, KeepsAnExistingRecording) {
    Program camera({"--link", "camera"}, "camera-");
    ASSERT_TRUE(comesTrue([] { return fs::is_symlink("camera"); }));
    std::ofstream("old.rec") << "precious";
    EXPECT_EQ(Program({"--tap", "camera", "--record", "old.rec"}).wait(), 2);
    EXPECT_EQ(Program::text("err"),
              "virtual-camera: old.rec is there already; choose another name with --record\n");
    EXPECT_EQ(Program::text("old.rec"), "precious");
}

TEST(ReplayProgram, AnswersFromARecording) {
    const std::string recording = std::string(KEPT_RECORDINGS) + "/ostra.rec";
    Program program({"--replay", recording, "--link", "camera", "--at-once"});
    ASSERT_TRUE(comesTrue([] { return fs::is_symlink("camera"); }));
    PtyClient client("camera");
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(11), hex(heartbeatAnswer));
    client.write(hex("AA 5A 02 01 01 00 00 00 00 DC 22"));
    EXPECT_TRUE(comesTrue([] {
        return Program::text("out").find("not in the recording; no answer") != std::string::npos;
    })) << Program::text("out");
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
}

TEST(ReplayProgram, RefusesOtherFiles) {
    EXPECT_EQ(Program({"--replay", "missing.rec"}).wait(), 2);
    EXPECT_EQ(Program::text("err"), "virtual-camera: cannot read missing.rec: it does not exist\n");
    std::ofstream("bad.rec") << "camera line recording 1\nstart now\n\n";
    EXPECT_EQ(Program({"--replay", "bad.rec"}).wait(), 2);
    EXPECT_EQ(Program::text("err"),
              "virtual-camera: bad.rec, line 3: \"device\" and its value are missing here\n");
}

TEST(ReplayProgram, RunsItsDeviceAtTheRecordedRate) {
    Pty device;
    device.open();
    const std::string recording = std::string(KEPT_RECORDINGS) + "/quenta.rec";
    Program program({"--replay", recording, "--device", device.portName()});
    EXPECT_TRUE(comesTrue([&] { return terminalSpeed(device.slave()) == 230400U; }));
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
}

// --- Chinese
// ---------------------------------------------------------------------------------------------------

const Program::Environment chinese = {{"LANGUAGE", "zh_CN"}};

TEST(TapProgram, SpeaksChinese) {
    TappedCamera tapped({}, chinese);
    EXPECT_TRUE(comesTrue([] { return Program::text("out").find("录制到 a.rec") != std::string::npos; }));
    tapped.camera.signal(SIGTERM);
    EXPECT_EQ(tapped.tap->wait(), 1);
    EXPECT_EQ(Program::text("err"), "virtual-camera: 线路已断开：camera\n");
}

TEST(TapProgram, RecordsTheSameInEveryLanguage) {
    TappedCamera tapped({}, chinese);
    tapped.camera.signal(SIGTERM);
    EXPECT_EQ(tapped.tap->wait(), 1);
    EXPECT_THAT(Program::text("a.rec"), HasSubstr("the line is gone: camera"));
}

TEST(ReplayProgram, SpeaksChinese) {
    const std::string recording = std::string(KEPT_RECORDINGS) + "/ostra.rec";
    Program program({"--replay", recording, "--link", "camera"}, {}, chinese);
    EXPECT_TRUE(comesTrue([] { return Program::text("out").find("正在回答 ") != std::string::npos; }));
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    std::ofstream("bad.rec") << "camera line recording 1\nstart now\n\n";
    EXPECT_EQ(Program({"--replay", "bad.rec"}, {}, chinese).wait(), 2);
    EXPECT_EQ(Program::text("err"),
              "virtual-camera: 录制文件 bad.rec 不能使用，请换一个：第 3 行：这里缺少“device”和它的值\n");
}

} // namespace
} // namespace emulatortest
