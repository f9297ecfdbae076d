// Commands against faults, over a pty with the real serial library.
#include "emulator/ptyfront.h"
#include "link/camerasp.h"
#include "tests/faults/report.h"
#include "tests/support/stdoutcapture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <map>
#include <optional>
#include <thread>

using namespace std::chrono_literals;
using emulator::CameraType;
using emulator::PtyFront;
using emulator::VirtualCamera;

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

enum class Outcome { works, fails, meaningless };

/// One command: how it is asked for, what its success is, and how long it may take to fail.
struct Command {
    const char* name;    ///< of the method
    const char* request; ///< as the virtual camera calls it
    CameraType type;
    std::function<bool(CameraSp&)> works;
    milliseconds longest; ///< tries times the time-out
    /// What differs from the common column.
    std::map<std::string, Outcome> differs;
};

void PrintTo(const Command& command, std::ostream* out) {
    *out << command.name;
}

/// What every command that waits for a whole frame does at each fault. Answers are found behind garbage and
/// in pieces; check code, address and command of an answer are not looked at.
const std::map<std::string, Outcome>& commonColumn() {
    static const std::map<std::string, Outcome> column{
        {"silent", Outcome::fails},
        {"delay=60", Outcome::works},
        {"late", Outcome::fails},
        {"glue", Outcome::fails},
        {"raw=414243", Outcome::fails},
        {"truncate=1", Outcome::fails},
        {"truncate=6", Outcome::fails},
        {"stray=1", Outcome::fails},
        {"before=33", Outcome::works},
        {"before=AA", Outcome::works},
        {"before=AA33", Outcome::works},
        {"before=335A00AA", Outcome::works},
        {"split=1,60", Outcome::works},
        {"split=9,60", Outcome::works},
        {"length=+1", Outcome::fails},
        {"length=-1", Outcome::fails},
        {"length=0xFFFFFFFF", Outcome::fails},
        {"bad-check", Outcome::works},
        {"zero-check", Outcome::works},
        {"address=0x55", Outcome::works},
        {"command=0x21", Outcome::works},
        {"hang-up=0", Outcome::fails},
        {"hang-up=5", Outcome::fails},
    };
    return column;
}

using Differs = std::map<std::string, Outcome>;

/// Properties check their result byte; what is beyond the reads of a command is not seen whole.
Differs property(Differs more = {}) {
    more.insert(
        {{"result=1", Outcome::fails}, {"result=0xFF", Outcome::fails}, {"payload=2", Outcome::fails}});
    return more;
}

/// Writes need no value in the answer.
Differs status() {
    return {{"result=1", Outcome::fails}, {"result=0xFF", Outcome::fails}};
}

bool deletesAll(CameraSp& camera) {
    return camera.delOriginPic(0xFF);
}

const std::vector<Command>& commands() {
    using enum CameraType;
    static const std::vector<Command> all{
        {"testHeartBeat",
         "heartbeat",
         ostra,
         [](CameraSp& c) { return c.testHeartBeat(); },
         200ms,
         // One read, compared whole: nothing before, nothing behind, and the command has to be right.
         {{"before=33", Outcome::fails},
          {"before=AA", Outcome::fails},
          {"before=AA33", Outcome::fails},
          {"before=335A00AA", Outcome::fails},
          {"command=0x21", Outcome::fails},
          {"result=0", Outcome::fails},
          {"split=9,400", Outcome::fails},
          {"delay=400", Outcome::fails}}},
        {"getSn", "getSn", ostra, [](CameraSp& c) { return c.getSn() == "SHELF000001"; }, 500ms,
         property({{"echo=0x63", Outcome::fails}})},
        {"setSn", "setSn", ostra, [](CameraSp& c) { return c.setSn("SHELF000001"); }, 500ms, status()},
        {"getAppVersion", "getAppVersion", ostra, [](CameraSp& c) { return c.getAppVersion() == "2.3.1"; },
         200ms,
         property({{"echo=0x63", Outcome::works},
                   {"value-size=49", Outcome::fails},
                   {"zero-inside=3", Outcome::fails}})},
        {"getSystemVersion", "getSystemVersion", ostra,
         [](CameraSp& c) { return c.getSystemVersion() == "5.10.8"; }, 300ms,
         property({{"echo=0x63", Outcome::works}, {"value-size=49", Outcome::fails}})},
        {"getQvVersion", "getQvVersion", ostra, [](CameraSp& c) { return c.getQvVersion() == "qv 1.4.0"; },
         250ms, property({{"echo=0x63", Outcome::works}, {"value-size=64", Outcome::fails}})},
        {"getModelInfo", "getModelInfo", ostra,
         [](CameraSp& c) { return c.getModelInfo() == "model_v1 2024-01-31"; }, 500ms,
         property({{"echo=0x63", Outcome::fails}, {"value-size=139", Outcome::fails}})},
        {"getCommonProperty", "getProperty", ostra,
         [](CameraSp& c) { return c.getCommonProperty(15, 2) == std::vector<std::uint8_t>{30}; }, 500ms,
         property({{"echo=0x63", Outcome::works}, {"value-size=989", Outcome::fails}})},
        {"setCommonProperty", "setProperty", ostra,
         [](CameraSp& c) { return c.setCommonProperty(15, {30}, 3); }, 500ms, status()},
        {"getCommonPropertyWithoutParse",
         "gyroTest",
         ostra,
         [](CameraSp& c) {
             const auto answer = c.getCommonPropertyWithoutParse(3, 0x0F, 50, 100);
             return std::string(answer.begin(), answer.end()) == "3success";
         },
         50ms,
         // One short read of an answer without a frame.
         {{"delay=60", Outcome::fails},
          {"before=33", Outcome::fails},
          {"before=AA", Outcome::fails},
          {"before=AA33", Outcome::fails},
          {"before=335A00AA", Outcome::fails},
          {"split=1,60", Outcome::fails},
          {"split=9,60", Outcome::works},
          {"length=+1", Outcome::works},
          {"length=-1", Outcome::works},
          {"length=0xFFFFFFFF", Outcome::works}}},
        {"rebootCamera", "reboot", ostra, [](CameraSp& c) { return c.rebootCamera(); }, 500ms, status()},
        {"resetToFactory", "reset", ostra, [](CameraSp& c) { return c.resetToFactory(); }, 500ms, status()},
        {"delOriginPic", "delete", ostra, &deletesAll, 2000ms, status()},
        {"delPicV1", "deleteV1", salesDynamic, [](CameraSp& c) { return c.delPicV1(0xFFFF, 0, 0); }, 2000ms,
         status()},
        {"originCapture", "capture", ostra, [](CameraSp& c) { return c.originCapture(); }, 10000ms, status()},
        {"getOriginPicInfos",
         "catalogue",
         ostra,
         [](CameraSp& c) { return c.getOriginPicInfos().size() == 1; },
         500ms,
         // Counted by the answer's length; the count byte and the result say nothing.
         {{"count=200", Outcome::works}, {"records=378", Outcome::fails}, {"payload=2", Outcome::fails}}},
        {"getQuentaModbusProperty",
         "jsonProperty",
         quenta,
         [](CameraSp& c) { return c.getQuentaModbusProperty({}) == R"({"result":0,"version":"1.0.3"})"; },
         500ms,
         // An envelope of its own: no address, and its start is another.
         {{"address=0x55", Outcome::meaningless},
          {"command=0x21", Outcome::meaningless},
          {"invalid-json", Outcome::fails},
          {"short-json=9", Outcome::fails}}},
        {"captureV1", "captureV1", salesDynamic, [](CameraSp& c) { return c.captureV1(); }, 2500ms, status()},
    };
    return all;
}

