// Recordings out of a log and back.
#include "emulator/camera/replaycamera.h"
#include "link/protocol/uploads.h"
#include "service/linelog.h"
#include "tests/trace/linebytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace linetest;
using namespace std::chrono_literals;
using service::LineLog;
using trace::Side;

trace::RecordingHead headOfLine() {
    trace::RecordingHead head;
    head.start = "2026-01-02T03:04:05.006Z";
    head.device = "COM3";
    return head;
}

std::string textOf(const LineLog& log, bool blank) {
    std::string text;
    service::writeRecording(log, blank, [&text](const std::string& lines) { text += lines; });
    return text;
}

trace::Recording recordingOf(const LineLog& log, bool blank = false) {
    std::istringstream text(textOf(log, blank));
    return trace::readRecording(text);
}

class Log : public testing::Test {
protected:
    void exchange(const char* request, const char* answer) {
        log.record.add(Side::tool, hex(request), now += 10ms);
        log.record.add(Side::camera, hex(answer), now += 10ms);
        log.rows.update(now);
    }

    LineLog log{headOfLine(), Clock::Time{0s}, 32 << 10};
    trace::Time now{0};
};

TEST_F(Log, RecordingHoldsHeadBytesAndTimes) {
    exchange(heartbeatRequest, heartbeatAnswer);
    const trace::Recording recording = recordingOf(log);
    EXPECT_EQ(recording.head.device, "COM3");
    EXPECT_EQ(recording.head.start, headOfLine().start);
    ASSERT_EQ(recording.entries.size(), 2U);
    EXPECT_EQ(recording.entries[0].bytes, hex(heartbeatRequest));
    EXPECT_EQ(recording.entries[0].at, 10ms);
    EXPECT_EQ(recording.entries[1].bytes, hex(heartbeatAnswer));
    EXPECT_EQ(recording.entries[1].from, Side::camera);
}

TEST_F(Log, AnswerGetsItsEarliestTime) {
    log.record.add(Side::tool, hex(heartbeatRequest), 10ms);
    log.record.add(Side::camera, hex(heartbeatAnswer), 210ms, 199ms);
    log.rows.update(210ms);
    EXPECT_EQ(recordingOf(log).entries[1].at, 11ms);
}

TEST_F(Log, SerialNumbersAreBlanked) {
    exchange(getSnRequest, snAnswerA1);
    EXPECT_THAT(textOf(log, true), testing::Not(testing::HasSubstr("\"A1\"")));
    EXPECT_TRUE(recordingOf(log, true).head.serialsBlanked);
    EXPECT_THAT(textOf(log, false), testing::HasSubstr("\"A1\""));
    EXPECT_FALSE(recordingOf(log, false).head.serialsBlanked);
}

TEST_F(Log, BlankedRecordingStaysBlanked) {
    exchange(getSnRequest, snAnswerA1);
    const LineLog opened(recordingOf(log, true));
    EXPECT_TRUE(recordingOf(opened, false).head.serialsBlanked);
}

TEST_F(Log, OpenedRecordingHasTheSameRows) {
    exchange(heartbeatRequest, heartbeatAnswer);
    exchange(getSnRequest, "AA 5A 01 02");
    log.rows.finish(now);
    const LineLog opened(recordingOf(log));
    ASSERT_EQ(opened.rows.end(), log.rows.end());
    for (std::uint64_t i = 0; i < log.rows.end(); ++i) {
        const service::LineRow& row = opened.rows.row(i);
        EXPECT_EQ(row.role, log.rows.row(i).role);
        EXPECT_EQ(service::bytesOf(row, opened.record, row.size),
                  service::bytesOf(log.rows.row(i), log.record, row.size));
    }
}

TEST_F(Log, LargeRecordingIsOpenedWhole) {
    trace::Recording recording;
    recording.head = headOfLine();
    for (int i = 0; i < 20000; ++i)
        recording.entries.push_back({i * 1ms, Side::tool, hex(heartbeatRequest)});
    recording.entries.push_back({20s, Side::camera, Bytes(17 << 20, 0x55)});
    const LineLog opened(recording);
    EXPECT_EQ(opened.rows.begin(), 0U);
    EXPECT_EQ(opened.record.begin(), 0U);
}

TEST_F(Log, OverfullRecordBeginsWithAWholeFrame) {
    for (int i = 0; i < 2000; ++i) {
        log.record.add(Side::tool, hex("AA 5A 01 01 01"), now += 1ms);
        log.record.add(Side::tool, hex("00 00 00 00 5E FA"), now += 1ms);
        log.rows.update(now);
    }
    const trace::Recording recording = recordingOf(log);
    EXPECT_EQ(recording.entries.front().bytes, hex("AA 5A 01 01 01"));
    EXPECT_LT(recording.entries.size(), 4000U);
}

TEST_F(Log, ReplayAnswersAsTheCameraDid) {
    exchange(heartbeatRequest, heartbeatAnswer);
    exchange(getSnRequest, snAnswerA1);
    emulator::ReplayCamera camera(recordingOf(log), true);
    EXPECT_EQ(camera.requests(), 2U);
    camera.receive(hex(getSnRequest), 1s);
    EXPECT_EQ(camera.takeDue(1s), hex(snAnswerA1));
    camera.receive(hex(heartbeatRequest), 2s);
    EXPECT_EQ(camera.takeDue(2s), hex(heartbeatAnswer));
    EXPECT_EQ(camera.unknownRequests(), 0U);
}

} // namespace
