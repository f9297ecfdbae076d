// Picture commands of both frame generations: what is read, logged and written.
#include "tests/link/linktest.h"
#include "tests/support/workingdirectory.h"

using namespace std::chrono_literals;

namespace {

constexpr const char* originRecordAnswer = "AA 5A 01 07 1C 00 00 00 01 05 01 2D 00 F1 53 65 14 00 00 00 15 "
                                           "49 D1 AA E2 02 14 E0 65 AB 4B 76 AA AC 89 A8 09 03";
constexpr const char* v1RecordAnswer = "AA 5A 01 C7 22 00 00 00 01 02 01 03 D7 34 01 07 01 2D 00 F1 53 65 14 "
                                       "00 00 00 15 49 D1 AA E2 02 14 E0 65 AB 4B 76 "
                                       "AA AC 89 A8 28 87";
constexpr const char* originTransfer =
    "AA 5A 01 09 15 00 00 00 00 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 FF BB";
constexpr const char* v1TransferResult1 =
    "AA 5A 01 C9 15 00 00 00 01 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 F3 E9";
constexpr const char* deleted = "AA 5A 01 08 01 00 00 00 00 00 00";
constexpr const char* capturedId5 = "AA 5A 01 06 02 00 00 00 00 05 54 97";

std::vector<std::uint8_t> upTo(std::uint8_t last) {
    std::vector<std::uint8_t> result;
    for (std::uint8_t value = 0; value <= last; ++value)
        result.push_back(value);
    return result;
}

class Pictures : public LinkTest {
protected:
};

TEST_F(Pictures, CaptureSucceedsOnlyForResultZero) {
    answer("AA 5A 01 06 01 00 00 00 00 00 00");
    EXPECT_TRUE(camera.originCapture());
    answer("AA 5A 01 06 01 00 00 00 01 00 00");
    EXPECT_FALSE(camera.originCapture());
    EXPECT_FALSE(camera.originCapture());
    EXPECT_EQ(out.lines(), Lines{"error in originCapture"});
}

TEST_F(Pictures, CaptureV1WaitsHalfASecondBetweenRequestAndAnswer) {
    answer("AA 5A 01 C6 01 00 00 00 00 00 00");
    EXPECT_TRUE(camera.captureV1());
    EXPECT_EQ(clock.pauses(), (std::vector<std::chrono::nanoseconds>{500ms}));
    EXPECT_FALSE(camera.captureV1());
    EXPECT_EQ(out.lines(), Lines{"error in captureV1"});
}

TEST_F(Pictures, CatalogueGivesACopyOfEachRecordAndLogsIt) {
    answer(originRecordAnswer);
    const auto records = camera.getOriginPicInfos();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0][0], 5);
    EXPECT_EQ(records[0][26], 0xA8);
    EXPECT_EQ(out.lines(), (Lines{"pic num:1", "图片数据:",
                                  "512D0F153651400015"
                                  "49D1AAE2214E065AB4B76AAAC89A8",
                                  "pic id:5"}));
}

TEST_F(Pictures, CatalogueV1LogsThe16BitId) {
    answer(v1RecordAnswer);
    const auto records = camera.getPicInfosV1();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0][32], 0xA8);
    EXPECT_EQ(out.lines().back(), "pic id:258");
}

TEST_F(Pictures, CatalogueIgnoresItsCountByte) {
    protocol::Bytes lying = bytes(originRecordAnswer);
    for (const std::uint8_t count : {std::uint8_t{0}, std::uint8_t{9}}) {
        lying[8] = count;
        fake_serial::willRead(lying);
        EXPECT_EQ(camera.getOriginPicInfos().size(), 1U);
    }
    answer("AA 5A 01 07 01 00 00 00 00 BF 77");
    EXPECT_TRUE(camera.getOriginPicInfos().empty());
}

TEST_F(Pictures, CatalogueFailureLogsHowMuchCame) {
    answer("AA 5A 01");
    EXPECT_TRUE(camera.getOriginPicInfos().empty());
    EXPECT_TRUE(camera.getPicInfosV1().empty());
    EXPECT_EQ(out.lines(),
              (Lines{"error in getOriginPicInfos cmd 0x07  3", "error in getPicInfos cmd 0xc7  0"}));
}

