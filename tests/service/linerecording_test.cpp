// Recording an open line.
#include "service/linerecording.h"
#include "tests/support/workingdirectory.h"
#include "tests/trace/linebytes.h"
#include "trace/recordingfile.h"

#include <gmock/gmock.h>

namespace {

using namespace linetest;
using namespace std::chrono_literals;

trace::RecordingHead head() {
    trace::RecordingHead head;
    head.start = "2026-11-21T09:00:05.123Z";
    head.device = "COM9";
    return head;
}

TEST(LineRecording, HoldsBothSidesWithTheirTimes) {
    const Clock::Time start{5s};
    {
        service::LineRecording recording("a.rec", head());
        recording.sending(hex(heartbeatRequest), start);
        recording.received(hex(heartbeatAnswer), start + 12ms, start + 12ms);
        recording.finish();
        EXPECT_EQ(recording.failure(), "");
    }
    const trace::Recording read = trace::loadRecording("a.rec");
    EXPECT_EQ(read.head.device, "COM9");
    ASSERT_EQ(read.entries.size(), 2U);
    EXPECT_EQ(read.entries[0].from, trace::Side::tool);
    EXPECT_EQ(read.entries[0].bytes, hex(heartbeatRequest));
    EXPECT_EQ(read.entries[1].bytes, hex(heartbeatAnswer));
    EXPECT_EQ(read.entries[1].at - read.entries[0].at, 12ms);
}

TEST(LineRecording, RecordsNothingAfterItsEnd) {
    service::LineRecording recording("a.rec", head());
    recording.finish();
    recording.sending(hex(heartbeatRequest), Clock::Time{1s});
    EXPECT_TRUE(trace::loadRecording("a.rec").entries.empty());
}

TEST(LineRecording, KeepsAnExistingFile) {
    files::write("a.rec", {1, 2});
    EXPECT_THROW(service::LineRecording("a.rec", head()), std::runtime_error);
    EXPECT_EQ(files::read("a.rec"), (std::vector<std::uint8_t>{1, 2}));
}

TEST(LineRecording, RefusesAMissingFolder) {
    EXPECT_THROW(service::LineRecording("no/such/a.rec", head()), std::runtime_error);
}

} // namespace
