// Check-ups of virtual cameras.
#include "service/checkup.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/testfront.h"

#include <gtest/gtest.h>

#include <thread>

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
    const service::Checkup checkup = check();
    EXPECT_TRUE(checkup.lines.empty());
    EXPECT_EQ(checkup.interruption.toStdString(), "已中断");
}

TEST_F(CheckupTest, EndsForAWholeJob) {
    const service::Checkup checkup = [&] {
        const LineTurn::Hold job = client.takeLine(LineUser::versions);
        service::Checkup result;
        std::thread other([&] { result = check(); });
        other.join();
        return result;
    }();
    EXPECT_TRUE(checkup.lines.empty());
    EXPECT_EQ(checkup.interruption.toStdString(), "线路正忙（正在读取版本号），请稍后再试");
}

TEST_F(CheckupTest, StopsOnRequest) {
    std::atomic<bool> stopped{false};
    const service::Checkup checkup = service::runCheckup(
        client, protocol::CameraType::ostra, quality, [&](const service::CheckLine&) { stopped = true; },
        &stopped);
    EXPECT_EQ(checkup.lines.size(), 1U);
    EXPECT_FALSE(checkup.interruption.isEmpty());
}

TEST_F(CheckupTest, PictureLeavesTheFolderOfDownloads) {
    client.setPictureFolder("pictures");
    service::Checkup checkup = check();
    service::takeCheckupPicture(client, checkup);
    EXPECT_EQ(checkup.pictureFailure.toStdString(), "");
    EXPECT_TRUE(checkup.picture.startsWith("\xFF\xD8"));
    EXPECT_EQ(client.setPictureFolder({}), "pictures");
}

TEST_F(CheckupTest, EndedPictureIsAFailureOfThePicture) {
    front.withCamera([](auto& camera) { camera.addFault("picture-size=-100@read"); });
    service::Checkup checkup = check();
    std::atomic<bool> taken{false};
    std::thread ender([&] {
        while (!taken) {
            client.endDownload();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    });
    service::takeCheckupPicture(client, checkup);
    taken = true;
    ender.join();
    EXPECT_EQ(checkup.pictureFailure.toStdString(), "已中断");
    EXPECT_EQ(checkup.verdict(), service::Verdict::odd);
}

} // namespace
