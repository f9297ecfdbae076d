// Order of the users of the line, and refusals.
#include "link/lineturn.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

using namespace std::chrono_literals;
using Refusal = LineTurn::Refusal;

namespace {

/// Takes the line on its own thread and keeps it until released.
class Holder {
public:
    Holder(LineTurn& turn, LineUser user)
        : m_thread([this, &turn, user] {
              const LineTurn::Hold hold = turn.take(user);
              m_refusal.set_value(hold.refusal());
              m_release.get_future().wait();
          }) {}
    ~Holder() { release(); }

    [[nodiscard]] Refusal refusal() { return m_refusal.get_future().get(); }
    void release() {
        if (!m_thread.joinable())
            return;
        m_release.set_value();
        m_thread.join();
    }

private:
    std::promise<Refusal> m_refusal;
    std::promise<void> m_release;
    std::thread m_thread;
};

bool comesTrue(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + 5s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

bool waits(const LineTurn& turn, LineUser job) {
    return comesTrue([&] { return turn.state().waitingJob == job; });
}

} // namespace

TEST(LineTurn, GivesTheFreeLineAtOnce) {
    LineTurn turn;
    const LineTurn::Hold hold = turn.take(LineUser::command);
    EXPECT_TRUE(hold);
    EXPECT_FALSE(hold.hadToWait());
    EXPECT_EQ(turn.userOnThisThread(), LineUser::command);
    EXPECT_EQ(turn.state().holder, LineUser::command);
}

TEST(LineTurn, IsFreeAgainAfterTheHold) {
    LineTurn turn;
    { const LineTurn::Hold hold = turn.take(LineUser::upload); }
    EXPECT_EQ(turn.state().holder, LineUser::none);
    EXPECT_EQ(turn.userOnThisThread(), LineUser::none);
}

TEST(LineTurn, HolderTakesItAgainWithoutGivingItBack) {
    LineTurn turn;
    const LineTurn::Hold job = turn.take(LineUser::versions);
    { EXPECT_TRUE(turn.take(LineUser::command)); }
    EXPECT_EQ(turn.state().holder, LineUser::versions);
}

TEST(LineTurn, MovedHoldIsGivenBackOnce) {
    LineTurn turn;
    LineTurn::Hold first = turn.take(LineUser::command);
    LineTurn::Hold second(std::move(first));
    first = LineTurn::Hold();
    EXPECT_EQ(turn.state().holder, LineUser::command);
    second = LineTurn::Hold();
    EXPECT_EQ(turn.state().holder, LineUser::none);
}

TEST(LineTurn, CommandWaitsForTheExchangeUnderWay) {
    LineTurn turn;
    Holder reading(turn, LineUser::reading);
    ASSERT_EQ(reading.refusal(), Refusal::none);
    auto command = std::async(std::launch::async, [&] {
        const LineTurn::Hold hold = turn.take(LineUser::command);
        return std::pair(hold.refusal(), hold.hadToWait());
    });
    EXPECT_EQ(command.wait_for(50ms), std::future_status::timeout);
    reading.release();
    EXPECT_EQ(command.get(), std::pair(Refusal::none, true));
}

TEST(LineTurn, ServesInTheOrderOfAsking) {
    LineTurn turn;
    Holder first(turn, LineUser::command);
    ASSERT_EQ(first.refusal(), Refusal::none);
    std::mutex mutex;
    std::vector<int> order;
    std::vector<std::thread> threads;
    std::atomic<int> newest{-1}; // of those that stand in the queue
    for (int number = 0; number < 8; ++number) {
        threads.emplace_back([&, number] {
            const auto waits = [&newest, number] { newest = std::max(newest.load(), number); };
            const LineTurn::Hold hold = turn.take(LineUser::upload, waits);
            const std::lock_guard lock(mutex);
            order.push_back(number);
        });
        ASSERT_TRUE(comesTrue([&] { return newest.load() == number; }));
    }
    first.release();
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3, 4, 5, 6, 7}));
}

class WholeJob : public testing::TestWithParam<LineUser> {};

