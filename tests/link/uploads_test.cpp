// Uploads: announcements, chunks, verdicts and their log lines.
#include "tests/link/linktest.h"
#include "tests/support/scratchfolder.h"

using namespace std::chrono_literals;

namespace {

std::vector<std::uint8_t> counting(std::size_t size) {
    std::vector<std::uint8_t> content(size);
    for (std::size_t i = 0; i < size; ++i)
        content[i] = static_cast<std::uint8_t>(i % 256);
    return content;
}

const std::vector<std::uint8_t> abc{'a', 'b', 'c'};

class Upload : public LinkTest {
protected:
    Upload() {
        camera.setAppFilePath("file.bin");
        camera.setFirewareFilePath("file.bin");
        camera.setModelNameAndPath("model_v1", "file.bin");
    }

    static void file(const std::vector<std::uint8_t>& content) { ScratchFolder::write("file.bin", content); }

    [[nodiscard]] static std::string written(std::size_t index) {
        return hex(fake_serial::writes().at(index));
    }

    /// What was written after the announcement, joined.
    [[nodiscard]] static std::vector<std::uint8_t> streamed() {
        std::vector<std::uint8_t> all;
        const auto writes = fake_serial::writes();
        for (std::size_t i = 1; i < writes.size(); ++i)
            all.insert(all.end(), writes[i].begin(), writes[i].end());
        return all;
    }

    [[nodiscard]] static std::vector<std::size_t> chunkSizes() {
        std::vector<std::size_t> sizes;
        const auto writes = fake_serial::writes();
        for (std::size_t i = 1; i < writes.size(); ++i)
            sizes.push_back(writes[i].size());
        return sizes;
    }

    ScratchFolder folder;
};

constexpr const char* appFromZero = "AA 5A 01 1B 05 00 00 00 00 00 00 00 00 91 2E";
constexpr const char* appFrom512 = "AA 5A 01 1B 05 00 00 00 00 00 02 00 00 F1 40";
constexpr const char* appCannotFrom512 = "AA 5A 01 1B 05 00 00 00 01 00 02 00 00 A0 EA";
constexpr const char* appGood = "AA 5A 01 1B 01 00 00 00 00 D8 66";
constexpr const char* appBad = "AA 5A 01 1B 01 00 00 00 01 F9 76";
constexpr const char* firewareFromZero = "AA 5A 01 0B 05 00 00 00 00 00 00 00 00 07 BA";
constexpr const char* modelFromZero = "AA 5A 01 CB 06 00 00 00 01 00 00 00 00 00 81 38";
constexpr const char* modelGood = "AA 5A 01 CB 02 00 00 00 02 00 8C 3D";
constexpr const char* modelBad = "AA 5A 01 CB 02 00 00 00 02 01 AD 2D";

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
    EXPECT_TRUE(sleeps.empty());
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
    EXPECT_EQ(sleeps, (std::vector<std::chrono::nanoseconds>{2s, 1000ns, 1000ns, 1000ns}));
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
    EXPECT_EQ(sleeps, (std::vector<std::chrono::nanoseconds>{2s, 2s}))
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
    ScratchFolder::write(std::filesystem::path(u8"新 固件.bin"), abc);
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

// --- second protocol -------------------------------------------------------------------------------------

constexpr const char* v1HoldsAll = "AA 5A 01 1D 06 00 00 00 01 00 03 00 00 00 EB CA";
constexpr const char* v1FromZero = "AA 5A 01 1D 06 00 00 00 01 00 00 00 00 00 37 51";
constexpr const char* v1Cannot = "AA 5A 01 1D 06 00 00 00 01 01 00 00 00 00 66 FB";
constexpr const char* result0 = "AA 5A 01 1E 01 00 00 00 00 D9 25";
constexpr const char* result1 = "AA 5A 01 1E 01 00 00 00 01 F8 35";
constexpr const char* result2 = "AA 5A 01 1E 01 00 00 00 02 9B 05";
constexpr const char* announcedAbc = "AA 5A 01 1D 1C 00 00 00 01 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 "
                                     "3F 7D 28 E1 7F 72 61 70 70 2E 62 69 6E 29 61";

class UploadV1 : public Upload {
protected:
    bool run(const std::vector<std::uint8_t>& content) {
        file(content);
        return camera.appUpdateV1("app.bin", "file.bin");
    }