TEST_F(Pictures, LargestCataloguesAreReadWhole) {
    const auto catalogue = [](std::uint8_t command, std::size_t count, std::size_t recordSize) {
        return protocol::buildFrame(command, protocol::Bytes(1 + count * recordSize, 7), 1);
    };
    fake_serial::willRead(catalogue(0x07, 378, 27));
    EXPECT_EQ(camera.getOriginPicInfos().size(), 378U);
    fake_serial::willRead(catalogue(0xC7, 1551, 33));
    EXPECT_EQ(camera.getPicInfosV1().size(), 1551U);
}

TEST_F(Pictures, CataloguesBeyondTheReadLimitFailWholly) {
    fake_serial::willRead(protocol::buildFrame(0x07, protocol::Bytes(1 + 379 * 27, 7), 1));
    EXPECT_TRUE(camera.getOriginPicInfos().empty());
    EXPECT_EQ(out.lines().back(), "error in getOriginPicInfos cmd 0x07  10240");
}

TEST_F(Pictures, DeletionSucceedsOnlyForResultZero) {
    answer(deleted);
    EXPECT_TRUE(camera.delOriginPic(5));
    answer("AA 5A 01 C8 01 00 00 00 01 00 00");
    EXPECT_FALSE(camera.delPicV1(258, 20240131, 7));
    EXPECT_EQ(out.lines(), Lines{});
    EXPECT_FALSE(camera.delOriginPic(5));
    EXPECT_FALSE(camera.delPicV1(258, 20240131, 7));
    EXPECT_EQ(out.lines(), (Lines{"error in delOriginPic deletepic", "error in delPicV1 deletepic"}));
}

TEST_F(Pictures, DownloadWritesThePictureAndLogsTheRequest) {
    files::write("5.jpg", std::vector<std::uint8_t>(100, 9));
    answer(originTransfer);
    std::cout << std::dec;
    camera.getOriginTargetPic(5, 20);
    EXPECT_EQ(files::read("5.jpg"), upTo(0x13));
    Lines expected;
    for (const std::uint8_t byte : bytes("AA 5A 01 09 09 00 00 00 05 00 00 00 00 14 00 00 00"))
        expected.push_back("sdata:" + std::to_string(byte));
    const Lines lines = out.lines();
    ASSERT_EQ(lines.size(), 19U + 3U);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 17), expected);
    EXPECT_EQ(Lines(lines.begin() + 19, lines.end()),
              (Lines{"recv size:31  picTotalSize:20", "readResult:0", "read over"}));
    EXPECT_EQ(files::names(), Lines{"5.jpg"}) << "nothing else is left in the folder";
}

TEST_F(Pictures, DownloadRequestsAreThese) {
    answer(originTransfer);
    camera.getOriginTargetPic(5, 20);
    fake_serial::willRead(std::vector<std::uint8_t>(12345 + 11));
    camera.getTargetPicV1(258, 12345);
    EXPECT_EQ(hex(fake_serial::writes().back()),
              "AA 5A 01 C9 0A 00 00 00 02 01 00 00 00 00 39 30 00 00 80 BE");
    fake_serial::willRead(std::vector<std::uint8_t>(12345 + 11));
    camera.getTargetPicV1(2, 12345);
    EXPECT_EQ(hex(fake_serial::writes().back()),
              "AA 5A 01 C9 0A 00 00 00 02 00 00 00 00 00 39 30 00 00 A3 55");
    fake_serial::willRead(std::vector<std::uint8_t>(12345 + 11));
    camera.getOriginTargetPic(5, 12345);
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A 01 09 09 00 00 00 05 00 00 00 00 39 30 00 00 28 89");
}

TEST_F(Pictures, DownloadReadsOnOverSilenceUntilAllIsThere) {
    answer("AA 5A 01 09 15 00 00 00 00 00 01");
    fake_serial::willTimeOut(200);
    answer("02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 FF BB");
    camera.getOriginTargetPic(5, 20);
    EXPECT_EQ(fake_serial::count("read"), 202);
    EXPECT_EQ(files::read("5.jpg"), upTo(0x13));
}

// The camera goes on sending: the rest would be the beginning of the next picture.
TEST_F(Pictures, EndedDownloadReadsAwayTheRestOfItsPicture) {
    camera.setWaitCallback([this] { camera.endDownload(); });
    fake_serial::willRead(std::vector<std::uint8_t>(1200 + 11, 7));
    answer(originTransfer);
    camera.getTargetPicV1(2, 1200);
    EXPECT_EQ(fake_serial::count("read"), 3) << "of 512, 512 and 187 bytes";
    EXPECT_TRUE(files::names().empty());
    camera.setWaitCallback({});
    camera.getOriginTargetPic(5, 20);
    EXPECT_EQ(files::read("5.jpg"), upTo(0x13));
}

