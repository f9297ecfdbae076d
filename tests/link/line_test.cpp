// Several users of the line, and log lines of exceptions.
#include "tests/link/linktest.h"
#include "tests/support/workingdirectory.h"

#include <atomic>
#include <functional>
#include <future>
#include <thread>

using namespace std::chrono_literals;

namespace {

class SharedLine : public LinkTest {
protected:
};

template <typename Work>
auto elsewhere(Work work) {
    return std::async(std::launch::async, std::move(work));
}

struct FailureLine {
    const char* name;
    std::function<void(CameraSp&)> run;
    Lines lines; ///< behind "command failed:..."
};

void PrintTo(const FailureLine& each, std::ostream* out) {
    *out << each.name;
}

class EveryFailureLine : public LinkTest, public testing::WithParamInterface<FailureLine> {};

const std::vector<FailureLine>& failureLines() {
    static const std::vector<FailureLine> all{
        {"getSn", [](CameraSp& c) { c.getSn(); }, {"getSnFailed"}},
        {"setCommonProperty", [](CameraSp& c) { c.setCommonProperty(15, {1}, 3); }, {"setSnFailed"}},
        {"setSn", [](CameraSp& c) { c.setSn("1"); }, {"setSnFailed"}},
        {"getQvVersion", [](CameraSp& c) { c.getQvVersion(); }, {"propertyValue error:"}},
        {"getModelInfo", [](CameraSp& c) { c.getModelInfo(); }, {"getModelInfo checkData error"}},
        {"rebootCamera", [](CameraSp& c) { c.rebootCamera(); }, {"reset failed"}},
        {"resetToFactory", [](CameraSp& c) { c.resetToFactory(); }, {"reset failed"}},
        {"originCapture", [](CameraSp& c) { c.originCapture(); }, {"error in originCapture"}},
        {"captureV1", [](CameraSp& c) { c.captureV1(); }, {"error in captureV1"}},
        {"getOriginPicInfos",
         [](CameraSp& c) { c.getOriginPicInfos(); },
         {"error in getOriginPicInfos cmd 0x07  0"}},
        {"getPicInfosV1", [](CameraSp& c) { c.getPicInfosV1(); }, {"error in getPicInfos cmd 0xc7  0"}},
        {"delOriginPic", [](CameraSp& c) { c.delOriginPic(1); }, {"error in delOriginPic deletepic"}},
        {"delPicV1", [](CameraSp& c) { c.delPicV1(1, 2, 3); }, {"error in delPicV1 deletepic"}},
        {"takePic", [](CameraSp& c) { c.takePic(); }, {"error in takepic deletepic"}},
        {"quentaProperty", [](CameraSp& c) { c.getQuentaModbusProperty(""); }, {"error"}},
        {"quentaPic", [](CameraSp& c) { c.getQuentaModbusPic(1); }, {"error"}},
    };
    return all;
}

} // namespace

TEST_P(EveryFailureLine, FollowsTheExceptionOfTheLibrary) {
    fake_serial::throwOn("read", "scripted");
    GetParam().run(camera);
    const Lines lines = out.lines();
    ASSERT_GE(lines.size(), GetParam().lines.size() + 1);
    const auto own = lines.end() - static_cast<std::ptrdiff_t>(GetParam().lines.size());
    EXPECT_EQ(Lines(own, lines.end()), GetParam().lines);
    EXPECT_EQ((own - 1)->rfind("command failed:", 0), 0U) << *(own - 1);
}