    static void announcementsAnswered(const char* last) {
        for (int i = 0; i < 4; ++i)
            answer(v1Cannot);
        answer(last);
    }

    /// Answers all announcements and then each closing packet with one of these; "" is silence.
    static void closingAnswered(const Lines& answers) {
        announcementsAnswered(v1HoldsAll);
        for (const std::string& each : answers) {
            if (each.empty())
                fake_serial::willTimeOut(30);
            else
                answer(each);
        }
    }
};

TEST_F(UploadV1, AnnouncesTheFilesName) {
    EXPECT_FALSE(run({}));
    EXPECT_EQ(written(0),
              "AA 5A 01 1D 1C 00 00 00 01 00 00 00 00 D4 1D 8C D9 8F 00 B2 04 E9 80 09 98 EC F8 42 7E 61 70 "
              "70 2E 62 69 6E C1 95");
    EXPECT_FALSE(run(counting(1300)));
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A 01 1D 1C 00 00 00 01 14 05 00 00 9F 04 FA 44 F3 CC "
                                                 "4A 6C 92 DA E6 7B 41 50 0F C7 61 70 70 2E 62 69 "
                                                 "6E 26 54");
}

TEST_F(UploadV1, SendsNothingForAMissingFile) {
    EXPECT_FALSE(camera.appUpdateV1("app.bin", "missing.bin"));
    EXPECT_EQ(out.lines(), Lines{"appupdate2 file cant open"});
    EXPECT_EQ(calls(), Lines{});
}

TEST_F(UploadV1, UsesTheFifthOfFiveAnnouncementAnswers) {
    announcementsAnswered(v1HoldsAll);
    for (int i = 0; i < 11; ++i)
        answer(result0);
    EXPECT_TRUE(run(abc));
    const Lines made = calls();
    EXPECT_EQ(made[0], timeouts(1000));
    const Lines announced{"flush", std::string("write ") + announcedAbc, "read 15", "read 15"};
    for (auto at = made.begin() + 1; at != made.begin() + 21; at += 4)
        EXPECT_EQ(Lines(at, at + 4), announced);
    EXPECT_EQ(fake_serial::count("setTimeout"), 2);
    EXPECT_TRUE(
        out.has("1D cmd:aa5a011d1c0000000103000000900150983cd24fb0d6963f7d28e17f726170702e62696e2961"));
    EXPECT_TRUE(out.has("can update,offset is 3"));
    EXPECT_EQ(out.lines().back(), "packageResult:0");
}

TEST_F(UploadV1, AnUnansweredFifthAnnouncementFailsAtOnce) {
    for (int i = 0; i < 4; ++i)
        answer(v1HoldsAll);
    EXPECT_FALSE(run(abc));
    EXPECT_EQ(fake_serial::writes().size(), 5U);
    EXPECT_EQ(out.lines().back(), "appupdateV1 queryCanUpdate checkfailed");
    EXPECT_TRUE(sleeps.empty()) << "no pause after the last";
}

TEST_F(UploadV1, EachUnansweredAnnouncementIsFollowedByAShortPause) {
    EXPECT_FALSE(run(abc));
    EXPECT_EQ(sleeps, (std::vector<std::chrono::nanoseconds>{50ms, 50ms, 50ms, 50ms}));
    EXPECT_EQ(fake_serial::count("read"), 50);
}

TEST_F(UploadV1, RefusalAndShortAnswersFail) {
    announcementsAnswered(v1Cannot);
    EXPECT_FALSE(run(abc));
    EXPECT_EQ(out.lines().back(), "cant update");
    EXPECT_EQ(sleeps.back(), 1s);
    announcementsAnswered("AA 5A 01 1D 03 00 00 00 01 00 03 00 00");
    const std::size_t before = out.lines().size();
    EXPECT_FALSE(run(abc));
    EXPECT_EQ(out.lines().size(), before + 2) << "size and dump, nothing about the short answer";
}

