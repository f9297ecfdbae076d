// Uploads: announcements, raw data, verdicts, resumption, and the second protocol.
#include "tests/emulator/camera/camerabench.h"

namespace emulatortest {
namespace {

const char* const appAbc =
    "AA 5A 01 1B 14 00 00 00 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 7F 72 74 49";
const char* const systemAbc =
    "AA 5A 01 0B 14 00 00 00 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 7F 72 B0 52";
const char* const modelAbc =
    "AA 5A 01 CB 1D 00 00 00 01 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 "
    "7F 72 6D 6F 64 65 6C 5F 76 31 B0 21";
const char* const app1300 =
    "AA 5A 01 1B 14 00 00 00 14 05 00 00 9F 04 FA 44 F3 CC 4A 6C 92 DA E6 7B 41 50 0F C7 55 3D";
const char* const appEmpty =
    "AA 5A 01 1B 14 00 00 00 00 00 00 00 D4 1D 8C D9 8F 00 B2 04 E9 80 09 98 EC F8 42 7E 17 55";
const char* const appV1Abc =
    "AA 5A 01 1D 1C 00 00 00 01 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 "
    "7F 72 61 70 70 2E 62 69 6E 29 61";
const char* const canFrom0 = "AA 5A 01 1B 05 00 00 00 00 00 00 00 00 91 2E";
const char* const verdictGood = "AA 5A 01 1B 01 00 00 00 00 D8 66";
const char* const verdictBad = "AA 5A 01 1B 01 00 00 00 01 F9 76";
const char* const abc = "61 62 63";

class Uploads : public testing::Test {
protected:
    const UploadRecord& upload() const { return bench.camera.record().uploads.back(); }
    CameraBench bench;
};

TEST_F(Uploads, ApplicationImageIsCheckedAndRestarts) {
    EXPECT_EQ(bench.ask(appAbc, 2s), hex(canFrom0));
    EXPECT_TRUE(bench.camera.uploading());
    EXPECT_EQ(bench.ask(abc), hex(verdictGood));
    EXPECT_TRUE(upload().complete);
    EXPECT_TRUE(upload().digestRight);
    EXPECT_EQ(upload().earlyBytes, 0U);
    EXPECT_TRUE(bench.camera.booting(bench.now));
    bench.listen(4s);
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
}

TEST_F(Uploads, AWrongDigestGetsTheOtherVerdictAndNoRestart) {
    bench.ask(appAbc, 2s);
    EXPECT_EQ(bench.ask("61 62 64"), hex(verdictBad));
    EXPECT_FALSE(upload().digestRight);
    EXPECT_FALSE(bench.camera.booting(bench.now));
}

TEST_F(Uploads, ASystemImageHasNoVerdict) {
    EXPECT_EQ(bench.ask(systemAbc, 2s), hex("AA 5A 01 0B 05 00 00 00 00 00 00 00 00 07 BA"));
    EXPECT_EQ(bench.ask(abc), Bytes());
    EXPECT_TRUE(upload().digestRight);
    EXPECT_TRUE(bench.camera.booting(bench.now));
}

TEST_F(Uploads, AModelHasANameAVerdictAndNoRestart) {
    EXPECT_EQ(bench.ask(modelAbc, 2s), hex("AA 5A 01 CB 06 00 00 00 01 00 00 00 00 00 81 38"));
    EXPECT_EQ(upload().name, "model_v1");
    EXPECT_EQ(bench.ask(abc), hex("AA 5A 01 CB 02 00 00 00 02 00 8C 3D"));
    EXPECT_FALSE(bench.camera.booting(bench.now));
}

TEST_F(Uploads, ABadModelGetsTheOtherVerdict) {
    bench.ask(modelAbc, 2s);
    EXPECT_EQ(bench.ask("61 62 64"), hex("AA 5A 01 CB 02 00 00 00 02 01 AD 2D"));
}

TEST_F(Uploads, TheNameOfAModelMayBeEmpty) {
    bench.ask("AA 5A 01 CB 15 00 00 00 01 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 7F 72 2A B5",
              2s);
    EXPECT_EQ(upload().name, "");
    EXPECT_EQ(upload().fileSize, 3U);
}

TEST_F(Uploads, CountsChunks) {
    bench.ask(app1300, 2s);
    const Bytes file = countingBytes(1300);
    const ByteView view(file);
    bench.ask(view.range(0, 512).toBytes(), 10ms);
    bench.ask(view.range(512, 1024).toBytes(), 10ms);
    EXPECT_EQ(bench.ask(view.range(1024, 1300).toBytes()), hex(verdictGood));
    EXPECT_EQ(upload().chunkSizes, (std::vector<std::size_t>{512, 512, 276}));
    EXPECT_EQ(upload().received, file);
}

TEST_F(Uploads, FindsNoFrameInTheData) {
    bench.ask(app1300, 2s);
    EXPECT_EQ(bench.ask(heartbeatRequest), Bytes());
    EXPECT_EQ(bench.camera.record().count(0x01), 0U);
    EXPECT_EQ(upload().received, hex(heartbeatRequest));
}

TEST_F(Uploads, WhatFollowsTheLastByteIsAFrameAgain) {
    bench.ask(systemAbc, 2s);
    bench.camera.settings().updateRestartTime = 0s;
    bench.camera.receive(hex(std::string(abc) + "33"), bench.now);
    bench.listen(100ms);
    EXPECT_EQ(bench.camera.record().garbageBytes, 1U);
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
}

TEST_F(Uploads, DataWithinTwoSecondsOfTheAnswerIsRecorded) {
    bench.ask(appAbc, 1500ms);
    bench.ask(abc);
    EXPECT_EQ(upload().earlyBytes, 3U);
    ASSERT_TRUE(upload().firstByteAt);
    EXPECT_LT(*upload().firstByteAt - upload().answeredAt, 1900ms);
}

TEST_F(Uploads, TakesDataInOnePieceWithTheAnnouncement) {
    bench.ask(std::string(appAbc) + abc);
    EXPECT_TRUE(upload().complete);
    EXPECT_EQ(upload().earlyBytes, 3U);
}

TEST_F(Uploads, EmptyFileIsCompleteAtOnce) {
    EXPECT_EQ(bench.ask(appEmpty, 2s), hex(canFrom0));
    EXPECT_EQ(bench.listen(1s), hex(verdictGood));
}

TEST_F(Uploads, ChecksTheKeptPrefix) {
    const Bytes file = countingBytes(1300);
    bench.camera.state().heldUpload = ByteView(file).range(0, 512).toBytes();
    EXPECT_EQ(bench.ask(app1300, 2s), hex("AA 5A 01 1B 05 00 00 00 00 00 02 00 00 F1 40"));
    EXPECT_EQ(bench.ask(ByteView(file).range(512, 1300).toBytes()), hex(verdictGood));
    EXPECT_TRUE(bench.camera.state().heldUpload.empty());
}

TEST_F(Uploads, AWrongKeptPrefixSpoilsTheDigest) {
    bench.camera.state().heldUpload = {'x'};
    bench.ask(appAbc, 2s);
    EXPECT_EQ(bench.ask("62 63"), hex(verdictBad));
}

TEST_F(Uploads, ResumesAfterFiveSecondsOfSilence) {
    const Bytes file = countingBytes(1300);
    bench.ask(app1300, 2s);
    bench.ask(ByteView(file).range(0, 512).toBytes(), 4900ms);
    EXPECT_TRUE(bench.camera.uploading());
    bench.listen(200ms);
    EXPECT_FALSE(bench.camera.uploading());
    EXPECT_TRUE(upload().finished);
    EXPECT_FALSE(upload().complete);
    EXPECT_EQ(bench.ask(app1300, 2s), hex("AA 5A 01 1B 05 00 00 00 00 00 02 00 00 F1 40"));
    EXPECT_EQ(bench.ask(ByteView(file).range(512, 1300).toBytes()), hex(verdictGood));
}

TEST_F(Uploads, AnotherFileDoesNotContinueAnInterruptedOne) {
    bench.ask(app1300, 2s);
    bench.ask(Bytes(512), 6s);
    EXPECT_EQ(bench.ask(appAbc, 2s), hex(canFrom0));
}

TEST_F(Uploads, InterruptedUploadsAreForgottenWhenSwitchedSo) {
    bench.camera.settings().keepsInterruptedUploads = false;
    bench.ask(app1300, 2s);
    bench.ask(Bytes(512), 6s);
    EXPECT_TRUE(bench.camera.state().heldUpload.empty());
}

TEST_F(Uploads, AnInterruptedUploadWithAGapIsNotKept) {
    bench.camera.addFault("offset=512@appUpdate#1");
    bench.ask(app1300, 2s);
    bench.ask(Bytes(100), 6s);
    EXPECT_FALSE(bench.camera.uploading());
    EXPECT_TRUE(bench.camera.state().heldUpload.empty());
    EXPECT_EQ(bench.ask(app1300, 2s), hex(canFrom0));
}

TEST_F(Uploads, AnImageThatIsRefusedIsStillSwallowed) {
    bench.camera.addFault("result=1@appUpdate");
    bench.camera.addFault("offset=512@appUpdate");
    EXPECT_EQ(bench.ask(app1300, 2s), hex("AA 5A 01 1B 05 00 00 00 01 00 02 00 00 A0 EA"));
    EXPECT_TRUE(bench.camera.uploading());
    bench.ask(Bytes(788));
    EXPECT_FALSE(bench.camera.uploading());
    EXPECT_EQ(upload().received.size(), 788U);
}

TEST_F(Uploads, AModelThatIsRefusedIsNotWaitedFor) {
    bench.camera.addFault("echo=0@modelUpdate#1");
    bench.camera.addFault("result=1@modelUpdate#2");
    EXPECT_EQ(bench.ask(modelAbc), hex("AA 5A 01 CB 06 00 00 00 00 00 00 00 00 00 21 7D"));
    EXPECT_FALSE(bench.camera.uploading());
    EXPECT_EQ(bench.ask(modelAbc), hex("AA 5A 01 CB 06 00 00 00 01 01 00 00 00 00 D0 92"));
    EXPECT_TRUE(upload().refused);
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
}

struct OffsetRow {
    const char* offset;
    std::uint32_t answered;
    bool waitsForData;

