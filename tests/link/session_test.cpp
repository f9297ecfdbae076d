// Opening, closing, stopping, exceptions of the library.
#include "tests/link/linktest.h"
#include "tests/support/workingdirectory.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <functional>
#include <future>
#include <thread>
#include <type_traits>

using namespace std::chrono_literals;

namespace {

class Session : public testing::Test {
protected:
    Session() { fake_serial::reset(); }

    static std::string thrownText(const std::function<void()>& action) {
        try {
            action();
        } catch (const char* text) {
            return text;
        }
        return "nothing thrown";
    }

    StdoutCapture out;
};

TEST_F(Session, APortNameAloneOpensAt9600) {
    { const CameraSp camera("COM3"); }
    EXPECT_EQ(fake_serial::calls(), (Lines{"open COM3 9600 4294967295,50,0,50,0 8N1", "close"}));
    EXPECT_EQ(out.lines(), Lines{"in ~CameraSp"});
}

TEST_F(Session, PortAndRateOpenAtThatRate) {
    const CameraSp camera("COM3", 230400);
    EXPECT_EQ(fake_serial::calls(), (Lines{"open COM3 230400 4294967295,50,0,50,0 8N1"}));
}

TEST_F(Session, TheOnlyPortIsPickedWithLongTimeouts) {
    fake_serial::setPorts({{"COM7", "adapter", "id"}});
    { const CameraSp camera(115200U); }
    { const CameraSp camera; }
    EXPECT_EQ(fake_serial::calls(), (Lines{"open COM7 115200 4294967295,5000,0,5000,0 8N1", "close",
                                           "open COM7 9600 4294967295,5000,0,5000,0 8N1", "close"}));
}

TEST_F(Session, ThrowsWhenThereIsNoPort) {
    EXPECT_EQ(thrownText([] { CameraSp camera; }), "serial unavailable");
    EXPECT_EQ(thrownText([] { CameraSp camera(9600U); }), "serial unavailable");
    EXPECT_EQ(fake_serial::calls(), Lines{});
}

TEST_F(Session, ThrowsWhenThereAreSeveralPorts) {
    fake_serial::setPorts({{"COM1", "", ""}, {"COM2", "", ""}});
    EXPECT_EQ(thrownText([] { CameraSp camera; }), "serial port size>1");
    EXPECT_EQ(thrownText([] { CameraSp camera(9600U); }), "serial port size>1");
    EXPECT_EQ(fake_serial::calls(), Lines{});
}

TEST_F(Session, ThrowsTheLibraryExceptionWhenOpeningFails) {
    fake_serial::failOpening(EACCES);
    EXPECT_THROW(CameraSp("COM3", 9600), serial::IOException);
    EXPECT_EQ(out.lines(), Lines{});
}

TEST_F(Session, RefusesOtherFilesWithoutOpeningThem) {
    for (const char* path : {"/dev/null", "/etc/passwd", "/tmp"})
        EXPECT_THROW(CameraSp(path, 9600), serial::IOException) << path;
    EXPECT_EQ(fake_serial::calls(), Lines{});
}

TEST_F(Session, ATerminalsPathIsOpened) {
    const CameraSp camera("/dev/ptmx", 9600); // the recording library opens nothing
    ASSERT_EQ(fake_serial::calls().size(), 1U);
    EXPECT_EQ(fake_serial::calls().front().rfind("open /dev/ptmx 9600", 0), 0U);
}

TEST_F(Session, PortsAreListedByNameInTheOrderReported) {
    EXPECT_TRUE(CameraSp::getPorts().empty());
    fake_serial::setPorts({{"COM10", "b", "2"}, {"COM2", "a", "1"}});
    EXPECT_EQ(CameraSp::getPorts(), (Lines{"COM10", "COM2"}));
}

TEST_F(Session, EveryCommandFailsWithAnEmptyPortName) {
    CameraSp camera("", 9600);
    EXPECT_FALSE(camera.testHeartBeat());
    EXPECT_EQ(camera.getSn(), "");
    EXPECT_TRUE(camera.getOriginPicInfos().empty());
    camera.getOriginTargetPic(1, 10);
    camera.opDoor(true);
    EXPECT_FALSE(camera.getQuentaModbusPic(1));
}

TEST_F(Session, DestructionIsVirtual) {
    EXPECT_TRUE(std::has_virtual_destructor_v<CameraSp>);
}

/// Every command with its failure value.
struct CommandCase {
    const char* name;
    std::function<bool(CameraSp&)> failed;
};

void PrintTo(const CommandCase& command, std::ostream* out) {
    *out << command.name;
}

const std::vector<CommandCase>& commands() {
    static const std::vector<CommandCase> all{
        {"testHeartBeat", [](CameraSp& c) { return !c.testHeartBeat(); }},
        {"getCommonProperty", [](CameraSp& c) { return c.getCommonProperty(15, 2).empty(); }},
        {"withoutParse", [](CameraSp& c) { return c.getCommonPropertyWithoutParse(3, 15, 50, 100).empty(); }},
        {"setCommonProperty", [](CameraSp& c) { return !c.setCommonProperty(15, {30}, 3); }},
        {"getAppVersion", [](CameraSp& c) { return c.getAppVersion().empty(); }},
        {"getSystemVersion", [](CameraSp& c) { return c.getSystemVersion().empty(); }},
        {"getQvVersion", [](CameraSp& c) { return c.getQvVersion().empty(); }},
        {"getModelInfo", [](CameraSp& c) { return c.getModelInfo().empty(); }},
        {"getSn", [](CameraSp& c) { return c.getSn().empty(); }},
        {"setSn", [](CameraSp& c) { return !c.setSn("A1"); }},
        {"rebootCamera", [](CameraSp& c) { return !c.rebootCamera(); }},
        {"resetToFactory", [](CameraSp& c) { return !c.resetToFactory(); }},
        {"opDoor", [](CameraSp& c) { return c.opDoor(true), true; }},
        {"originCapture", [](CameraSp& c) { return !c.originCapture(); }},
        {"captureV1", [](CameraSp& c) { return !c.captureV1(); }},
        {"getOriginPicInfos", [](CameraSp& c) { return c.getOriginPicInfos().empty(); }},
        {"getPicInfosV1", [](CameraSp& c) { return c.getPicInfosV1().empty(); }},
        {"delOriginPic", [](CameraSp& c) { return !c.delOriginPic(1); }},
        {"delPicV1", [](CameraSp& c) { return !c.delPicV1(1, 2, 3); }},
        {"getOriginTargetPic", [](CameraSp& c) { return c.getOriginTargetPic(1, 10), true; }},
        {"getTargetPicV1", [](CameraSp& c) { return c.getTargetPicV1(1, 10), true; }},
        {"takePic", [](CameraSp& c) { return !c.takePic(); }},
        {"quentaProperty", [](CameraSp& c) { return c.getQuentaModbusProperty("").empty(); }},
        {"quentaPic", [](CameraSp& c) { return !c.getQuentaModbusPic(1); }},
    };
    return all;
}

class EveryCommand : public Session, public testing::WithParamInterface<CommandCase> {
protected:
    EveryCommand() { clock.skipPauses(); }