TEST_F(UploadV1, FailsWhenTheCameraWantsData) {
    announcementsAnswered(v1FromZero);
    EXPECT_FALSE(run(abc));
    EXPECT_EQ(out.lines().back(), "data cmd:aa5a011e0b0000000000000003000000616263fca5");
    EXPECT_EQ(fake_serial::writes().size(), 5U);
    EXPECT_EQ(sleeps.back(), 30ms);
    EXPECT_EQ(calls().back(), timeouts(200, 2000));
}

TEST_F(UploadV1, TheLoggedPacketHoldsAtMost1024Bytes) {
    announcementsAnswered(v1FromZero);
    EXPECT_FALSE(run(counting(2000)));
    EXPECT_EQ(out.lines().back().size(), std::string("data cmd:").size() + 2 * (10 + 8 + 1024));
    announcementsAnswered("AA 5A 01 1D 06 00 00 00 01 00 DC 05 00 00 00 00");
    EXPECT_FALSE(run(counting(2000)));
    EXPECT_EQ(out.lines().back().size(), std::string("data cmd:").size() + 2 * (10 + 8 + 500));
}

TEST_F(UploadV1, SendsTheClosingPacketElevenTimes) {
    closingAnswered(times(11, result1));
    EXPECT_TRUE(run(abc));
    const auto writes = fake_serial::writes();
    ASSERT_EQ(writes.size(), 16U);
    for (std::size_t i = 5; i < 16; ++i)
        EXPECT_EQ(hex(writes[i]), "AA 5A 01 1E 08 00 00 00 03 00 00 00 00 00 00 00 AF 2B");
    const Lines lines = out.lines();
    EXPECT_EQ(Lines(lines.end() - 15, lines.end()),
              (Lines{"after data-send", "after data-send2"} + times(11, "now packageResult:1") +
               Lines{"after data-send3", "packageResult:1"}));
}

TEST_F(UploadV1, SizesClosingPacketsByTheFile) {
    announcementsAnswered("AA 5A 01 1D 06 00 00 00 01 00 00 00 00 00 37 51");
    EXPECT_FALSE(run({}));
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A 01 1E 08 00 00 00 00 00 00 00 00 00 00 00 DA E3");
    announcementsAnswered("AA 5A 01 1D 06 00 00 00 01 00 14 05 00 00 00 00");
    EXPECT_FALSE(run(counting(1300)));
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A 01 1E 08 00 00 00 14 05 00 00 00 00 00 00 A4 A8");
}

TEST_F(UploadV1, TheLastResultThatCameDecides) {
    closingAnswered(times(10, result2) + Lines{result0});
    EXPECT_TRUE(run(abc));
    fake_serial::reset();
    closingAnswered(Lines{result0} + times(10, ""));
    EXPECT_TRUE(run(abc));
    EXPECT_TRUE(out.has("continue last cmd"));
    fake_serial::reset();
    closingAnswered(times(10, result0) + Lines{result2});
    EXPECT_FALSE(run(abc));
    fake_serial::reset();
    closingAnswered(times(11, ""));
    EXPECT_FALSE(run(abc));
    EXPECT_EQ(out.lines().back(), "after data-send3");
    EXPECT_EQ(fake_serial::count("read"), 5 * 2 + 11 * 30);
}

TEST_F(UploadV1, AnOffsetBeyondTheSizeSendsNoPacketAndFails) {
    for (const char* offset : {"04 00 00 00", "00 00 00 80", "FF FF FF FF"}) {
        fake_serial::reset();
        announcementsAnswered(("AA 5A 01 1D 06 00 00 00 01 00 " + std::string(offset) + " 00 00").c_str());
        EXPECT_FALSE(run(abc));
        EXPECT_EQ(fake_serial::writes().size(), 5U);
        const Lines lines = out.lines();
        EXPECT_EQ(Lines(lines.end() - 2, lines.end()), (Lines{"after data-send", "after data-send3"}));
    }
}

TEST_F(UploadV1, FrameDumpsKeepTheLogDecimal) {
    announcementsAnswered(v1HoldsAll);
    run(abc);
    EXPECT_EQ(std::cout.flags() & std::ios::basefield, std::ios::dec);
}

} // namespace
