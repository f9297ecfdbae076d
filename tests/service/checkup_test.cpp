// Check-ups of virtual cameras.
#include "service/checkup.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/testfront.h"

#include <gtest/gtest.h>

namespace {

class CheckupTest : public testing::Test {
protected:
    CheckupTest() { client.addLineObserver(quality); }
    service::Checkup check() {
        return service::runCheckup(client, protocol::CameraType::ostra, quality,
                                   [this](const service::CheckLine&) { ++told; });
    }

    StdoutCapture out;
    TestFront front{protocol::CameraType::ostra};
    service::LineQuality quality;
    CameraSp client{front.portName(), 460800};
    std::size_t told = 0;
};

TEST_F(CheckupTest, ReadsEveryLineOfTheTable) {
    const service::Checkup checkup = check();
    EXPECT_EQ(checkup.lines.size(), service::readings().size());
    EXPECT_EQ(told, service::readings().size());
    EXPECT_EQ(checkup.verdict(), service::Verdict::good);
    EXPECT_EQ(checkup.textOf("serialNumber").toStdString(), "SHELF000001");
    EXPECT_EQ(checkup.line.requests, checkup.line.answers);
}

TEST_F(CheckupTest, CountsALateAnswer) {
    front.withCamera([](auto& camera) { camera.addFault("late@getSn"); });
    const service::Checkup checkup = check();
    EXPECT_EQ(checkup.line.unanswered, 1);
    EXPECT_EQ(checkup.verdict(), service::Verdict::failed);
}

TEST_F(CheckupTest, StoppedLinkEndsIt) {
    client.requestStop();
    EXPECT_TRUE(check().lines.empty());
}

} // namespace