    friend void PrintTo(const OffsetRow& row, std::ostream* out) { *out << row.offset; }
};

class UploadOffset : public testing::TestWithParam<OffsetRow> {};

TEST_P(UploadOffset, IsAnsweredAsSet) {
    CameraBench bench;
    bench.camera.addFault(std::string("offset=") + GetParam().offset);
    const Bytes answer = bench.ask(app1300, 100ms);
    ASSERT_EQ(answer.size(), 15U);
    EXPECT_EQ(ByteView(answer).get(protocol::Field<std::uint32_t>{9}), GetParam().answered);
    EXPECT_EQ(bench.camera.uploading(), GetParam().waitsForData);
}

INSTANTIATE_TEST_SUITE_P(All, UploadOffset,
                         testing::Values(OffsetRow{"512", 512, true}, OffsetRow{"size-1", 1299, true},
                                         OffsetRow{"size", 1300, false}, OffsetRow{"size+1", 1301, false},
                                         OffsetRow{"0x7FFFFFFF", 0x7FFFFFFF, false},
                                         OffsetRow{"0x80000000", 0x80000000, false},
                                         OffsetRow{"0xFFFFFFFF", 0xFFFFFFFF, false}));

TEST_F(Uploads, ExpectsFramesAfterAShortAnnouncementAnswer) {
    for (int payload = 0; payload < 5; ++payload) {
        bench.camera.faults().clear();
        bench.camera.addFault("payload=" + std::to_string(payload) + "@appUpdate");
        EXPECT_EQ(bench.ask(appAbc).size(), 10U + static_cast<unsigned>(payload));
        EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
    }
}

TEST_F(Uploads, ExpectsFramesAfterASpoiltAnnouncementAnswer) {
    for (const char* const fault :
         {"silent@appUpdate", "truncate=1@appUpdate", "length=+1@appUpdate", "length=-1@appUpdate",
          "raw=33@appUpdate", "stray=1@modelUpdate", "glue@modelUpdate", "length=+1@modelUpdate"}) {
        bench.camera.faults().clear();
        bench.camera.addFault(fault);
        bench.ask(appAbc);
        if (bench.camera.uploading())
            bench.ask(abc);
        bench.ask(modelAbc);
        EXPECT_EQ(bench.camera.uploading(), std::string(fault).ends_with("appUpdate")) << fault;
        if (bench.camera.uploading())
            bench.ask(abc);
        bench.listen(10s);
        EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer)) << fault;
    }
}

