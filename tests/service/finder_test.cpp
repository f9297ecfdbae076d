// Finding cameras: what is sent, and which answers count.
#include "service/finder.h"
#include "tests/link/linktest.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

using testing::ElementsAre;

const char* const answerOfOne = "AA 5A 01 01 01 00 00 00 01 7F EA";

class Finder : public testing::Test {
protected:
    Finder() { fake_serial::reset(); }

    void find(const service::FindPlan& plan) {
        service::findCameras(plan,
                             {[this](std::size_t attempt) { attempts.push_back(attempt); },
                              [this](const service::FoundCamera& camera) { found.push_back(camera); }},
                             stopped);
    }
    /// The camera answers requests to this address.
    static void answerAddress(std::uint8_t address) {
        fake_serial::onWrite([address](const fake_serial::Bytes& request) {
            if (request.at(2) == address)
                fake_serial::willRead(bytes(answerOfOne));
        });
    }

    StdoutCapture out;
    std::atomic<bool> stopped{false};
    std::vector<std::size_t> attempts;
    std::vector<service::FoundCamera> found;
};

TEST_F(Finder, SendsOneHeartbeatToASilentAddress) {
    find({"COM9", {460800}, {1, 0xEE}});
    ASSERT_EQ(fake_serial::writes().size(), 2U);
    EXPECT_EQ(hex(fake_serial::writes()[0]), "AA 5A 01 01 01 00 00 00 00 5E FA");
    EXPECT_EQ(hex(fake_serial::writes()[1]), "AA 5A EE 01 01 00 00 00 00 54 68");
    EXPECT_TRUE(found.empty());
}

TEST_F(Finder, OpensThePortOnceForEachRate) {
    find({"COM9", {460800, 9600}, {1}});
    EXPECT_EQ(fake_serial::count("open"), 2);
    EXPECT_EQ(fake_serial::count("close"), 2);
    EXPECT_THAT(attempts, ElementsAre(0U, 1U));
}

TEST_F(Finder, AsksACameraTwice) {
    answerAddress(2);
    find({"COM9", {460800}, {1, 2, 3}});
    EXPECT_EQ(fake_serial::writes().size(), 4U);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].address, 2);
    EXPECT_EQ(found[0].baudRate, 460800U);
    EXPECT_EQ(found[0].port, "COM9");
}

TEST_F(Finder, OneAnswerAloneIsNoCamera) {
    fake_serial::willRead(bytes(answerOfOne));
    find({"COM9", {460800}, {1}});
    EXPECT_TRUE(found.empty());
}

TEST_F(Finder, EndsAtTheFirstCamera) {
    answerAddress(1);
    find({"COM9", {460800, 9600}, {1, 2}, true});
    EXPECT_EQ(found.size(), 1U);
    EXPECT_EQ(fake_serial::count("open"), 1);
}

TEST_F(Finder, EndsWhenStopped) {
    stopped = true;
    find({"COM9", {460800}, {1}});
    EXPECT_TRUE(fake_serial::calls().empty());
}

TEST_F(Finder, ThrowsWhenThePortFails) {
    fake_serial::throwOn("write");
    EXPECT_THROW(find({"COM9", {460800}, {1}}), std::exception);
}

TEST_F(Finder, ThrowsWhenThePortCannotBeOpened) {
    fake_serial::failOpening(2);
    EXPECT_THROW(find({"COM9", {460800}, {1}}), serial::IOException);
}

TEST_F(Finder, LeavesTheAddressOfAnOpenLink) {
    CameraSp camera("COM9", 460800);
    camera.setSlaveAddress(7);
    const service::FindEnd end =
        service::findCameras(camera, {"COM9", {460800}, {1, 2}}, {[](std::size_t) {}, {}}, stopped);
    EXPECT_EQ(end, service::FindEnd::complete);
    camera.testHeartBeat();
    EXPECT_EQ(fake_serial::writes().back().at(2), 7);
}

TEST_F(Finder, EndsOnAnOpenLinkForAWholeJob) {
    CameraSp camera("COM9", 460800);
    service::FindEnd end = service::FindEnd::complete;
    const LineTurn::Hold job = camera.takeLine(LineUser::versions);
    std::thread other([&] {
        end = service::findCameras(camera, {"COM9", {460800}, {1}}, {[](std::size_t) {}, {}}, stopped);
    });
    other.join();
    EXPECT_EQ(end, service::FindEnd::lineBusy);
    EXPECT_TRUE(fake_serial::writes().empty());
}

TEST_F(Finder, EndsWithTheLink) {
    CameraSp camera("COM9", 460800);
    camera.requestStop();
    EXPECT_EQ(service::findCameras(camera, {"COM9", {460800}, {1}}, {[](std::size_t) {}, {}}, stopped),
              service::FindEnd::stopped);
}

TEST(FindPlan, UsualAddressesAreThoseOfTheTypes) {
    EXPECT_THAT(service::usualAddresses(), ElementsAre(1, 0xEE, 3, 2));
}

TEST(FindPlan, AllAddressesBeginWithTheUsualOnes) {
    std::vector<std::uint8_t> all = service::allAddresses();
    ASSERT_EQ(all.size(), 256U);
    EXPECT_EQ(all[1], 0xEE);
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::unique(all.begin(), all.end()), all.end());
}

} // namespace
