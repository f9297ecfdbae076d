// Uploads: announcements, chunks, verdicts and their log lines.
#include "tests/link/uploadanswers.h"
#include "tests/link/uploadtest.h"

using namespace std::chrono_literals;
using namespace uploadanswers;

namespace {

TEST_F(Upload, AnnouncementsCarrySizeDigestAndName) {
    struct Row {
        std::vector<std::uint8_t> content;
        const char* app;
        const char* fireware;
        const char* model;
    };
    const std::vector<Row> rows{
        {{},
         "AA 5A 01 1B 14 00 00 00 00 00 00 00 D4 1D 8C D9 8F 00 B2 04 E9 80 09 98 EC F8 42 7E 17 55",
         "AA 5A 01 0B 14 00 00 00 00 00 00 00 D4 1D 8C D9 8F 00 B2 04 E9 80 09 98 EC F8 42 7E D3 4E",
         "AA 5A 01 CB 1D 00 00 00 01 00 00 00 00 D4 1D 8C D9 8F 00 B2 04 E9 80 09 98 EC F8 42 7E 6D 6F 64 65 "
         "6C 5F 76 "
         "31 2B 66"},
        {abc, "AA 5A 01 1B 14 00 00 00 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 7F 72 74 49",
         "AA 5A 01 0B 14 00 00 00 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 7F 72 B0 52",
         "AA 5A 01 CB 1D 00 00 00 01 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 7F 72 6D 6F 64 65 "
         "6C 5F 76 "
         "31 B0 21"},
        {counting(1300),
         "AA 5A 01 1B 14 00 00 00 14 05 00 00 9F 04 FA 44 F3 CC 4A 6C 92 DA E6 7B 41 50 0F C7 55 3D",
         "AA 5A 01 0B 14 00 00 00 14 05 00 00 9F 04 FA 44 F3 CC 4A 6C 92 DA E6 7B 41 50 0F C7 91 26",
         "AA 5A 01 CB 1D 00 00 00 01 14 05 00 00 9F 04 FA 44 F3 CC 4A 6C 92 DA E6 7B 41 50 0F C7 6D 6F 64 65 "
         "6C 5F 76 "
         "31 46 48"}};
    for (const Row& row : rows) {
        file(row.content);
        EXPECT_FALSE(camera.appUpdate());
        EXPECT_EQ(hex(fake_serial::writes().back()), row.app);
        EXPECT_FALSE(camera.firewareUpdate());
        EXPECT_EQ(hex(fake_serial::writes().back()), row.fireware);
        EXPECT_FALSE(camera.modelUpdate());
        EXPECT_EQ(hex(fake_serial::writes().back()), row.model);
    }
}

TEST_F(Upload, ModelNameMayBeEmptyOrChinese) {
    file(abc);
    camera.setModelNameAndPath("", "file.bin");
    camera.modelUpdate();
    EXPECT_EQ(written(0),
              "AA 5A 01 CB 15 00 00 00 01 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 7F 72 2A B5");
    camera.setModelNameAndPath("模型", "file.bin");
    camera.modelUpdate();
    EXPECT_EQ(fake_serial::writes().back()[4], 27);
}

TEST_F(Upload, UnansweredAnnouncementMakesExactlyTheseCalls) {
    file(abc);
    EXPECT_FALSE(camera.appUpdate());
    const Lines made = calls();
    EXPECT_EQ(made[0], timeouts(1000));
    EXPECT_EQ(made[1], "flush");
    EXPECT_EQ(Lines(made.begin() + 3, made.end()), times(10, "read 15"));
    EXPECT_TRUE(clock.pauses().empty());
    EXPECT_TRUE(out.has("appupdate queryCanUpdate checkfailed"));
    camera.firewareUpdate();
    EXPECT_TRUE(out.has("firewareupdate queryfireware cmd checkfailed"));
    camera.modelUpdate();
    EXPECT_TRUE(out.has("updateModel queryModelInfo checkfailed"));
}

TEST_F(Upload, AppImageIsStreamedInSlicesAndJudged) {
    file(counting(1300));
    answer(appFromZero);
    answer(appGood);
    EXPECT_TRUE(camera.appUpdate());
    EXPECT_EQ(chunkSizes(), (std::vector<std::size_t>{512, 512, 276}));
    EXPECT_EQ(streamed(), counting(1300));
    EXPECT_EQ(clock.pauses(), (std::vector<std::chrono::nanoseconds>{2s, 1000ns, 1000ns, 1000ns}));
    EXPECT_EQ(fake_serial::count("flush"), 1) << "no flush before the chunks of an application image";
    EXPECT_EQ(fake_serial::count("read"), 2);
}

TEST_F(Upload, SystemImageAwaitsNoVerdict) {
    file(counting(1300));
    answer(firewareFromZero);
    EXPECT_TRUE(camera.firewareUpdate());
    EXPECT_EQ(fake_serial::count("flush"), 4);
    EXPECT_EQ(fake_serial::count("read"), 1);
    EXPECT_EQ(streamed(), counting(1300));
}

TEST_F(Upload, ModelAwaitsAVerdict) {
    file(counting(1300));
    answer(modelFromZero);
    answer(modelGood);
    EXPECT_TRUE(camera.modelUpdate());
    EXPECT_EQ(fake_serial::count("flush"), 4);
    EXPECT_EQ(out.lines().back(), std::string("update end-result:0  type:") + '\x02');
    answer(modelFromZero);
    answer(modelBad);
    EXPECT_FALSE(camera.modelUpdate());
}

TEST_F(Upload, SlicesAroundTheirSizeAreCutRight) {
    const std::vector<std::pair<std::size_t, std::vector<std::size_t>>> rows{
        {0, {}}, {1, {1}}, {511, {511}}, {512, {512}}, {513, {512, 1}}, {1024, {512, 512}}};
    for (const auto& [size, chunks] : rows) {
        fake_serial::reset();
        file(counting(size));
        answer(appFromZero);
        answer(appGood);
        EXPECT_TRUE(camera.appUpdate()) << size;
        EXPECT_EQ(chunkSizes(), chunks) << size;
    }
}

TEST_F(Upload, ResumesEvenWhenTheCameraRefusesIt) {
    file(counting(1300));
    answer(appCannotFrom512);
    answer(appGood);
    EXPECT_TRUE(camera.appUpdate());
    const auto all = counting(1300);
    EXPECT_EQ(streamed(), std::vector<std::uint8_t>(all.begin() + 512, all.end()));
    EXPECT_TRUE(out.has("cant update"));
}

TEST_F(Upload, AppImageSwitchesTheLogToHexadecimal) {
    file(counting(1300));
    answer(appFrom512);
    answer(appGood);
    camera.appUpdate();
    Lines lines = out.lines();
    EXPECT_EQ(lines[0], "fsize:1300");
    EXPECT_EQ(lines[1], "md5Value2:9f04fa44f3cc4a6c92dae67b41500fc7");
    EXPECT_EQ(lines[2], "every:aa");
    EXPECT_EQ(lines[4], "every:1");
    EXPECT_EQ(lines[32], "can update,offset is 200");
    EXPECT_EQ(lines[33], "offset:200");
    answer(firewareFromZero);
    camera.firewareUpdate();
    EXPECT_TRUE(out.has("cert:aa"));
    EXPECT_TRUE(out.has("fsize:514"));
    EXPECT_TRUE(out.has("fireware can update,offset is 0"));
    EXPECT_TRUE(out.has("fireware offset:0"));
}

TEST_F(Upload, SystemImageLogsInDecimal) {
    file(abc);
    answer("AA 5A 01 0B 05 00 00 00 01 00 02 00 00 00 00");
    EXPECT_TRUE(camera.firewareUpdate());
    EXPECT_TRUE(out.has("md5Value:900150983cd24fb0d6963f7d28e17f72"));
    EXPECT_TRUE(out.has("cert:170"));
    EXPECT_TRUE(out.has("fireware cant update"));
    EXPECT_TRUE(out.has("fireware offset:512"));
}

TEST_F(Upload, ModelLogsALiteralZeroForItsOffset) {
    file(counting(1300));
    answer("AA 5A 01 CB 06 00 00 00 01 00 00 02 00 00 00 00");
    answer(modelGood);
    EXPECT_TRUE(camera.modelUpdate());
    EXPECT_TRUE(out.has("can update2,offset is 0"));
    EXPECT_TRUE(out.has("offset:200"));
    EXPECT_EQ(streamed().size(), 1300U - 512U);
}

TEST_F(Upload, RefusedModelSendsNothing) {
    file(abc);
    answer("AA 5A 01 CB 06 00 00 00 00 00 00 00 00 00 21 7D");
    EXPECT_FALSE(camera.modelUpdate());
    EXPECT_EQ(out.lines().back(), "cant update:0  0");
    answer("AA 5A 01 CB 06 00 00 00 01 01 00 00 00 00 D0 92");
    EXPECT_FALSE(camera.modelUpdate());
    EXPECT_EQ(out.lines().back(), "cant update:1  1");
    EXPECT_EQ(fake_serial::writes().size(), 2U);
    EXPECT_EQ(clock.pauses(), (std::vector<std::chrono::nanoseconds>{2s, 2s}))
        << "the pause comes before a refusal too";
}

TEST_F(Upload, OffsetAtOrBeyondTheSizeSendsNoChunk) {
    file(abc);
    for (const char* offset : {"03 00 00 00", "04 00 00 00", "FF FF FF 7F"}) {
        fake_serial::reset();
        answer("AA 5A 01 1B 05 00 00 00 00 " + std::string(offset) + " 00 00");
        answer(appGood);
        EXPECT_TRUE(camera.appUpdate()) << offset;
        EXPECT_TRUE(chunkSizes().empty()) << offset;
        answer("AA 5A 01 0B 05 00 00 00 00 " + std::string(offset) + " 00 00");
        EXPECT_TRUE(camera.firewareUpdate()) << offset;
    }
}

TEST_F(Upload, OffsetBeyond31BitsFailsWithoutSending) {
    file(abc);
    answer("AA 5A 01 1B 05 00 00 00 00 00 00 00 80 19 BF");
    EXPECT_FALSE(camera.appUpdate());
    EXPECT_TRUE(out.has("offset:80000000"));
    answer("AA 5A 01 0B 05 00 00 00 00 FF FF FF FF 00 00");
    EXPECT_FALSE(camera.firewareUpdate());
    EXPECT_TRUE(out.has("fireware offset:ffffffff"));
    EXPECT_EQ(fake_serial::writes().size(), 2U);
}

TEST_F(Upload, SendsNothingWhenTheOffsetIsCutOff) {
    file(abc);
    answer("AA 5A 01 1B 02 00 00 00 00 00 00 00");
    EXPECT_FALSE(camera.appUpdate());
    answer("AA 5A 01 0B 00 00 00 00 00 00");
    EXPECT_FALSE(camera.firewareUpdate());
    answer("AA 5A 01 CB 03 00 00 00 01 00 00 00 00");
    EXPECT_FALSE(camera.modelUpdate());
    EXPECT_EQ(fake_serial::writes().size(), 3U);
}

TEST_F(Upload, LogsShortWritesWithoutRepeatingThem) {
    file(counting(1300));
    fake_serial::willWriteOnly(30);
    fake_serial::willWriteOnly(100);
    answer(appFromZero);
    answer(appGood);
    EXPECT_TRUE(camera.appUpdate());
    EXPECT_TRUE(out.has("Warning :write length !=targetGap  writeLength:64 targetgap:200"));
    EXPECT_EQ(streamed(), counting(1300));

    fake_serial::reset();
    fake_serial::willWriteOnly(30);
    fake_serial::willWriteOnly(100);
    answer(firewareFromZero);
    EXPECT_TRUE(camera.firewareUpdate());
    EXPECT_TRUE(out.has("warning:::::: writeLength:64  targetGap:200"));
}

TEST_F(Upload, VerdictsDecideAndTheirAbsenceIsLogged) {
    file(abc);
    answer(appFromZero);
    answer(appBad);
    EXPECT_FALSE(camera.appUpdate());
    answer(appFromZero);
    EXPECT_FALSE(camera.appUpdate());
    EXPECT_EQ(out.lines().back(), "appupdate update-end failed");
    EXPECT_EQ(fake_serial::count("read"), 2 + 1 + 10);
    fake_serial::reset();
    answer(modelFromZero);
    EXPECT_FALSE(camera.modelUpdate());
    EXPECT_EQ(out.lines().back(), "modelupdate update-end failed2");
    EXPECT_EQ(fake_serial::count("read"), 2 + 30) << "the announcement answer has 16 bytes";
}

std::string thrownBy(const std::function<bool()>& upload) {
    try {
        upload();
    } catch (const char* text) {
        return text;
    }
    return "nothing thrown";
}

TEST_F(Upload, AFileThatCannotBeOpenedIsThrownAsItsText) {
    EXPECT_EQ(thrownBy([&] { return camera.appUpdate(); }), "file cant open in appUpdate");
    EXPECT_EQ(thrownBy([&] { return camera.firewareUpdate(); }), "file cant open in firewareUpdate");
    EXPECT_EQ(thrownBy([&] { return camera.modelUpdate(); }), "file cant open in appUpdate");
    EXPECT_EQ(calls(), Lines{});
    EXPECT_EQ(out.lines(), Lines{});
}

TEST_F(Upload, RefusesAFolderBeforeSending) {
    std::filesystem::create_directory("file.bin");
    EXPECT_FALSE(camera.appUpdate());
    EXPECT_EQ(calls(), Lines{});
}

TEST_F(Upload, RefusesAFileOf2GibibytesBeforeSending) {
    file({});
    std::filesystem::resize_file("file.bin", std::uintmax_t{1} << 31);
    EXPECT_FALSE(camera.firewareUpdate());
    EXPECT_FALSE(camera.appUpdateV1("file.bin", "file.bin"));
    EXPECT_EQ(out.lines().back(), "fsize:2147483648");
    EXPECT_EQ(calls(), Lines{});
}

TEST_F(Upload, RefusesAFileShorterThanItsStatedSize) {
    const std::string path = "/sys/devices/system/cpu/online"; // states a page, holds a few bytes
    if (!std::ifstream(path))
        GTEST_SKIP() << "no such file here";
    camera.setAppFilePath(path);
    EXPECT_FALSE(camera.appUpdate());
    EXPECT_EQ(fake_serial::writes().size(), 0U);
    EXPECT_EQ(out.lines(), Lines{"fsize:4096"});
}

TEST_F(Upload, APathWithChineseCharactersAndBlanksOpens) {
    files::write(std::filesystem::path(u8"新 固件.bin"), abc);
    camera.setAppFilePath("新 固件.bin");
    answer(appFromZero);
    answer(appGood);
    EXPECT_TRUE(camera.appUpdate());
}

TEST_F(Upload, PublishesItsProgress) {
    file(counting(1300));
    std::vector<std::uint64_t> done;
    fake_serial::onWrite([&](const auto&) { done.push_back(camera.progress().done); });
    answer(appFrom512);
    answer(appGood);
    EXPECT_EQ(camera.progress().phase, TransferProgress::Phase::idle);
    EXPECT_TRUE(camera.appUpdate());
    EXPECT_EQ(done, (std::vector<std::uint64_t>{0, 512, 1024}));
    EXPECT_EQ(camera.progress().startOffset, 512U);
    EXPECT_EQ(camera.progress().total, 1300U);
    EXPECT_EQ(camera.progress().phase, TransferProgress::Phase::idle);
}

TEST_F(Upload, StoppedInMidTransferIsNoSuccess) {
    file(counting(5000));
    int writes = 0;
    fake_serial::onWrite([&](const auto&) {
        if (++writes == 3)
            camera.requestStop();
    });
    answer(firewareFromZero);
    EXPECT_FALSE(camera.firewareUpdate());
    EXPECT_EQ(chunkSizes().size(), 2U);
}

TEST_F(Upload, StoppedAtItsVeryLastSliceIsNoSuccess) {
    file(abc);
    int writes = 0;
    fake_serial::onWrite([&](const auto&) {
        if (++writes == 2)
            camera.requestStop();
    });
    answer(firewareFromZero);
    EXPECT_FALSE(camera.firewareUpdate());
}

TEST_F(Upload, AVanishedPortInMidTransferIsAFailure) {
    file(counting(5000));
    int writes = 0;
    fake_serial::onWrite([&](const auto&) {
        if (++writes == 4)
            fake_serial::throwOn("flush");
    });
    answer(firewareFromZero);
    EXPECT_FALSE(camera.firewareUpdate());
    EXPECT_EQ(chunkSizes().size(), 3U);
}

} // namespace