    TestClock clock;
};

TEST_P(EveryCommand, ReportsAnExceptionOfTheLibraryByValue) {
    for (const char* call : {"setTimeout", "flush", "flushInput", "write", "read"}) {
        fake_serial::reset();
        CameraSp camera("COM9", 460800, clock);
        fake_serial::throwOn(call);
        // A call that the command does not make cannot fail it; an endless download still has to end.
        fake_serial::willReadForever({0x00});
        const bool failed = GetParam().failed(camera);
        EXPECT_TRUE(failed || fake_serial::count(call) == 0) << call;
    }
}

TEST_P(EveryCommand, MakesNoLibraryCallOnceTheLinkIsStopped) {
    CameraSp camera("COM9", 460800, clock);
    camera.requestStop();
    EXPECT_TRUE(GetParam().failed(camera));
    EXPECT_EQ(fake_serial::calls().size(), 1U) << "only the opening";
}

INSTANTIATE_TEST_SUITE_P(Link, EveryCommand, testing::ValuesIn(commands()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Session, RemembersThatThePortFailedUntilItWorksAgain) {
    CameraSp camera("COM9", 460800);
    EXPECT_FALSE(camera.portFailed());
    for (const char* call : {"setTimeout", "flushInput", "write", "read"}) {
        fake_serial::reset();
        EXPECT_FALSE(camera.testHeartBeat()); // no answer is no failure of the port
        EXPECT_FALSE(camera.portFailed());
        fake_serial::throwOn(call);
        EXPECT_FALSE(camera.testHeartBeat());
        EXPECT_TRUE(camera.portFailed()) << call;
    }
    fake_serial::reset();
    EXPECT_FALSE(camera.testHeartBeat());
    EXPECT_FALSE(camera.portFailed());
}

TEST_F(Session, DoesNotReportFailureWhenNoPortIsChosen) {
    CameraSp none("", 460800);
    EXPECT_FALSE(none.testHeartBeat());
    EXPECT_FALSE(none.portFailed());
}

TEST_F(Session, DoesNotReportFailureWhenInputIsNotDiscarded) {
    CameraSp camera("COM9", 460800);
    fake_serial::refuseFlushInput();
    EXPECT_FALSE(camera.testHeartBeat());
    EXPECT_FALSE(camera.portFailed());
}

TEST_F(Session, ReportsARequestedStop) {
    CameraSp camera("COM9", 9600);
    EXPECT_FALSE(camera.stopRequested());
    camera.requestStop();
    EXPECT_TRUE(camera.stopRequested());
}

TEST_F(Session, StoppingEndsAPauseAtOnce) {
    CameraSp camera("COM9", 460800);
    std::promise<void> begun;
    auto pausing = std::async(std::launch::async, [&] {
        begun.set_value();
        return camera.pause(20s);
    });
    begun.get_future().wait();
    std::this_thread::sleep_for(100ms); // the pause itself cannot be seen
    const auto asked = std::chrono::steady_clock::now();
    camera.requestStop();
    EXPECT_FALSE(pausing.get());
    EXPECT_LT(std::chrono::steady_clock::now() - asked, 10s);
}

TEST_F(Session, StoppingEndsAnEndlessDownload) {
    CameraSp camera("COM9", 460800);
    std::atomic<bool> reading{false};
    fake_serial::onWrite([&](const auto&) { reading = true; });
    auto download = std::async(std::launch::async, [&] { camera.getOriginTargetPic(1, 0xFFFFFFFF); });
    while (!reading)
        std::this_thread::sleep_for(1ms);
    EXPECT_EQ(download.wait_for(50ms), std::future_status::timeout);
    camera.requestStop();
    EXPECT_EQ(download.wait_for(2s), std::future_status::ready);
}

TEST_F(Session, AnExceptionOfTheLibraryEndsAnEndlessDownload) {
    CameraSp camera("COM9", 460800);
    fake_serial::willTimeOut(3);
    fake_serial::willThrowOnRead();
    camera.getTargetPicV1(1, 0xFFFFFFFF);
    EXPECT_EQ(fake_serial::count("read"), 4);
}

TEST_F(Session, WaitingForLeasesEndsWithTheLast) {
    CameraSp camera("COM9", 460800);
    CameraSp::Lease first(camera);
    auto second = std::make_unique<CameraSp::Lease>(camera);
    std::atomic<bool> released{false};
    std::thread job([&, lease = std::move(first)]() mutable {
        std::this_thread::sleep_for(30ms);
        second.reset();
        released = true;
        lease = CameraSp::Lease();
    });
    camera.waitUntilUnused();
    EXPECT_TRUE(released);
    job.join();
}

TEST_F(Session, ALeaseMovedOntoItselfIsStillHeld) {
    CameraSp camera("COM9", 460800);
    CameraSp::Lease lease(camera);
    CameraSp::Lease& same = lease;
    lease = std::move(same);
    auto waiting = std::async(std::launch::async, [&] { camera.waitUntilUnused(); });
    EXPECT_EQ(waiting.wait_for(50ms), std::future_status::timeout);
    lease = CameraSp::Lease();
    EXPECT_EQ(waiting.wait_for(10s), std::future_status::ready);
}

TEST_F(Session, ClosingAndOpeningAgainIsPossibleAtOnce) {
    for (int i = 0; i < 3; ++i)
        const CameraSp camera("COM9", 9600);
    EXPECT_EQ(fake_serial::count("open"), 3);
    EXPECT_EQ(fake_serial::count("close"), 3);
    EXPECT_EQ(out.lines(), times(3, "in ~CameraSp"));
}

} // namespace
