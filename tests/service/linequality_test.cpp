// The counts of a line.
#include "service/linequality.h"
#include "tests/trace/linebytes.h"

#include <gtest/gtest.h>

namespace {

using namespace linetest;
using namespace std::chrono_literals;

class Quality : public testing::Test {
protected:
    void ask(const char* request) { quality.sending(hex(request), now); }
    void answer(const char* bytes, std::chrono::milliseconds after = 5ms) {
        now += after;
        quality.received(hex(bytes), now, now);
    }

    service::LineQuality quality;
    Clock::Time now{1s};
};

TEST_F(Quality, CountsAnAnswerAndItsTime) {
    ask(heartbeatRequest);
    answer(heartbeatAnswer, 40ms);
    const service::LineCounts counts = quality.finish();
    EXPECT_EQ(counts.requests, 1);
    EXPECT_EQ(counts.answers, 1);
    EXPECT_EQ(counts.unanswered, 0);
    EXPECT_EQ(counts.slowest, 40ms);
    EXPECT_FALSE(counts.isOdd());
}

TEST_F(Quality, CountsRequestsWithoutAnswer) {
    ask(heartbeatRequest);
    ask(getSnRequest);
    answer(snAnswerA1);
    ask(heartbeatRequest);
    const service::LineCounts counts = quality.finish();
    EXPECT_EQ(counts.unanswered, 2);
    EXPECT_EQ(counts.answers, 1);
    EXPECT_FALSE(counts.isOdd());
}

TEST_F(Quality, AnswerToAnEarlierRequestIsLate) {
    ask(heartbeatRequest);
    ask(getSnRequest);
    answer(heartbeatAnswer);
    answer(snAnswerA1);
    const service::LineCounts counts = quality.finish();
    EXPECT_EQ(counts.late, 1);
    EXPECT_EQ(counts.answers, 1);
    EXPECT_TRUE(counts.isOdd());
}

TEST_F(Quality, WrongCheckCodeIsBroken) {
    ask(heartbeatRequest);
    answer("AA 5A 01 01 01 00 00 00 01 00 00");
    const service::LineCounts counts = quality.finish();
    EXPECT_EQ(counts.broken, 1);
    EXPECT_EQ(counts.answers, 0);
    EXPECT_TRUE(counts.isOdd());
}

TEST_F(Quality, IncompleteAnswerIsBroken) {
    ask(heartbeatRequest);
    answer("AA 5A 01 01 01 00");
    EXPECT_EQ(quality.finish().broken, 1);
}

TEST_F(Quality, BytesOutsideAnAnswerAreStray) {
    ask(heartbeatRequest);
    answer("33 34");
    answer(heartbeatAnswer);
    const service::LineCounts counts = quality.finish();
    EXPECT_EQ(counts.strayBytes, 2U);
    EXPECT_EQ(counts.answers, 1);
}

TEST_F(Quality, AnswerInPiecesIsWhole) {
    ask(heartbeatRequest);
    answer("AA 5A 01 01 01");
    answer("00 00 00 01 7F EA", 30ms);
    const service::LineCounts counts = quality.finish();
    EXPECT_EQ(counts.answers, 1);
    EXPECT_EQ(counts.slowest, 35ms);
    EXPECT_FALSE(counts.isOdd());
}

} // namespace
