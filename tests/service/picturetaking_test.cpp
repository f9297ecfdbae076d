// Taking pictures of cameras of each kind.
#include "service/picturetaking.h"
#include "service/readings.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/testfront.h"
#include "tests/support/workingdirectory.h"

#include <gmock/gmock.h>

namespace {

using emulator::Bytes;
using protocol::CameraType;

class PictureTaking : public testing::TestWithParam<CameraType> {
protected:
    PictureTaking() { client.setSlaveAddress(protocol::infoOf(GetParam()).usualAddress); }
    service::PictureResult take() { return service::takePicture(client, GetParam(), "."); }

    StdoutCapture out;
    TestFront front{GetParam()};
    CameraSp client{front.portName(), protocol::infoOf(GetParam()).baudRate};
};

TEST_P(PictureTaking, GivesAJpeg) {
    const service::PictureResult result = take();
    ASSERT_TRUE(result.succeeded());
    const auto jpeg = files::read(result.file.toStdString());
    ASSERT_TRUE(jpeg.has_value());
    ASSERT_GT(jpeg->size(), 100U);
    EXPECT_EQ(jpeg->at(0), 0xFF);
    EXPECT_EQ(jpeg->at(1), 0xD8);
}

TEST_P(PictureTaking, TellsASilentCamera) {
    const bool isV1 = GetParam() == CameraType::salesDynamic; // its catalogue is awaited for 50 s
    front.withCamera([&](auto& camera) { camera.addFault(isV1 ? "silent@captureV1" : "silent"); });
    EXPECT_EQ(take().report.end, CommandEnd::noAnswer);
    EXPECT_TRUE(files::names().empty());
}

INSTANTIATE_TEST_SUITE_P(All, PictureTaking,
                         testing::Values(CameraType::ostra, CameraType::quenta, CameraType::salesDynamic),
                         [](const auto& type) {
                             return std::string(type.param == CameraType::ostra    ? "Origin"
                                                : type.param == CameraType::quenta ? "Json"
                                                                                   : "V1");
                         });

class OldPictures : public testing::Test {
protected:
    OldPictures() {
        front.withCamera(
            [](auto& camera) { camera.state().pictures.push_back(emulator::makePicture(7, Bytes(500, 1))); });
    }

    [[nodiscard]] std::size_t pictures() {
        return front.withCamera([](auto& camera) { return camera.state().pictures.size(); });
    }

    StdoutCapture out;
    TestFront front{CameraType::ostra};
    CameraSp client{front.portName(), 460800};
};

TEST_F(OldPictures, StayAndAreNotTakenForTheNewOne) {
    const service::PictureResult result = service::takePicture(client, CameraType::ostra, ".");
    ASSERT_TRUE(result.succeeded());
    EXPECT_NE(result.info.id, 7);
    EXPECT_EQ(pictures(), 2U);
}

TEST_F(OldPictures, PictureThatDoesNotAppearIsTold) {
    front.withCamera([](auto& camera) { camera.addFault("hide-newest"); });
    EXPECT_EQ(service::takePicture(client, CameraType::ostra, ".").report.end, CommandEnd::noPictures);
}

TEST_F(OldPictures, OneIsDeletedByItsRecord) {
    const auto catalogue = service::readCatalogue(client, CameraType::ostra);
    ASSERT_EQ(catalogue.size(), 1U);
    EXPECT_TRUE(service::deletePicture(client, CameraType::ostra, catalogue[0]));
    EXPECT_EQ(pictures(), 0U);
}

} // namespace