TEST_F(Uploads, ExpectsDataWhenAReadOf15BytesSeesAnAnswer) {
    bench.camera.addFault("stray=1@appUpdate#1");
    bench.camera.addFault("glue@appUpdate#2");
    bench.camera.addFault("length=-1@modelUpdate");
    for (const char* const announcement : {appAbc, appAbc, modelAbc}) {
        bench.ask(announcement, 2s);
        EXPECT_TRUE(bench.camera.uploading());
        bench.ask(abc);
        EXPECT_FALSE(bench.camera.uploading());
        bench.listen(10s);
    }
}

TEST_F(Uploads, TheVerdictCanBeMissingOverruledOrLate) {
    bench.camera.addFault("no-verdict@appUpdate#1");
    bench.camera.addFault("verdict=1@appUpdate#2");
    bench.camera.addFault("verdict-delay=9000@appUpdate#3");
    bench.camera.settings().updateRestartTime = 0s;
    bench.ask(appAbc, 2s);
    EXPECT_EQ(bench.ask(abc, 60s), Bytes());
    bench.ask(appAbc, 2s);
    EXPECT_EQ(bench.ask(abc), hex(verdictBad));
    bench.ask(appAbc, 2s);
    EXPECT_EQ(bench.ask(abc, 8900ms), Bytes());
    EXPECT_EQ(bench.listen(200ms), hex(verdictGood));
}

