// Uploads by the second protocol: announcements, closing packets and their log lines.
#include "tests/link/uploadanswers.h"
#include "tests/link/uploadtest.h"

using namespace std::chrono_literals;
using namespace uploadanswers;

namespace {

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
    EXPECT_TRUE(clock.pauses().empty()) << "no pause after the last";
}

TEST_F(UploadV1, EachUnansweredAnnouncementIsFollowedByAShortPause) {
    EXPECT_FALSE(run(abc));
    EXPECT_EQ(clock.pauses(), (std::vector<std::chrono::nanoseconds>{50ms, 50ms, 50ms, 50ms}));
    EXPECT_EQ(fake_serial::count("read"), 50);
}

TEST_F(UploadV1, RefusalAndShortAnswersFail) {
    announcementsAnswered(v1Cannot);
    EXPECT_FALSE(run(abc));
    EXPECT_EQ(out.lines().back(), "cant update");
    EXPECT_EQ(clock.pauses().back(), 1s);
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
    EXPECT_EQ(clock.pauses().back(), 30ms);
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
