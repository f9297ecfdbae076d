// Pictures of both generations.
#include "emulator/camera/md5.h"
#include "tests/emulator/camera/camerabench.h"

namespace emulatortest {
namespace {

Picture recordFromTheTable(std::uint16_t id) {
    Picture picture = makePicture(id, countingBytes(20));
    picture.info.creationTime = 1700000000;
    picture.info.date = 20240131;
    picture.info.gid = 7;
    return picture;
}

TEST(Pictures, CaptureAnswersTheIdBeforeThePictureExists) {
    CameraBench bench;
    bench.camera.state().nextPictureId = 5;
    EXPECT_EQ(bench.ask("AA 5A 01 06 00 00 00 00 69 86", 50ms), hex("AA 5A 01 06 02 00 00 00 00 05 54 97"));
    EXPECT_EQ(bench.ask("AA 5A 01 07 00 00 00 00 38 2C", 50ms), hex("AA 5A 01 07 01 00 00 00 00 BF 77"));
    bench.listen(200ms);
    EXPECT_EQ(bench.ask("AA 5A 01 07 00 00 00 00 38 2C").size(), 38U);
}

TEST(Pictures, TheCatalogueListsRecordsOf27Bytes) {
    CameraBench bench;
    bench.camera.state().pictures = {recordFromTheTable(5)};
    EXPECT_EQ(bench.ask("AA 5A 01 07 00 00 00 00 38 2C"),
              hex("AA 5A 01 07 1C 00 00 00 01 05 01 2D 00 F1 53 65 14 00 00 00 15 49 D1 AA E2 02 14 E0 65 AB "
                  "4B 76 AA AC 89 A8 09 03"));
}

TEST(Pictures, TheV1CatalogueListsRecordsOf33Bytes) {
    CameraBench bench(CameraType::salesDynamic);
    bench.camera.settings().address = 1;
    bench.camera.state().pictures = {recordFromTheTable(258)};
    EXPECT_EQ(bench.ask("AA 5A 01 C7 00 00 00 00 80 1F"),
              hex("AA 5A 01 C7 22 00 00 00 01 02 01 03 D7 34 01 07 01 2D 00 F1 53 65 14 00 00 00 15 49 D1 AA "
                  "E2 02 14 E0 65 AB 4B 76 AA AC 89 A8 28 87"));
}

TEST(Pictures, AReadAnswersTheBytesAskedFor) {
    CameraBench bench;
    bench.camera.state().pictures = {recordFromTheTable(5)};
    EXPECT_EQ(bench.askFrame(0x09, hex("05 00 00 00 00 14 00 00 00")),
              hex("AA 5A 01 09 15 00 00 00 00 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 FF "
                  "BB"));
    EXPECT_EQ(bench.askFrame(0x09, hex("05 02 00 00 00 03 00 00 00")),
              protocol::buildFrame(0x09, hex("00 02 03 04"), 1));
}

TEST(Pictures, AReadOfAnUnknownIdAnswersResultOneWithoutData) {
    CameraBench bench;
    EXPECT_EQ(bench.ask("AA 5A 01 09 09 00 00 00 05 00 00 00 00 01 01 01 01 87 F1"),
              protocol::buildFrame(0x09, {{1}}, 1));
}

TEST(Pictures, DeleteTakesOneIdOrAll) {
    CameraBench bench;
    bench.camera.state().pictures = {recordFromTheTable(5), recordFromTheTable(6)};
    EXPECT_EQ(bench.ask("AA 5A 01 08 01 00 00 00 05 19 E2"), protocol::buildFrame(0x08, {{0}}, 1));
    ASSERT_EQ(bench.camera.state().pictures.size(), 1U);
    EXPECT_EQ(bench.camera.state().pictures[0].info.id, 6);
    EXPECT_EQ(bench.ask("AA 5A 01 08 01 00 00 00 FF 4C AC"), protocol::buildFrame(0x08, {{0}}, 1));
    EXPECT_TRUE(bench.camera.state().pictures.empty());
}

TEST(Pictures, DeletingAMissingPictureSucceedsByDefault) {
    CameraBench bench;
    EXPECT_EQ(bench.ask("AA 5A 01 08 01 00 00 00 05 19 E2"), protocol::buildFrame(0x08, {{0}}, 1));
    bench.camera.settings().deleteOfAbsentFails = true;
    EXPECT_EQ(bench.ask("AA 5A 01 08 01 00 00 00 05 19 E2"), protocol::buildFrame(0x08, {{1}}, 1));
    EXPECT_EQ(bench.ask("AA 5A 01 08 01 00 00 00 FF 4C AC"), protocol::buildFrame(0x08, {{0}}, 1));
}

class ShiftedPictures : public testing::Test {
protected:
    ShiftedPictures() {
        bench.camera.settings().pictureOffset = 0xFA;
        bench.camera.state().nextPictureId = 5;
    }
    CameraBench bench;
};

TEST_F(ShiftedPictures, OffsetFaMovesTheCodesBelowTheOthers) {
    EXPECT_EQ(bench.ask("AA 5A 01 00 00 00 00 00 EC 4B"), protocol::buildFrame(0x00, hex("00 05"), 1));
    EXPECT_EQ(bench.ask("AA 5A 01 01 00 00 00 00 BD E1").size(), 38U);
    EXPECT_EQ(bench.ask("AA 5A 01 03 09 00 00 00 05 00 00 00 00 39 30 00 00 81 94").size(), 11U + 12345U);
    EXPECT_EQ(bench.ask("AA 5A 01 02 01 00 00 00 FF 4E 2A"), protocol::buildFrame(0x02, {{0}}, 1));
    EXPECT_TRUE(bench.camera.state().pictures.empty());
}

TEST_F(ShiftedPictures, TheOtherCommandsOfThoseCodesStillWork) {
    bench.ask("AA 5A 01 00 00 00 00 00 EC 4B");
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
    bench.camera.state().serialNumber = "A1";
    EXPECT_EQ(bench.ask(getSnRequest), hex(snAnswerA1));
    EXPECT_EQ(bench.ask("AA 5A 01 03 02 00 00 00 0F 1E 97 5D"), hex("AA 5A 01 03 02 00 00 00 0F 00 68 AE"));
}

TEST_F(ShiftedPictures, TheUnshiftedCodesAreUnknown) {
    EXPECT_TRUE(bench.ask("AA 5A 01 06 00 00 00 00 69 86").empty());
    bench.camera.settings().pictureOffset = 1;
    EXPECT_EQ(bench.ask("AA 5A 01 07 00 00 00 00 38 2C").size(), 12U);
    EXPECT_EQ(bench.camera.state().pictures.size(), 1U);
}

class V1Pictures : public testing::Test {
protected:
    V1Pictures() { bench.camera.settings().address = 1; }
    CameraBench bench{CameraType::salesDynamic};
};

TEST_F(V1Pictures, IdsGrowBeyondOneByte) {
    bench.camera.state().nextPictureId = 258;
    EXPECT_EQ(bench.ask("AA 5A 01 C6 00 00 00 00 D1 B5"), protocol::buildFrame(0xC6, {{0}}, 1));
    ASSERT_EQ(bench.camera.state().pictures.size(), 1U);
    EXPECT_EQ(bench.camera.state().pictures[0].info.id, 258);
}

TEST_F(V1Pictures, TheNewestPictureComesFirst) {
    bench.ask("AA 5A 01 C6 00 00 00 00 D1 B5");
    bench.ask("AA 5A 01 C6 00 00 00 00 D1 B5");
    const std::vector<Picture>& pictures = bench.camera.state().pictures;
    ASSERT_EQ(pictures.size(), 2U);
    EXPECT_EQ(pictures[0].info.id, pictures[1].info.id + 1);
    EXPECT_NE(pictures[0].jpeg, pictures[1].jpeg);
}

TEST_F(V1Pictures, AReadAnswersResultAndData) {
    bench.camera.state().pictures = {recordFromTheTable(258)};
    bench.camera.addFault("result=1@readV1");
    EXPECT_EQ(bench.askFrame(0xC9, hex("02 01 00 00 00 00 14 00 00 00")),
              hex("AA 5A 01 C9 15 00 00 00 01 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 F3 "
                  "E9"));
}

TEST_F(V1Pictures, TheLowByteOfAnIdIsAnotherIdUnlessSwitched) {
    bench.camera.state().pictures = {recordFromTheTable(258)};
    const char* const lowByteRead = "AA 5A 01 C9 0A 00 00 00 02 00 00 00 00 00 39 30 00 00 A3 55";
    EXPECT_EQ(bench.ask(lowByteRead), protocol::buildFrame(0xC9, {{1}}, 1));
    bench.camera.settings().v1ReadMatchesLowByte = true;
    EXPECT_EQ(bench.ask(lowByteRead).size(), 31U);
}

TEST_F(V1Pictures, DeleteNeedsIdDateAndGid) {
    bench.camera.state().pictures = {recordFromTheTable(258)};
    EXPECT_EQ(bench.ask("AA 5A 01 C8 07 00 00 00 FF 00 00 00 00 00 00 9D F6"),
              protocol::buildFrame(0xC8, {{0}}, 1));
    EXPECT_EQ(bench.camera.state().pictures.size(), 1U);
    bench.askFrame(0xC8, hex("02 01 03 D7 34 01 08"));
    EXPECT_EQ(bench.camera.state().pictures.size(), 1U);
    bench.ask("AA 5A 01 C8 07 00 00 00 02 01 03 D7 34 01 07 E0 3B");
    EXPECT_TRUE(bench.camera.state().pictures.empty());
}

TEST_F(V1Pictures, DeleteAllIsTheTwoByteForm) {
    bench.camera.state().pictures = {recordFromTheTable(258), recordFromTheTable(3)};
    EXPECT_EQ(bench.ask("AA 5A 01 C8 02 00 00 00 FF FF 63 9E"), protocol::buildFrame(0xC8, {{0}}, 1));
    EXPECT_TRUE(bench.camera.state().pictures.empty());
}

TEST(Pictures, FirstGenerationIdsNeverBecomeTheOneThatMeansAll) {
    CameraBench bench;
    bench.camera.state().nextPictureId = 254;
    bench.ask("AA 5A 01 06 00 00 00 00 69 86");
    bench.ask("AA 5A 01 06 00 00 00 00 69 86");
    EXPECT_EQ(bench.camera.state().pictures[0].info.id, 254);
    EXPECT_EQ(bench.camera.state().pictures[1].info.id, 1);
}

TEST(Pictures, CarryTheCamerasOwnTimeAndTheirDigest) {
    CameraBench bench;
    bench.camera.settings().clockStart = 1706659200; // 2024-01-31 00:00 UTC
    const Picture& picture = bench.camera.takePicture(3600s);
    EXPECT_EQ(picture.info.date, 20240131U);
    EXPECT_EQ(picture.info.creationTime, 1706659200U + 3600U);
    EXPECT_EQ(picture.info.digest, md5(picture.jpeg));
    EXPECT_EQ(picture.info.fileSize, picture.jpeg.size());
}

} // namespace
} // namespace emulatortest
