// The signal of the last exchanges.
#include "service/recentexchanges.h"

#include <gtest/gtest.h>

namespace {

using service::Judgement;
using service::RecentExchanges;
using Role = Judgement::Role;
using Signal = RecentExchanges::Signal;

class Recent : public testing::Test {
protected:
    void add(Role role, std::size_t strayBytes = 0) {
        Judgement judgement;
        judgement.role = role;
        recent.add(judgement, strayBytes);
    }
    void answered(int times = 1) {
        for (int i = 0; i < times; ++i) {
            add(Role::request);
            add(Role::answer);
        }
    }
    void unanswered(int times = 1) {
        for (int i = 0; i < times; ++i) {
            add(Role::request);
            recent.addUnanswered();
        }
    }

    RecentExchanges recent;
};

TEST_F(Recent, NothingIsKnownBeforeTheFirstAnswer) {
    EXPECT_EQ(recent.signal(), Signal::unknown);
    add(Role::request);
    EXPECT_EQ(recent.signal(), Signal::unknown);
}

TEST_F(Recent, AnswersAreGood) {
    answered(3);
    EXPECT_EQ(recent.signal(), Signal::good);
}

TEST_F(Recent, FirstRequestWithoutAnswerIsAbsent) {
    unanswered();
    EXPECT_EQ(recent.signal(), Signal::absent);
}

TEST_F(Recent, ThreeRequestsWithoutAnswerAreAbsent) {
    answered(50);
    unanswered(2);
    EXPECT_EQ(recent.signal(), Signal::good);
    unanswered();
    EXPECT_EQ(recent.signal(), Signal::absent);
    answered();
    EXPECT_EQ(recent.signal(), Signal::good) << "the camera was away for a while";
}

TEST_F(Recent, SeveralSingleRequestsWithoutAnswerAreDisturbed) {
    for (int i = 0; i < 2; ++i) {
        unanswered();
        answered();
    }
    EXPECT_EQ(recent.signal(), Signal::good);
    unanswered();
    answered();
    EXPECT_EQ(recent.signal(), Signal::disturbed);
}

TEST_F(Recent, BrokenAnswerIsDisturbed) {
    answered(5);
    add(Role::request);
    add(Role::broken);
    EXPECT_EQ(recent.signal(), Signal::disturbed);
    EXPECT_EQ(recent.counts().broken, 1);
}

TEST_F(Recent, LateForeignAndStrayAreDisturbed) {
    for (const Role role : {Role::late, Role::foreign, Role::stray}) {
        recent = {};
        answered(5);
        add(role, 3);
        EXPECT_EQ(recent.signal(), Signal::disturbed);
    }
    EXPECT_EQ(recent.counts().strayBytes, 3U);
}

TEST_F(Recent, OnlyAHundredExchangesCount) {
    add(Role::request);
    add(Role::broken);
    answered(99);
    EXPECT_EQ(recent.signal(), Signal::disturbed);
    EXPECT_EQ(recent.counts().requests, 100);
    answered();
    EXPECT_EQ(recent.signal(), Signal::good);
    EXPECT_EQ(recent.counts().requests, 100);
}

} // namespace
