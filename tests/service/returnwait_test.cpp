// Waiting for a camera that restarts.
#include "service/returnwait.h"
#include "tests/link/linktest.h"

#include <gmock/gmock.h>

namespace {

using namespace std::chrono_literals;

class ReturnWait : public LinkTest {
protected:
    bool wait(int most) {
        return awaitReturn(camera, {most, 2000ms}, [this](int attempt) { attempts.push_back(attempt); });
    }

    std::vector<int> attempts;
};

TEST_F(ReturnWait, EndsWithTheFirstAnswer) {
    fake_serial::willTimeOut(2);
    answer("AA 5A 01 01 01 00 00 00 01 7F EA");
    EXPECT_TRUE(wait(8));
    EXPECT_THAT(attempts, testing::ElementsAre(1, 2, 3));
    EXPECT_EQ(clock.pauses(), (std::vector<std::chrono::nanoseconds>{2s, 2s, 2s}));
}

TEST_F(ReturnWait, GivesUpAfterTheLastAttempt) {
    EXPECT_FALSE(wait(4));
    EXPECT_EQ(attempts.size(), 4U);
    EXPECT_EQ(fake_serial::writes().size(), 4U);
}

TEST_F(ReturnWait, StoppedLinkEndsIt) {
    camera.requestStop();
    EXPECT_FALSE(wait(4));
    EXPECT_EQ(attempts.size(), 1U);
    EXPECT_TRUE(fake_serial::writes().empty());
}

} // namespace