TEST_F(Pictures, EndedDownloadOfASilentCameraReadsOnceMore) {
    camera.setWaitCallback([this] { camera.endDownload(); });
    camera.getTargetPicV1(2, 1200);
    EXPECT_EQ(fake_serial::count("read"), 2);
}

TEST_F(Pictures, EndedDownloadStaysEndedIfThePortFailsThen) {
    camera.setWaitCallback([this] { camera.endDownload(); });
    fake_serial::willTimeOut();
    fake_serial::willThrowOnRead();
    const ReportScope scope;
    camera.getTargetPicV1(2, 1200);
    EXPECT_EQ(scope.report().end, CommandEnd::stopped);
}

TEST_F(Pictures, ClosingDoesNotWaitForTheRestOfAPicture) {
    camera.setWaitCallback([this] {
        camera.endDownload();
        camera.requestStop();
    });
    fake_serial::willRead(std::vector<std::uint8_t>(1200 + 11, 7));
    camera.getTargetPicV1(2, 1200);
    EXPECT_EQ(fake_serial::count("read"), 1);
}

TEST_F(Pictures, DownloadReadsTheLastByteOfTheCheckCodeToo) {
    answer("AA 5A 01 09 04 00 00 00 00 00 01 02 FF");
    answer("BB");
    camera.getOriginTargetPic(5, 3);
    EXPECT_EQ(fake_serial::count("read"), 2);
    EXPECT_EQ(files::read("5.jpg"), upTo(2));
}

TEST_F(Pictures, DownloadSizesStayDecimalInAHexadecimalLog) {
    std::cout << std::hex;
    answer(originTransfer);
    camera.getOriginTargetPic(5, 20);
    EXPECT_TRUE(out.has("recv size:31  picTotalSize:20"));
    EXPECT_TRUE(out.has("sdata:aa"));
}

TEST_F(Pictures, RefusedReadWritesNoFileInTheFirstGeneration) {
    files::write("5.jpg", {1, 2, 3});
    protocol::Bytes refused = bytes(originTransfer);
    refused[8] = 1;
    fake_serial::willRead(refused);
    camera.getOriginTargetPic(5, 20);
    EXPECT_EQ(files::read("5.jpg"), (std::vector<std::uint8_t>{1, 2, 3}));
    EXPECT_EQ(out.lines().back(), "read result error");
    EXPECT_FALSE(out.has("read over"));
}

TEST_F(Pictures, RefusedReadStillWritesTheFileInV1) {
    answer(v1TransferResult1);
    camera.getTargetPicV1(258, 20);
    EXPECT_EQ(files::read("258.jpg"), upTo(0x13));
    EXPECT_TRUE(out.has("readResult:1"));
}

TEST_F(Pictures, StrayBytesAfterThePictureAreDropped) {
    protocol::Bytes longer = bytes(originTransfer);
    longer.insert(longer.end(), {0x55, 0x66});
    fake_serial::willRead(longer);
    camera.getOriginTargetPic(5, 20);
    EXPECT_EQ(files::read("5.jpg"), upTo(0x13));
}

TEST_F(Pictures, SizeZeroWritesAnEmptyFile) {
    answer("AA 5A 01 09 01 00 00 00 00 00 00");
    camera.getOriginTargetPic(5, 0);
    EXPECT_EQ(files::read("5.jpg"), std::vector<std::uint8_t>{});
}

TEST_F(Pictures, DownloadOntoAFolderLogsOneLine) {
    std::filesystem::create_directories("5.jpg/keeps-it-from-being-replaced");
    answer(originTransfer);
    camera.getOriginTargetPic(5, 20);
    EXPECT_EQ(out.lines().back(), "can't write picture:5.jpg");
    EXPECT_EQ(files::names(), Lines{"5.jpg"});
}

TEST_F(Pictures, FullDiskLeavesNoPartOfAPicture) {
    std::filesystem::create_symlink("/dev/full", "5.jpg.part");
    answer(originTransfer);
    camera.getOriginTargetPic(5, 20);
    EXPECT_EQ(out.lines().back(), "can't write picture:5.jpg");
    EXPECT_EQ(files::names(), Lines{});
}