TEST_P(WholeJob, RefusesEveryUserExceptAnUpload) {
    LineTurn turn;
    Holder job(turn, GetParam());
    ASSERT_EQ(job.refusal(), Refusal::none);
    for (const LineUser user :
         {LineUser::command, LineUser::reading, LineUser::versions, LineUser::download}) {
        const auto before = std::chrono::steady_clock::now();
        const LineTurn::Hold hold = turn.take(user);
        EXPECT_EQ(hold.refusal(), Refusal::busy);
        EXPECT_EQ(hold.busyWith(), GetParam());
        EXPECT_LT(std::chrono::steady_clock::now() - before, 2s);
    }
    Holder upload(turn, LineUser::upload);
    EXPECT_TRUE(waits(turn, LineUser::upload));
    job.release();
    EXPECT_EQ(upload.refusal(), Refusal::none);
}

INSTANTIATE_TEST_SUITE_P(Jobs, WholeJob,
                         testing::Values(LineUser::versions, LineUser::download, LineUser::upload));

TEST(LineTurn, WaitingUploadRefusesLaterUsers) {
    LineTurn turn;
    Holder reading(turn, LineUser::reading);
    ASSERT_EQ(reading.refusal(), Refusal::none);
    Holder upload(turn, LineUser::upload);
    ASSERT_TRUE(waits(turn, LineUser::upload));
    EXPECT_EQ(turn.take(LineUser::command).refusal(), Refusal::busy);
    reading.release();
    EXPECT_EQ(upload.refusal(), Refusal::none);
}

TEST(LineTurn, WaitingReadingYieldsToALaterUpload) {
    LineTurn turn;
    Holder command(turn, LineUser::command);
    ASSERT_EQ(command.refusal(), Refusal::none);
    auto reading = std::async(std::launch::async, [&] { return turn.take(LineUser::reading).refusal(); });
    EXPECT_EQ(reading.wait_for(50ms), std::future_status::timeout);
    Holder upload(turn, LineUser::upload);
    EXPECT_EQ(reading.get(), Refusal::busy);
    command.release();
    EXPECT_EQ(upload.refusal(), Refusal::none);
}

TEST(LineTurn, WaitingCommandKeepsItsPlaceBeforeALaterUpload) {
    LineTurn turn;
    Holder reading(turn, LineUser::reading);
    ASSERT_EQ(reading.refusal(), Refusal::none);
    Holder command(turn, LineUser::command);
    std::this_thread::sleep_for(20ms); // until it stands in the queue
    Holder upload(turn, LineUser::upload);
    ASSERT_TRUE(waits(turn, LineUser::upload));
    reading.release();
    EXPECT_EQ(command.refusal(), Refusal::none);
    EXPECT_EQ(turn.state().waitingJob, LineUser::upload);
    command.release();
    EXPECT_EQ(upload.refusal(), Refusal::none);
}

TEST(LineTurn, StopEndsEveryWait) {
    LineTurn turn;
    Holder job(turn, LineUser::download);
    ASSERT_EQ(job.refusal(), Refusal::none);
    Holder upload(turn, LineUser::upload);
    ASSERT_TRUE(waits(turn, LineUser::upload));
    turn.stop();
    EXPECT_EQ(upload.refusal(), Refusal::stopped);
    EXPECT_EQ(turn.take(LineUser::command).refusal(), Refusal::stopped);
}

TEST(LineTurn, CallsBackWhileItWaits) {
    LineTurn turn;
    Holder reading(turn, LineUser::reading);
    ASSERT_EQ(reading.refusal(), Refusal::none);
    int calls = 0;
    std::thread later([&] {
        std::this_thread::sleep_for(350ms);
        reading.release();
    });
    const LineTurn::Hold hold = turn.take(LineUser::command, [&calls] { ++calls; });
    later.join();
    EXPECT_TRUE(hold);
    EXPECT_GE(calls, 1);
}

TEST(LineTurn, NeverHasTwoUsers) {
    LineTurn turn;
    std::atomic<int> users{0};
    std::atomic<int> taken{0};
    const auto use = [&](LineUser user) {
        for (int round = 0; round < 500; ++round) {
            const LineTurn::Hold hold = turn.take(user);
            if (!hold)
                continue;
            EXPECT_EQ(users.fetch_add(1), 0);
            ++taken;
            users.fetch_sub(1);
        }
    };
    std::vector<std::thread> threads;
    for (const LineUser user :
         {LineUser::command, LineUser::reading, LineUser::versions, LineUser::download, LineUser::upload})
        threads.emplace_back(use, user);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_GE(taken.load(), 500); // an upload is never refused
}
