// The rows of a line's traffic.
#include "link/protocol/uploads.h"
#include "service/linerows.h"
#include "tests/trace/linebytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace linetest;
using namespace std::chrono_literals;
using service::LineRow;
using trace::LineItem;
using trace::Side;
using Role = service::Judgement::Role;

const char* const badHeartbeatAnswer = "AA 5A 01 01 01 00 00 00 01 00 00";
const char* const rebootAnswer = "AA 5A 01 05 01 00 00 00 00 FF FC";
const char* const gyroRequest = "AA 5A 01 0F 01 00 00 00 03 9E 4A";

class Rows : public testing::Test {
protected:
    void tool(const Bytes& bytes, trace::Time pause = 10ms) { pass(Side::tool, bytes, pause); }
    void tool(const char* bytes, trace::Time pause = 10ms) { tool(hex(bytes), pause); }
    void camera(const Bytes& bytes, trace::Time pause = 10ms) { pass(Side::camera, bytes, pause); }
    void camera(const char* bytes, trace::Time pause = 10ms) { camera(hex(bytes), pause); }
    void pass(Side from, const Bytes& bytes, trace::Time pause) {
        now += pause;
        record.add(from, bytes, now);
    }
    /// All rows so far.
    std::vector<LineRow> all() {
        rows.update(now);
        std::vector<LineRow> found;
        for (std::uint64_t i = rows.begin(); i < rows.end(); ++i)
            found.push_back(rows.row(i));
        return found;
    }
    Bytes bytesOf(const LineRow& row) const { return service::bytesOf(row, record, row.size); }
    std::string words(const LineRow& row) const { return service::wordsOf(row, record, 0, &trace::english); }

    service::LineRecord record{Clock::Time{0s}, 64 << 10};
    service::LineRows rows{record, 100};
    trace::Time now{0};
};

TEST_F(Rows, ExchangeIsTwoRowsWithTimeOfAnswer) {
    tool(heartbeatRequest);
    camera(heartbeatAnswer, 40ms);
    const auto found = all();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].role, Role::request);
    EXPECT_EQ(found[1].role, Role::answer);
    EXPECT_EQ(found[1].took, 40ms);
    EXPECT_EQ(bytesOf(found[0]), hex(heartbeatRequest));
    EXPECT_EQ(bytesOf(found[1]), hex(heartbeatAnswer));
    EXPECT_FALSE(found[0].isOdd());
    EXPECT_FALSE(found[1].isOdd());
}

// The last byte of an answer that is longer than its read comes with the next one.
TEST_F(Rows, RestOfAnAnswerInAnExpiredReadBelongsToIt) {
    tool(heartbeatRequest);
    const Bytes answer = hex(heartbeatAnswer);
    camera(Bytes(answer.begin(), answer.end() - 1));
    record.add(Side::camera, Bytes(answer.end() - 1, answer.end()), now += 1001ms, 1001ms);
    const auto found = all();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[1].role, Role::answer);
    EXPECT_FALSE(found[1].isOdd());
}

TEST_F(Rows, AnswerOfAnExpiredReadMayHaveComeEarlier) {
    tool(heartbeatRequest);
    record.add(Side::camera, hex(heartbeatAnswer), now += 200ms, 199ms);
    const auto found = all();
    EXPECT_EQ(found[1].took, 200ms);
    EXPECT_EQ(found[1].slack, 199ms);
    EXPECT_EQ(found[0].slack, 0ms);
}

TEST_F(Rows, SayCommandAndFields) {
    tool(getSnRequest);
    camera(snAnswerA1);
    EXPECT_THAT(words(all()[1]), testing::HasSubstr("read serial number (02), address 01"));
    EXPECT_THAT(words(all()[1]), testing::HasSubstr("value \"A1\""));
}

