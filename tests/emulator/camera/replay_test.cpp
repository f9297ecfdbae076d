// A camera that answers from a recording.
#include "emulator/camera/replaycamera.h"
#include "tests/emulator/camera/camerabench.h"
#include "tests/trace/tapbench.h"

namespace emulatortest {
namespace {

using tracetest::TapBench;

using testing::Contains;
using testing::HasSubstr;

const char* const doorOpens = "AA 5A 01 CD 06 00 00 00 01 C2 B1 A0 65 00 68 70";

class ReplayBench {
public:
    explicit ReplayBench(const TapBench& tap, bool atOnce = false) : camera(tap.recording(), atOnce) {
        camera.onEvent([this](const Event& event) { words.push_back(event.text); });
    }
    /// The answer within the time.
    Bytes ask(const Bytes& request, Time patience = 400ms) {
        camera.receive(request, now);
        const Time end = now + patience;
        Bytes heard;
        while (camera.nextDue() && *camera.nextDue() <= end) {
            now = *camera.nextDue();
            protocol::append(heard, camera.takeDue(now));
        }
        now = end;
        return heard;
    }
    Bytes ask(std::string_view request, Time patience = 400ms) { return ask(hex(request), patience); }

    ReplayCamera camera;
    Time now{1s};
    std::vector<std::string> words;
};

TEST(Replay, AnswersAsRecordedWithTheRecordedDelays) {
    TapBench tap;
    tap.tool(heartbeatRequest);
    tap.camera("AA 5A 01 01", 20ms);
    tap.camera("01 00 00 00 01 7F EA", 30ms);
    ReplayBench bench(tap);
    EXPECT_EQ(bench.ask(heartbeatRequest, 19ms), Bytes());
    EXPECT_EQ(bench.camera.nextDue(), 1s + 20ms);
    EXPECT_EQ(bench.camera.takeDue(1s + 20ms), hex("AA 5A 01 01"));
    EXPECT_EQ(bench.camera.nextDue(), 1s + 50ms);
    EXPECT_EQ(bench.camera.takeDue(1s + 50ms), hex("01 00 00 00 01 7F EA"));
}

TEST(Replay, AnswersAtOnceWhenAsked) {
    TapBench tap;
    tap.tool(heartbeatRequest);
    tap.camera(heartbeatAnswer, 5s);
    ReplayBench bench(tap, true);
    EXPECT_EQ(bench.ask(heartbeatRequest, 0ms), hex(heartbeatAnswer));
}

TEST(Replay, RepeatsTheAnswersOfOneRequestInOrder) {
    TapBench tap;
    tap.tool(heartbeatRequest);
    tap.camera(heartbeatAnswer);
    tap.tool(heartbeatRequest);
    tap.camera("AA 5A 01 01 01 00 00 00 00 5E FA");
    ReplayBench bench(tap);
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
    EXPECT_EQ(bench.ask(heartbeatRequest), hex("AA 5A 01 01 01 00 00 00 00 5E FA"));
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
    EXPECT_THAT(bench.words, Contains("goes on at request 1 of 2 in the recording"));
}

TEST(Replay, SkipsMissingRequests) {
    TapBench tap;
    tap.tool(heartbeatRequest);
    tap.camera(heartbeatAnswer);
    tap.tool(getSnRequest);
    tap.camera(snAnswerA1);
    ReplayBench bench(tap);
    EXPECT_EQ(bench.ask(getSnRequest), hex(snAnswerA1));
    EXPECT_THAT(bench.words, Contains("goes on at request 2 of 2 in the recording"));
    EXPECT_EQ(bench.camera.unknownRequests(), 0U);
}

TEST(Replay, ReportsUnrecordedRequestsAndIsSilent) {
    TapBench tap;
    tap.tool(heartbeatRequest);
    tap.camera(heartbeatAnswer);
    ReplayBench bench(tap);
    EXPECT_EQ(bench.ask(getSnRequest), Bytes());
    EXPECT_EQ(bench.words.back(), "not in the recording; no answer");
    EXPECT_EQ(bench.camera.unknownRequests(), 1U);
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer)) << "one unknown request changes nothing";
}

TEST(Replay, ReportsRecordedSilence) {
    TapBench tap;
    tap.tool(heartbeatRequest);
    tap.tool(heartbeatRequest);
    tap.camera(heartbeatAnswer);
    ReplayBench bench(tap);
    EXPECT_EQ(bench.ask(heartbeatRequest), Bytes());
    EXPECT_EQ(bench.words.back(), "the camera did not answer this");
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
}

TEST(Replay, TakesAnUploadsDataAndGivesItsVerdict) {
    const char* const announcement =
        "AA 5A 01 1B 14 00 00 00 14 05 00 00 9F 04 FA 44 F3 CC 4A 6C 92 DA E6 7B 41 "
        "50 0F C7 55 3D";
    TapBench tap;
    tap.tool(announcement);
    tap.camera("AA 5A 01 1B 05 00 00 00 00 00 00 00 00 91 2E");
    tap.tool(countingBytes(1300), 2s);
    tap.camera("AA 5A 01 1B 01 00 00 00 00 D8 66");
    ReplayBench bench(tap);
    EXPECT_EQ(bench.ask(announcement).size(), 15U);
    EXPECT_EQ(bench.ask(countingBytes(512), 10ms), Bytes());
    Bytes rest = countingBytes(1300);
    rest.erase(rest.begin(), rest.begin() + 512);
    EXPECT_EQ(bench.ask(rest), hex("AA 5A 01 1B 01 00 00 00 00 D8 66"));
    EXPECT_EQ(bench.camera.unknownRequests(), 0U);
}

TEST(Replay, MatchesDoorCommandsOfAnotherTime) {
    TapBench tap;
    tap.tool(doorOpens);
    tap.camera(heartbeatAnswer);
    ReplayBench bench(tap);
    const Bytes later = protocol::buildFrame(0xCD, hex("01 00 00 00 66 00"), 1);
    EXPECT_EQ(bench.ask(later), hex(heartbeatAnswer));
    const Bytes closing = protocol::buildFrame(0xCD, hex("00 00 00 00 66 00"), 1);
    EXPECT_EQ(bench.ask(closing), Bytes());
}

TEST(Replay, MatchesWritesOfABlankedSerialNumber) {
    TapBench tap(true);
    tap.tool("AA 5A 01 03 04 00 00 00 03 41 31 00 1F 00");
    tap.camera("AA 5A 01 03 02 00 00 00 03 00 00 00");
    ReplayBench bench(tap);
    EXPECT_EQ(bench.ask(protocol::buildFrame(0x03, hex("03 42 32 00"), 1)).size(), 12U);
}

TEST(Replay, OmitsBytesBeforeTheFirstRequest) {
    TapBench tap;
    tap.camera("AA");
    tap.tool(heartbeatRequest);
    tap.camera(heartbeatAnswer);
    ReplayBench bench(tap);
    EXPECT_EQ(bench.camera.requests(), 1U);
    EXPECT_EQ(bench.camera.nextDue(), std::nullopt);
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
}

} // namespace
} // namespace emulatortest
