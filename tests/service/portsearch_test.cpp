// Searching several ports at the same time.
#include "service/portsearch.h"
#include "tests/link/linktest.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

using testing::UnorderedElementsAre;

class PortSearch : public testing::Test {
protected:
    PortSearch() { fake_serial::reset(); }

    [[nodiscard]] service::PortSearchObserver observer() {
        return {[this] { ++tried; },
                [this](const service::FoundCamera& camera) { found.push_back(camera.port); },
                [this](const std::string& port, const FailureText& failure) {
                    failed.push_back(port);
                    EXPECT_FALSE(failure.what.isEmpty());
                }};
    }

    StdoutCapture out;
    std::atomic<int> tried{0};
    std::vector<std::string> found;
    std::vector<std::string> failed;
};

TEST_F(PortSearch, SearchesEachPortOnce) {
    service::PortSearch search({{"COM3", {9600}, {1}}, {"COM4", {9600}, {1, 2}}});
    search.run(observer());
    search.run(observer());
    EXPECT_EQ(tried, 3);
    EXPECT_EQ(fake_serial::count("open"), 2);
}

TEST_F(PortSearch, GoesOnAfterAFailedPort) {
    fake_serial::throwOn("write");
    service::PortSearch search({{"COM3", {9600}, {1}}, {"COM4", {9600}, {1}}});
    search.run(observer());
    EXPECT_THAT(failed, UnorderedElementsAre("COM3", "COM4"));
}

TEST_F(PortSearch, StoppedOneOpensNoPort) {
    service::PortSearch search({{"COM3", {9600}, {1}}});
    search.stop();
    search.run(observer());
    EXPECT_TRUE(fake_serial::calls().empty());
}

TEST_F(PortSearch, NoTwoHaveAPortOpen) {
    service::PortSearch first({{"COM3", {9600}, {1, 2, 3}}});
    service::PortSearch second({{"COM3", {9600}, {1, 2, 3}}});
    std::thread other([&] { first.run(observer()); });
    second.run(observer());
    other.join();
    std::vector<std::string> ports;
    for (const std::string& call : fake_serial::calls()) {
        if (call.starts_with("open") || call == "close")
            ports.push_back(call.substr(0, call.find(' ')));
    }
    EXPECT_THAT(ports, testing::ElementsAre("open", "close", "open", "close"));
}

TEST_F(PortSearch, PortIsFreeAfterIt) {
    service::PortSearch search({{"COM3", {9600}, {1}}});
    search.run(observer());
    service::PortSearch::waitUntilFree("COM3"); // returns
    service::PortSearch::waitUntilFree("COM9");
}

} // namespace