TEST_F(Rows, FrameInPiecesIsOneRow) {
    tool(heartbeatRequest);
    camera("AA 5A 01 01");
    tool(getSnRequest); // the pieces of both sides mix
    camera("01 00 00 00 01 7F EA");
    const auto found = all();
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(bytesOf(found[1]), hex(getSnRequest));
    EXPECT_EQ(bytesOf(found[2]), hex(heartbeatAnswer));
    EXPECT_EQ(found[2].role, Role::late);
}

TEST_F(Rows, TwoFramesInOneChunkAreTwoRows) {
    tool(heartbeatRequest);
    camera(std::string(heartbeatAnswer).append(" ").append(snAnswerA1).c_str());
    const auto found = all();
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(bytesOf(found[1]), hex(heartbeatAnswer));
    EXPECT_EQ(bytesOf(found[2]), hex(snAnswerA1));
}

TEST_F(Rows, WrongCheckCodeIsOdd) {
    tool(heartbeatRequest);
    camera(badHeartbeatAnswer);
    const LineRow row = all()[1];
    EXPECT_EQ(row.itemKind, LineItem::Kind::badFrame);
    EXPECT_EQ(row.role, Role::broken);
    EXPECT_TRUE(row.isOdd());
}

TEST_F(Rows, WrongCommandIsForeign) {
    tool(heartbeatRequest);
    camera(rebootAnswer);
    EXPECT_EQ(all()[1].role, Role::foreign);
    EXPECT_TRUE(all()[1].isOdd());
}

TEST_F(Rows, AnswerToAnEarlierRequestIsLate) {
    tool(heartbeatRequest);
    tool(getSnRequest);
    camera(heartbeatAnswer);
    camera(snAnswerA1);
    const auto found = all();
    EXPECT_EQ(found[3].role, Role::late);
    EXPECT_EQ(found[4].role, Role::answer);
}

TEST_F(Rows, GarbageBeforeAnAnswerIsCounted) {
    tool(heartbeatRequest);
    camera("33 34");
    camera(heartbeatAnswer);
    const auto found = all();
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[1].role, Role::stray);
    EXPECT_EQ(found[2].role, Role::answer);
    EXPECT_EQ(found[2].strayBefore, 2U);
    EXPECT_TRUE(found[2].isOdd());
    EXPECT_EQ(bytesOf(found[2]), hex(heartbeatAnswer));
}

TEST_F(Rows, NextRequestShowsThatNothingCame) {
    tool(heartbeatRequest);
    tool(getSnRequest, 300ms);
    const auto found = all();
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[1].kind, LineRow::Kind::nothing);
    EXPECT_EQ(found[1].took, 300ms);
    EXPECT_TRUE(found[1].isOdd());
    EXPECT_THAT(words(found[1]), testing::StartsWith("no answer to: heartbeat"));
}

TEST_F(Rows, PassedTimeShowsThatNothingCame) {
    tool(heartbeatRequest);
    EXPECT_EQ(all().size(), 1U);
    now += 10s;
    ASSERT_EQ(all().size(), 2U);
    EXPECT_EQ(all()[1].kind, LineRow::Kind::nothing);
    camera(heartbeatAnswer);
    EXPECT_EQ(all()[2].role, Role::late);
}

TEST_F(Rows, RequestWithoutAnswerByRuleIsNotOdd) {
    tool(protocol::buildFrame(0xCD, hex("01"), 1));
    tool(heartbeatRequest);
    EXPECT_EQ(all().size(), 2U);
}

TEST_F(Rows, IncompleteAnswerIsBrokenOffNotMissing) {
    tool(heartbeatRequest);
    camera("AA 5A 01 01 01");
    now += 2s;
    tool(getSnRequest);
    camera(snAnswerA1);
    const auto found = all();
    ASSERT_EQ(found.size(), 4U);
    EXPECT_EQ(found[2].itemKind, LineItem::Kind::brokenOff);
    EXPECT_EQ(found[2].role, Role::broken);
    EXPECT_EQ(found[3].role, Role::answer) << "the broken answer is not that of the second request";
}

