// Several observers of one line.
#include "link/lineobservers.h"
#include "tests/link/linktest.h"

#include <atomic>
#include <thread>

namespace {

struct Counter final : LineObserver {
    std::atomic<int> sent{0};
    std::atomic<int> got{0};

    void sending(protocol::ByteView, Clock::Time) override { ++sent; }
    void received(protocol::ByteView, Clock::Time, Clock::Time) override { ++got; }
};

class Observers : public LinkTest {};

TEST_F(Observers, AllSeeBothDirections) {
    Counter first;
    Counter second;
    const LineObservation one(camera, first);
    const LineObservation two(camera, second);
    answer("AA 5A 01 01 01 00 00 00 01 7F EA");
    camera.testHeartBeat();
    for (const Counter* const each : {&first, &second}) {
        EXPECT_EQ(each->sent, 1);
        EXPECT_EQ(each->got, 1);
    }
}

TEST_F(Observers, RemovedOneSeesNothingMore) {
    Counter stays;
    const LineObservation one(camera, stays);
    {
        Counter goes;
        const LineObservation two(camera, goes);
        camera.testHeartBeat();
        EXPECT_EQ(goes.sent, 1);
    }
    camera.testHeartBeat();
    EXPECT_EQ(stays.sent, 2);
}

TEST_F(Observers, ComeAndGoDuringTraffic) {
    std::atomic<bool> over{false};
    std::thread user([&] {
        while (!over)
            camera.testHeartBeat();
    });
    for (int round = 0; round < 200; ++round) {
        Counter counter;
        const LineObservation observation(camera, counter);
        std::this_thread::yield();
    }
    over = true;
    user.join();
}

} // namespace