class TakePic : public Pictures {
protected:
    void answerAll() {
        answer(deleted);
        answer(capturedId5);
        answer(originRecordAnswer);
        answer(originTransfer);
        answer(deleted);
    }
};

TEST_F(TakePic, SendsFiveRequestsWithoutTheOffset) {
    camera.setOriginPicCmdExtraAdd(9);
    answerAll();
    EXPECT_TRUE(camera.takePic());
    EXPECT_EQ(calls(), (Lines{timeouts(1000), "flush", "write AA 5A 01 08 01 00 00 00 FF 4C AC", "read 512",
                              "flush", "write AA 5A 01 06 00 00 00 00 69 86", "read 100", "flush",
                              "write AA 5A 01 07 00 00 00 00 38 2C", "read 1024", "flush",
                              "write AA 5A 01 09 09 00 00 00 05 00 00 00 00 14 00 00 00 45 42", "read 512",
                              "flush", "write AA 5A 01 08 01 00 00 00 FF 4C AC", "read 512"}));
    EXPECT_EQ(clock.pauses(), (std::vector<std::chrono::nanoseconds>{1s, 1s, 1s, 1s}));
    EXPECT_EQ(files::read("a.jpg"), upTo(0x13));
}

TEST_F(TakePic, LogsItsStepsInOrder) {
    answerAll();
    camera.takePic();
    Lines steps;
    for (const std::string& line : out.lines()) {
        if (line.rfind("sdata:", 0) != 0 && line.rfind("infos:", 0) != 0)
            steps.push_back(line);
    }
    EXPECT_EQ(steps, (Lines{"start of takepic delete result is:0", "pic_id:5", "start sleeep for capture",
                            "end sleep for capture", "pic num:1", "size-trans:20  0  0  0",
                            "recv size:31  picTotalSize:20", "readResult:0", "read over",
                            "end of takepic result is:0"}));
    EXPECT_EQ(out.lines().size(), steps.size() + 10 + 19);
}

TEST_F(TakePic, AnUnknownIdAsksForTheFallbackSize) {
    answer(deleted);
    answer("AA 5A 01 06 02 00 00 00 00 05 54 97");
    answer("AA 5A 01 07 01 00 00 00 00 BF 77");
    fake_serial::willThrowOnRead();
    EXPECT_FALSE(camera.takePic());
    EXPECT_TRUE(out.has("size-trans:1  1  1  1"));
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A 01 09 09 00 00 00 05 00 00 00 00 01 01 01 01 87 F1");
}

TEST_F(TakePic, EachUnansweredStepHasItsLine) {
    const std::vector<std::pair<int, std::string>> failures{{0, "error in takepic deletepic"},
                                                            {1, "error in takepic cmd 0x06"},
                                                            {2, "error in takepic cmd 0x07"}};
    for (const auto& [answered, text] : failures) {
        fake_serial::reset();
        if (answered > 0)
            answer(deleted);
        if (answered > 1)
            answer(capturedId5);
        EXPECT_FALSE(camera.takePic());
        EXPECT_EQ(out.lines().back(), text);
    }
}

TEST_F(TakePic, FailsWhenTheLastDeletionIsUnanswered) {
    answer(deleted);
    answer(capturedId5);
    answer(originRecordAnswer);
    answer(originTransfer);
    EXPECT_FALSE(camera.takePic());
    EXPECT_EQ(out.lines().back(), "error in takepic deletepic");
    EXPECT_EQ(files::read("a.jpg"), upTo(0x13));
}

TEST_F(TakePic, NonZeroResultsAreOnlyLogged) {
    answer("AA 5A 01 08 01 00 00 00 03 00 00");
    answer("AA 5A 01 06 02 00 00 00 01 05 00 00");
    answer(originRecordAnswer);
    protocol::Bytes refused = bytes(originTransfer);
    refused[8] = 1;
    fake_serial::willRead(refused);
    answer("AA 5A 01 08 01 00 00 00 04 00 00");
    EXPECT_TRUE(camera.takePic());
    EXPECT_TRUE(out.has("start of takepic delete result is:3"));
    EXPECT_TRUE(out.has("error in takepic cmd 0x06 parse error"));
    EXPECT_TRUE(out.has("end of takepic result is:4"));
    EXPECT_EQ(files::read("a.jpg"), upTo(0x13));
}

} // namespace