TEST_F(Uploads, TheCameraCanStopReadingInTheMiddle) {
    bench.camera.addFault("stall=40,8000@appUpdate");
    bench.ask(app1300, 2s);
    bench.ask(Bytes(512), 1ms);
    EXPECT_FALSE(bench.camera.readingPaused(bench.now));
    bench.ask(Bytes(512), 7s);
    EXPECT_TRUE(bench.camera.readingPaused(bench.now));
    EXPECT_TRUE(bench.camera.uploading());
    bench.listen(1s);
    EXPECT_FALSE(bench.camera.readingPaused(bench.now));
}

TEST_F(Uploads, ResumesAfterTheDeviceVanished) {
    bench.camera.addFault("upload-hang-up=50@appUpdate#1");
    const Bytes file = countingBytes(1300);
    bench.ask(app1300, 2s);
    bench.ask(ByteView(file).range(0, 512).toBytes(), 1ms);
    EXPECT_FALSE(bench.hungUp);
    bench.ask(ByteView(file).range(512, 1024).toBytes(), 1ms);
    EXPECT_TRUE(bench.hungUp);
    bench.camera.lineReopened(bench.now);
    EXPECT_EQ(bench.ask(app1300, 2s), protocol::buildFrame(0x1B, hex("00 00 04 00 00"), 1));
}

TEST_F(Uploads, RestartTakesTheFaultsOfTheAnnouncement) {
    bench.camera.addFault("back-at=2@systemUpdate");
    bench.ask(systemAbc, 2s);
    bench.ask(abc, 1h);
    EXPECT_TRUE(bench.ask(heartbeatRequest).empty());
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
}

TEST_F(Uploads, AnAnnouncementOfAWrongLengthIsNotAnswered) {
    EXPECT_TRUE(bench.askFrame(0x1B, Bytes(19)).empty());
    EXPECT_TRUE(bench.askFrame(0xCB, Bytes(20)).empty());
    EXPECT_FALSE(bench.camera.uploading());
}

class SecondProtocol : public testing::Test {
protected:
    SecondProtocol() { bench.camera.settings().address = 1; }
    const AppV1Record& run() const { return bench.camera.record().appV1; }
    CameraBench bench{CameraType::salesDynamic};
};