/// A camera that restarts at once, so that the next command finds it.
emulator::CameraSettings settingsFor(const Command& command) {
    emulator::CameraSettings settings = emulator::settingsForType(command.type);
    settings.rebootTime = 0ms;
    settings.factoryResetTime = 0ms;
    return settings;
}

std::unique_ptr<CameraSp> connect(PtyFront& front) {
    auto client = std::make_unique<CameraSp>(front.portName(), 460800);
    client->setSlaveAddress(front.withCamera([](VirtualCamera& c) { return c.settings().address; }));
    return client;
}

/// What was seen in a cell, and what of it was not as it must be.
struct Cell {
    std::string fault;
    faultmatrix::Observation observation;
    std::vector<std::string> complaints;
};

/// Runs one cell of the matrix.
Cell runCell(const Command& command, const std::string& fault, Outcome expected) {
    std::vector<std::string> complaints;
    const auto require = [&](bool holds, const std::string& what) {
        if (!holds)
            complaints.push_back(fault + ": " + what);
    };
    PtyFront front(settingsFor(command));
    auto client = connect(front);
    require(client->testHeartBeat(), "the camera is there");
    front.withCamera(
        [](VirtualCamera& c) { c.state().pictures = {emulator::makePicture(5, emulator::Bytes(100, 7))}; });
    front.withCamera([&](VirtualCamera& c) { c.addFault(fault + "@" + command.request + "#1"); });

    const auto start = Clock::now();
    const bool worked = command.works(*client);
    const auto took = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    require(worked == (expected == Outcome::works), worked ? "works" : "fails");
    require(took <= command.longest + 1s, "takes " + std::to_string(took.count()) + " ms");

    if (fault.starts_with("hang-up")) {
        while (front.lineOpen()) // the client may see the end of the line first
            std::this_thread::sleep_for(1ms);
        require(!client->testHeartBeat(), "a command without a device works");
        client.reset();
        front.comeBack();
        client = connect(front);
    }
    std::this_thread::sleep_for(400ms);    // whatever is still on its way arrives
    const bool heldBack = fault == "late"; // its answer comes in front of the next one
    require(client->testHeartBeat() != heldBack, "the heartbeat behind it");
    require(command.works(*client), "the next good command fails");
    require(front.withCamera([](VirtualCamera& c) { return c.record().badFrames; }) == 0,
            "the camera received a bad frame");
    return {fault, {worked, complaints.empty(), took}, complaints};
}

class FaultMatrix : public testing::TestWithParam<Command> {
protected:
    /// Named by the environment, a page with all that was seen is written.
    static void TearDownTestSuite() {
        if (const char* const path = std::getenv("CAMERA_FAULT_REPORT")) {
            EXPECT_TRUE(report().write(path)) << path;
        }
    }
    static faultmatrix::Report& report() {
        static faultmatrix::Report all;
        return all;
    }

    StdoutCapture quiet;
};

TEST_P(FaultMatrix, EveryFaultGivesItsOutcomeInTimeAndTheNextCommandWorks) {
    const Command& command = GetParam();
    std::map<std::string, Outcome> row = command.differs;
    row.insert(commonColumn().begin(), commonColumn().end());
    std::vector<std::future<Cell>> cells;
    for (const auto& [fault, expected] : row) {
        if (expected == Outcome::meaningless)
            continue;
        cells.push_back(std::async(std::launch::async, [&command, fault = fault, expected = expected] {
            return runCell(command, fault, expected);
        }));
    }
    for (auto& future : cells) {
        const Cell cell = future.get();
        report().add(command.name, cell.fault, cell.observation);
        for (const std::string& complaint : cell.complaints)
            ADD_FAILURE() << complaint;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryCommand, FaultMatrix, testing::ValuesIn(commands()),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