INSTANTIATE_TEST_SUITE_P(Link, EveryFailureLine, testing::ValuesIn(failureLines()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(SharedLine, AnnouncementsFailureLineFollowsItsException) {
    files::write("file.bin", {1});
    camera.setAppFilePath("file.bin");
    fake_serial::throwOn("read");
    EXPECT_FALSE(camera.appUpdate());
    EXPECT_EQ(out.lines().back(), "appupdate queryCanUpdate checkfailed");
    EXPECT_FALSE(camera.appUpdateV1("file.bin", "file.bin"));
    EXPECT_EQ(out.lines().back(), "appupdateV1 queryCanUpdate checkfailed");
}

TEST_F(SharedLine, VerdictsFailureLineFollowsItsException) {
    files::write("file.bin", {1});
    camera.setAppFilePath("file.bin");
    answer("AA 5A 01 1B 05 00 00 00 00 00 00 00 00 91 2E");
    fake_serial::willThrowOnRead();
    EXPECT_FALSE(camera.appUpdate());
    EXPECT_EQ(out.lines().back(), "appupdate update-end failed");
}

TEST_F(SharedLine, UploadWaitsForADownloadAndThenRuns) {
    files::write("file.bin", {1});
    camera.setAppFilePath("file.bin");
    std::atomic<bool> downloading{false};
    fake_serial::onWrite([&](const auto&) { downloading = true; });
    auto download = elsewhere([this] { camera.getOriginTargetPic(1, 100); });
    while (!downloading)
        std::this_thread::sleep_for(1ms);
    auto upload = elsewhere([this] { return camera.appUpdate(); });
    while (camera.lineState().waitingJob != LineUser::upload)
        std::this_thread::sleep_for(1ms);
    EXPECT_EQ(camera.lineState().holder, LineUser::download);
    EXPECT_EQ(fake_serial::writes().size(), 1U);

    camera.endDownload();
    EXPECT_EQ(download.wait_for(5s), std::future_status::ready);
    fake_serial::onWrite({});
    EXPECT_FALSE(upload.get()); // unanswered
    EXPECT_EQ(fake_serial::writes().at(1).at(3), 0x1B);
}

TEST_F(SharedLine, StopEndsTheWaitingOfAnUploadWhileTheLineIsHeld) {
    files::write("file.bin", {1});
    camera.setAppFilePath("file.bin");
    std::promise<void> written;
    fake_serial::onWrite([held = written.get_future().share()](const auto&) { held.wait(); });
    auto download = elsewhere([this] { camera.getOriginTargetPic(1, 100); });
    while (camera.lineState().holder != LineUser::download)
        std::this_thread::sleep_for(1ms);
    auto upload = elsewhere([this] { return camera.appUpdate(); });
    while (camera.lineState().waitingJob != LineUser::upload)
        std::this_thread::sleep_for(1ms);

    camera.requestStop();
    EXPECT_EQ(upload.wait_for(5s), std::future_status::ready);
    EXPECT_EQ(camera.lineState().holder, LineUser::download);
    written.set_value();
    download.get();
    EXPECT_FALSE(upload.get());
}

TEST_F(SharedLine, EndingAFinishedDownloadKeepsTheUpload) {
    files::write("file.bin", {1});
    camera.setFirewareFilePath("file.bin");
    camera.endDownload();
    answer("AA 5A 01 0B 05 00 00 00 00 00 00 00 00 07 BA");
    EXPECT_TRUE(camera.firewareUpdate());
}

TEST_F(SharedLine, LateAnswerIsDiscardedForTheUserWhoWaited) {
    std::promise<void> inRead;
    std::promise<void> goOn;
    fake_serial::onWrite([&, first = true](const auto&) mutable {
        if (!std::exchange(first, false))
            return;
        inRead.set_value();
        goOn.get_future().wait();
    });
    auto heartbeat = elsewhere([this] { return camera.testHeartBeat(); });
    inRead.get_future().wait();
    std::promise<void> asked;
    auto reading = elsewhere([&] {
        asked.set_value();
        return camera.getCommonProperty(15, 2);
    });
    asked.get_future().wait();
    std::this_thread::sleep_for(50ms); // until it stands in the queue
    goOn.set_value();
    EXPECT_FALSE(heartbeat.get());
    reading.get();
    // One for the heartbeat itself, one between the two.
    EXPECT_EQ(fake_serial::count("flushInput"), 2);
    ASSERT_EQ(clock.pauses().size(), 1U);
    EXPECT_LE(clock.pauses().front(), 500ms);
}

TEST_F(SharedLine, NothingIsDiscardedBetweenLoneCommands) {
    camera.getSn();
    camera.getModelInfo();
    EXPECT_EQ(fake_serial::count("flushInput"), 0);
    EXPECT_TRUE(clock.pauses().empty());
}

TEST_F(SharedLine, CallsBackBetweenTwoReadsOnTheCommandsThread) {
    std::vector<std::thread::id> callers;
    camera.setWaitCallback([&] { callers.push_back(std::this_thread::get_id()); });
    camera.getOriginPicInfos(); // ten reads
    EXPECT_EQ(callers, std::vector(9, std::this_thread::get_id()));
}

TEST_F(SharedLine, AddressChangesWhenItsHoldIsGone) {
    {
        const CameraSp::AddressHold hold(camera);
        camera.setSlaveAddress(0x22);
        camera.rebootCamera();
        EXPECT_EQ(fake_serial::writes().back().at(2), 0x01);
    }
    camera.rebootCamera();
    EXPECT_EQ(fake_serial::writes().back().at(2), 0x22);
}

TEST_F(SharedLine, CallersLongestTimeoutIsSet) {
    camera.getCommonPropertyWithoutParse(3, 15, 0xFFFFFFFF, 100);
    EXPECT_EQ(calls().front(), timeouts(0xFFFFFFFF));
}

TEST_F(SharedLine, CallersReadSizeIsPassedOnWhole) {
    camera.getCommonPropertyWithoutParse(3, 15, 50, 0x80000001);
    EXPECT_EQ(fake_serial::count("read"), 1);
    EXPECT_EQ(calls().back(), "read 2147483649");
}

TEST_F(SharedLine, NegativeReadSizeIsRefused) {
    std::vector<std::uint8_t> buffer;
    EXPECT_FALSE(camera.checkQuentaData(buffer, -1, 3));
    EXPECT_EQ(fake_serial::count("read"), 0);
}

TEST_F(SharedLine, ShortPauseDoesNotSleep) {
    clock.pauseForReal();
    auto shortest = std::chrono::steady_clock::duration::max();
    for (int attempt = 0; attempt < 10; ++attempt) { // of which the scheduler may spoil some
        const auto before = std::chrono::steady_clock::now();
        for (int i = 0; i < 100; ++i)
            EXPECT_TRUE(camera.pause(1000ns));
        shortest = std::min(shortest, std::chrono::steady_clock::now() - before);
    }
    EXPECT_LT(shortest, 4ms); // a wait on a condition takes at least 50 us
}

TEST_F(SharedLine, ShortPauseSeesTheStop) {
    clock.pauseForReal();
    camera.requestStop();
    EXPECT_FALSE(camera.pause(1000ns));
}

TEST_F(SharedLine, DigestIsLoggedAfterTheTimeouts) {
    files::write("file.bin", {1});
    camera.setAppFilePath("file.bin");
    fake_serial::throwOn("setTimeout");
    EXPECT_FALSE(camera.appUpdate());
    for (const std::string& line : out.lines())
        EXPECT_NE(line.rfind("md5Value2:", 0), 0U);
}

TEST_F(SharedLine, SecondProtocolBuildsItsFramesOnce) {
    files::write("file.bin", {'a', 'b', 'c'});
    int announcements = 0;
    fake_serial::onWrite([&](const auto&) {
        if (++announcements == 3)
            camera.setSlaveAddress(0x33);
        answer("AA 5A 01 1D 06 00 00 00 01 00 03 00 00 00 00 00");
    });
    camera.appUpdateV1("file.bin", "file.bin");
    const auto writes = fake_serial::writes();
    ASSERT_EQ(writes.size(), 16U);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(writes[i], writes[0]);
}

TEST_F(SharedLine, StopEndsTheReadingOfAFile) {
    std::ofstream("large.bin").close();
    std::filesystem::resize_file("large.bin", std::uintmax_t{1} << 30U);
    camera.setAppFilePath("large.bin");
    auto upload = elsewhere([this] { return camera.appUpdate(); });
    while (camera.progress().phase != TransferProgress::Phase::reading || camera.progress().done == 0)
        std::this_thread::sleep_for(1ms);
    camera.requestStop();
    EXPECT_FALSE(upload.get());
    EXPECT_LT(camera.progress().done, camera.progress().total / 2) << "reading is the first half";
    EXPECT_EQ(fake_serial::count("write"), 0);
}

TEST(QuantitySequence, GoesOnWhereItWasGivenUp) {
    const QuantitySequence::Time start{100s};
    QuantitySequence sequence;
    EXPECT_EQ(sequence.next(4, start), 0U);
    sequence.advance(4, start);
    EXPECT_EQ(sequence.next(4, start + 100ms), 1U);
}

TEST(QuantitySequence, BeginsAnewAfterTheLast) {
    const QuantitySequence::Time start{100s};
    QuantitySequence sequence;
    for (int i = 0; i < 4; ++i)
        sequence.advance(4, start);
    EXPECT_EQ(sequence.next(4, start), 0U);
}

TEST(QuantitySequence, BeginsAnewAfterAPause) {
    const QuantitySequence::Time start{100s};
    QuantitySequence sequence;
    sequence.advance(4, start);
    EXPECT_EQ(sequence.next(4, start + 3s), 0U);
}