TEST_F(Rows, GyroAnswerWithoutFrameIsAnAnswer) {
    tool(gyroRequest);
    camera("33 73 75 63");
    camera("63 65 73 73");
    const auto found = all();
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[1].role, Role::answer);
    EXPECT_EQ(found[1].took, 10ms);
    EXPECT_FALSE(found[2].isOdd());
}

class Upload : public Rows {
protected:
    /// Announcement of so many bytes of an application image, and the camera's word to begin.
    void announce(std::uint32_t size) {
        tool(protocol::buildFrame(0x1B, protocol::buildAnnouncement(size, Bytes(16)), 1));
        camera(protocol::buildFrame(0x1B, hex("00 00 00 00 00"), 1));
    }
    void send(std::size_t size) {
        for (std::size_t sent = 0; sent < size; sent += 512)
            tool(Bytes(std::min<std::size_t>(512, size - sent), 0x55), 1ms);
    }
};

TEST_F(Upload, DataIsOneRowAndTheVerdictItsAnswer) {
    announce(5000);
    send(5000);
    camera(protocol::buildFrame(0x1B, hex("00"), 1), 25ms);
    const auto found = all();
    ASSERT_EQ(found.size(), 4U);
    EXPECT_EQ(found[2].itemKind, LineItem::Kind::data);
    EXPECT_EQ(found[2].size, 5000U);
    EXPECT_EQ(bytesOf(found[2]), Bytes(5000, 0x55));
    EXPECT_EQ(words(found[2]), "upload data, 5000 of 5000 bytes");
    EXPECT_EQ(found[3].role, Role::answer);
    EXPECT_EQ(found[3].took, 25ms);
}

TEST_F(Upload, LargerThanTheRecordIsCounted) {
    announce(200000);
    for (std::size_t sent = 0; sent < 200000; sent += 10000) {
        send(10000);
        rows.update(now);
    }
    const auto found = all();
    ASSERT_EQ(found.size(), 1U) << "older rows have no bytes any more";
    EXPECT_EQ(found[0].size, 200000U);
    EXPECT_FALSE(found[0].isOdd());
    EXPECT_EQ(words(found[0]), "upload data, 200000 of 200000 bytes");
    tool(heartbeatRequest);
    EXPECT_EQ(bytesOf(all().back()), hex(heartbeatRequest));
}

TEST_F(Upload, ShowsHowFarItIs) {
    announce(5000);
    send(1024);
    rows.update(now);
    ASSERT_NE(rows.dataUnderWay(), nullptr);
    EXPECT_EQ(rows.dataUnderWay()->dataSize, 1024U);
    EXPECT_EQ(rows.dataUnderWay()->expected, 5000U);
}

TEST_F(Rows, OldestGoBeyondTheLimit) {
    for (int i = 0; i < 80; ++i) {
        tool(heartbeatRequest);
        camera(heartbeatAnswer);
    }
    rows.update(now);
    EXPECT_EQ(rows.end(), 160U);
    EXPECT_EQ(rows.begin(), 60U);
    EXPECT_EQ(bytesOf(rows.row(60)), hex(heartbeatRequest));
}

TEST_F(Rows, TooFastTrafficLeavesAGap) {
    tool(heartbeatRequest);
    rows.update(now);
    for (int i = 0; i < 200; ++i)
        camera(countingBytes(1000));
    tool(getSnRequest);
    camera(snAnswerA1);
    const auto found = all();
    EXPECT_EQ(found.front().kind, LineRow::Kind::gap);
    EXPECT_EQ(found.back().role, Role::answer);
}

TEST_F(Rows, FinishShowsWhatWasIncomplete) {
    tool(heartbeatRequest);
    camera("AA 5A 01");
    tool(getSnRequest);
    rows.finish(now);
    const auto found = all();
    EXPECT_EQ(found[2].itemKind, LineItem::Kind::brokenOff);
    EXPECT_EQ(found.back().kind, LineRow::Kind::nothing);
}

} // namespace