TEST_F(SecondProtocol, FiveIdenticalAnnouncementsAreCounted) {
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(bench.ask(appV1Abc), hex("AA 5A 01 1D 06 00 00 00 01 00 00 00 00 00 37 51"));
    EXPECT_EQ(run().announcements, 5U);
    EXPECT_FALSE(run().changedWithinRun);
    EXPECT_FALSE(bench.camera.uploading());
}

TEST_F(SecondProtocol, ADifferentAnnouncementWithinTheFiveIsNoticed) {
    bench.ask(appV1Abc);
    bench.askFrame(0x1D, Bytes(22));
    EXPECT_EQ(run().announcements, 1U);
    EXPECT_TRUE(run().changedWithinRun);
}

TEST_F(SecondProtocol, AHeldImageIsAnsweredWithItsSize) {
    bench.camera.state().heldUpload = hex(abc);
    EXPECT_EQ(bench.ask(appV1Abc), hex("AA 5A 01 1D 06 00 00 00 01 00 03 00 00 00 EB CA"));
    bench.camera.state().heldUpload.clear();
    bench.camera.settings().holdsAnnouncedImage = true;
    EXPECT_EQ(bench.ask(appV1Abc), hex("AA 5A 01 1D 06 00 00 00 01 00 03 00 00 00 EB CA"));
}

TEST_F(SecondProtocol, AnAnnouncementCanBeRefused) {
    bench.camera.addFault("result=1@appUpdateV1");
    EXPECT_EQ(bench.ask(appV1Abc), hex("AA 5A 01 1D 06 00 00 00 01 01 00 00 00 00 66 FB"));
}

TEST_F(SecondProtocol, FaultsSelectSingleAnnouncements) {
    bench.camera.addFault("silent@appUpdateV1#2-3");
    bench.camera.addFault("offset=size@appUpdateV1#5");
    EXPECT_EQ(bench.ask(appV1Abc).size(), 16U);
    EXPECT_TRUE(bench.ask(appV1Abc).empty());
    EXPECT_TRUE(bench.ask(appV1Abc).empty());
    EXPECT_EQ(bench.ask(appV1Abc).at(10), 0);
    EXPECT_EQ(bench.ask(appV1Abc).at(10), 3);
}

TEST_F(SecondProtocol, RestartsAfterElevenClosingPackets) {
    for (int i = 0; i < 11; ++i) {
        EXPECT_FALSE(bench.camera.booting(bench.now));
        EXPECT_EQ(bench.ask("AA 5A 01 1E 08 00 00 00 03 00 00 00 00 00 00 00 AF 2B"),
                  hex("AA 5A 01 1E 01 00 00 00 00 D9 25"));
    }
    EXPECT_EQ(run().closingPackets, 11U);
    EXPECT_TRUE(bench.camera.booting(bench.now));
}

TEST_F(SecondProtocol, PackageResultsAreMixedWithSilenceByFaults) {
    bench.camera.addFault("result=1@packetV1#1");
    bench.camera.addFault("silent@packetV1#2");
    bench.camera.addFault("result=2@packetV1#3");
    const char* const closing = "AA 5A 01 1E 08 00 00 00 00 00 00 00 00 00 00 00 DA E3";
    EXPECT_EQ(bench.ask(closing), hex("AA 5A 01 1E 01 00 00 00 01 F8 35"));
    EXPECT_TRUE(bench.ask(closing).empty());
    EXPECT_EQ(bench.ask(closing), hex("AA 5A 01 1E 01 00 00 00 02 9B 05"));
}

TEST_F(SecondProtocol, ADataPacketIsCountedAndNotAccepted) {
    EXPECT_EQ(bench.ask("AA 5A 01 1E 0B 00 00 00 00 00 00 00 03 00 00 00 61 62 63 FC A5"),
              hex("AA 5A 01 1E 01 00 00 00 02 9B 05"));
    EXPECT_EQ(run().dataPackets, 1U);
}

} // namespace
} // namespace emulatortest
