// Properties and status commands: meaning of answers, log lines.
#include "tests/link/linktest.h"

namespace {

class Heartbeat : public LinkTest {};

TEST_F(Heartbeat, IgnoresAddressAndCheckCodeOfTheAnswer) {
    for (const char* good : {"AA 5A 01 01 01 00 00 00 01 7F EA", "AA 5A EE 01 01 00 00 00 01 75 78",
                             "AA 5A 01 01 01 00 00 00 01 00 00"}) {
        answer(good);
        EXPECT_TRUE(camera.testHeartBeat()) << good;
    }
}

TEST_F(Heartbeat, LogsEachConvertedByteInDecimalAndTheText) {
    answer("AA 5A 01 01 01 00 00 00 01 7F EA");
    std::cout << std::hex;
    EXPECT_TRUE(camera.testHeartBeat());
    EXPECT_EQ(out.lines(), (Lines{"datas:170", "datas:90", "datas:1", "datas:1", "datas:0", "datas:0",
                                  "datas:0", "datas:1", "hex str:AA5A110001"}));
}

TEST_F(Heartbeat, FailsForEveryOtherAnswer) {
    for (const char* bad : {"AA 5A 01 01 01 00 00 00 00 5E FA", "AA 5A 01 02 01 00 00 00 01 7F EA",
                            "AA 5A 01 01 01 00 00 00 01 7F", "AA 5A 01 01 01 00 00 00 01 7F EA 00",
                            "33 AA 5A 01 01 01 00 00 00 01 7F EA", "AA", "AA 5A"}) {
        answer(bad);
        EXPECT_FALSE(camera.testHeartBeat()) << bad;
    }
}

TEST_F(Heartbeat, GoesToAnotherAddressOnRequest) {
    answer("AA 5A 02 01 01 00 00 00 01 FD 32");
    EXPECT_TRUE(camera.testHeartBeatAt(2));
    camera.testHeartBeat();
    ASSERT_EQ(fake_serial::writes().size(), 2U);
    EXPECT_EQ(hex(fake_serial::writes()[0]), "AA 5A 02 01 01 00 00 00 00 DC 22");
    EXPECT_EQ(hex(fake_serial::writes()[1]), "AA 5A 01 01 01 00 00 00 00 5E FA");
}

TEST_F(Heartbeat, NoAnswerLogsAnEmptyText) {
    EXPECT_FALSE(camera.testHeartBeat());
    EXPECT_EQ(out.lines(), Lines{"hex str:"});
}

TEST_F(Heartbeat, DiscardsByReadingIfTheLibraryCannotDiscard) {
    fake_serial::refuseFlushInput();
    answer("AA 5A 01 02 01 00 00 00 01 7F EA"); // stale, waiting when the heartbeat starts
    fake_serial::onWrite([](const auto&) { answer("AA 5A 01 01 01 00 00 00 01 7F EA"); });
    EXPECT_TRUE(camera.testHeartBeat());
    EXPECT_EQ(calls(), (Lines{timeouts(200), "flushInput", "available", "read 11", "available", "flush",
                              "write AA 5A 01 01 01 00 00 00 00 5E FA", "read 100"}));
}

TEST_F(Heartbeat, StopsDiscardingWhenPromisedBytesAreMissing) {
    fake_serial::refuseFlushInput();
    fake_serial::willPromise(4);
    fake_serial::onWrite([](const auto&) { answer("AA 5A 01 01 01 00 00 00 01 7F EA"); });
    EXPECT_TRUE(camera.testHeartBeat());
    EXPECT_EQ(fake_serial::count("available"), 1);
}

TEST_F(Heartbeat, AnyOtherFailureToDiscardIsAFailure) {
    fake_serial::refuseFlushInput("device gone");
    answer("AA 5A 01 01 01 00 00 00 01 7F EA");
    EXPECT_FALSE(camera.testHeartBeat());
    EXPECT_EQ(fake_serial::count("write"), 0);
    EXPECT_EQ(fake_serial::count("available"), 0);

    fake_serial::reset();
    fake_serial::throwOn("flushInput", "device gone");
    EXPECT_FALSE(camera.testHeartBeat());
    EXPECT_EQ(fake_serial::count("write"), 0);
}

TEST_F(Heartbeat, AnExceptionOfTheLibraryIsLoggedByItsText) {
    fake_serial::throwOn("write", "gone");
    EXPECT_FALSE(camera.testHeartBeat());
    EXPECT_EQ(out.lines(), Lines{"command failed:SerialException gone failed."});
}

TEST_F(Heartbeat, AnyOtherExceptionIsLoggedAsAFailure) {
    fake_serial::onWrite([](const auto&) { throw 7; });
    EXPECT_FALSE(camera.testHeartBeat());
    EXPECT_EQ(out.lines(), Lines{"command failed:unknown error"});
}

class PropertyRead : public LinkTest {};

TEST_F(PropertyRead, GivesTheValueBytesAndLogsItsSteps) {
    answer("AA 5A 01 02 03 00 00 00 0F 00 1E 69 30");
    EXPECT_EQ(camera.getCommonProperty(15, 2), (std::vector<std::uint8_t>{30}));
    EXPECT_EQ(out.lines(),
              (Lines{"serialDataLength:11  write-length:11", "datalen:3", "end commonproperty"}));
    answer("AA 5A 01 02 04 00 00 00 0A 00 1E 3C D1 D3");
    EXPECT_EQ(camera.getCommonProperty(10, 2), (std::vector<std::uint8_t>{30, 60}));
}

TEST_F(PropertyRead, DoesNotExamineTheIdEcho) {
    answer("AA 5A 01 02 03 00 00 00 63 00 1E 00 00");
    EXPECT_EQ(camera.getCommonProperty(15, 2), (std::vector<std::uint8_t>{30}));
}

TEST_F(PropertyRead, RefusalIsEmptyAndLogged) {
    answer("AA 5A 01 02 02 00 00 00 0F 01 28 06");
    EXPECT_TRUE(camera.getCommonProperty(15, 2).empty());
    EXPECT_EQ(out.lines().back(), "getCommonProperty error2:getCommonProperty result !=0x00");
}

TEST_F(PropertyRead, SilenceIsEmptyAndLoggedTwice) {
    EXPECT_TRUE(camera.getCommonProperty(15, 2).empty());
    EXPECT_EQ(out.lines(), (Lines{"serialDataLength:11  write-length:11", "getCommonProperty error:15",
                                  "getCommonProperty error2:check failed in getCommonProperty"}));
}

TEST_F(PropertyRead, AnExceptionOfTheLibraryIsEmptyAndLogged) {
    fake_serial::willThrowOnRead();
    EXPECT_TRUE(camera.getCommonProperty(15, 2).empty());
    EXPECT_EQ(out.lines().back(),
              "getCommonProperty error3:SerialException device reports readiness to read but "
              "returned no data failed.");
}

TEST_F(PropertyRead, AnyOtherExceptionIsEmptyAndLogged) {
    fake_serial::onWrite([](const auto&) { throw 7; });
    EXPECT_TRUE(camera.getCommonProperty(15, 2).empty());
    EXPECT_EQ(out.lines().back(), "getCommonProperty error3:unknown error");
}

TEST_F(PropertyRead, APayloadOfTwoBytesOrFewerHasNoValue) {
    for (const char* shortAnswer : {"AA 5A 01 02 02 00 00 00 0F 00 00 00", "AA 5A 01 02 01 00 00 00 0F 00 00",
                                    "AA 5A 01 02 00 00 00 00 00 00"}) {
        answer(shortAnswer);
        EXPECT_TRUE(camera.getCommonProperty(15, 2).empty()) << shortAnswer;
    }
}

TEST_F(PropertyRead, LogsTheCountThatTheWriteReported) {
    fake_serial::willWriteOnly(4);
    camera.getCommonProperty(15, 2);
    EXPECT_EQ(out.lines().front(), "serialDataLength:11  write-length:4");
}

TEST_F(PropertyRead, UnparsedGivesExactlyTheBytesRead) {
    answer("33 73 75 63 63 65 73 73");
    EXPECT_EQ(camera.getCommonPropertyWithoutParse(3, 0x0F, 50, 100), bytes("33 73 75 63 63 65 73 73"));
    EXPECT_EQ(out.lines(), (Lines{"serialDataLength:11  write-length:11", "end commonpropertyWithoutParse"}));
    EXPECT_TRUE(camera.getCommonPropertyWithoutParse(3, 0x0F, 50, 100).empty());
    fake_serial::throwOn("write");
    EXPECT_TRUE(camera.getCommonPropertyWithoutParse(3, 0x0F, 50, 100).empty());
}

class Versions : public LinkTest {};

TEST_F(Versions, TextEndsAtItsFirstZeroByte) {
    answer("AA 5A 01 02 09 00 00 00 02 00 31 2E 32 2E 33");
    answer("00 78 24 AE");
    EXPECT_EQ(camera.getAppVersion(), "1.2.3");
}

TEST_F(Versions, OnlyTheSystemVersionReallyWaits) {
    camera.getSystemVersion();
    ASSERT_EQ(clock.pauses().size(), 1U);
    EXPECT_EQ(clock.pauses().front(), std::chrono::milliseconds(100));
    EXPECT_EQ(out.lines().front(), "delay 100ms");
    camera.getQvVersion();
    EXPECT_EQ(clock.pauses().size(), 1U);
    EXPECT_TRUE(out.has("qvversion delay 100ms"));
    EXPECT_EQ(out.lines().back(), "propertyValue error:");
}

/// A property answer with this many value bytes in one long read.
void longAnswer(std::uint8_t command, std::uint8_t id, std::size_t valueBytes) {
    protocol::Bytes payload{id, 0};
    payload.resize(2 + valueBytes, 'v');
    fake_serial::willRead(protocol::buildFrame(command, payload, 1));
}

TEST_F(Versions, AnswersOfUpTo60Or75Or150BytesAreRead) {
    longAnswer(0x02, 2, 48);
    EXPECT_EQ(camera.getAppVersion().size(), 48U);
    longAnswer(0xC2, 0xD4, 63);
    EXPECT_EQ(camera.getQvVersion().size(), 63U);
    longAnswer(0xC2, 0xCC, 138);
    EXPECT_EQ(camera.getModelInfo().size(), 138U);
}

TEST_F(Versions, OneByteBeyondThatIsAFailure) {
    longAnswer(0x02, 2, 49);
    EXPECT_EQ(camera.getAppVersion(), "");
    fake_serial::reset();
    longAnswer(0xC2, 0xD4, 64);
    EXPECT_EQ(camera.getQvVersion(), "");
    fake_serial::reset();
    longAnswer(0xC2, 0xCC, 139);
    EXPECT_EQ(camera.getModelInfo(), "");
}

TEST_F(Versions, RefusedThirdVersionIsEmpty) {
    answer("AA 5A 01 C2 02 00 00 00 D4 01 00 00");
    EXPECT_EQ(camera.getQvVersion(), "");
    EXPECT_EQ(out.lines().back(), "propertyValue error:");
}

class ModelInfo : public LinkTest {};

TEST_F(ModelInfo, IsTextWithItsEndLogged) {
    answer("AA 5A 01 C2 04 00 00 00 CC 00 6D 31 00 00");
    EXPECT_EQ(camera.getModelInfo(), "m1");
    EXPECT_EQ(out.lines(), Lines{"getModel end"});
}

TEST_F(ModelInfo, EachFailureHasItsLine) {
    EXPECT_EQ(camera.getModelInfo(), "");
    answer("AA 5A 01 C2 04 00 00 00 CB 00 6D 31 00 00");
    EXPECT_EQ(camera.getModelInfo(), "");
    answer("AA 5A 01 C2 04 00 00 00 CC 02 6D 31 00 00");
    EXPECT_EQ(camera.getModelInfo(), "");
    EXPECT_EQ(out.lines(),
              (Lines{"getModelInfo checkData error", "getModelInfo id error", "getModelInfo result error"}));
}

class SerialNumber : public LinkTest {};

TEST_F(SerialNumber, IsReadAndLoggedWithItsPayloadLength) {
    answer("AA 5A 01 02 04 00 00 00 03 00 41 31 8A EF");
    EXPECT_EQ(camera.getSn(), "A1");
    EXPECT_EQ(out.lines(), (Lines{"get sn length:4", "sn:A1"}));
}

TEST_F(SerialNumber, KeepsAZeroByteThatTheCameraEchoes) {
    answer("AA 5A 01 02 05 00 00 00 03 00 41 31 00 00 00");
    EXPECT_EQ(camera.getSn(), std::string("A1\0", 3));
}

TEST_F(SerialNumber, FailuresAreEmptyAndLogged) {
    EXPECT_EQ(camera.getSn(), "");
    answer("AA 5A 01 02 04 00 00 00 04 00 41 31 00 00");
    EXPECT_EQ(camera.getSn(), "");
    answer("AA 5A 01 02 04 00 00 00 03 09 41 31 00 00");
    EXPECT_EQ(camera.getSn(), "");
    EXPECT_EQ(out.lines(), (Lines{"getSnFailed", "get sn failed2", "get sn failed2"}));
}

TEST_F(SerialNumber, WriteLogsTextSizeAndBothAnswerBytes) {
    answer("AA 5A 01 03 02 00 00 00 03 00 00 00");
    EXPECT_TRUE(camera.setSn("A1"));
    answer("AA 5A 01 03 02 00 00 00 03 01 00 00");
    EXPECT_FALSE(camera.setSn("A1"));
    EXPECT_FALSE(camera.setSn("A1"));
    EXPECT_EQ(out.lines(),
              (Lines{"toset sn:A1", "str size:2", "set sn flag:3  fg2:0", "toset sn:A1", "str size:2",
                     "set sn flag:3  fg2:1", "toset sn:A1", "str size:2", "setSnFailed"}));
}

class PropertyWrite : public LinkTest {};

TEST_F(PropertyWrite, IsTrueOnlyForResultZero) {
    answer("AA 5A 01 03 02 00 00 00 0F 00 68 AE");
    EXPECT_TRUE(camera.setCommonProperty(15, {30}, 3));
    answer("AA 5A 01 03 02 00 00 00 0F 01 49 BE");
    EXPECT_FALSE(camera.setCommonProperty(15, {30}, 3));
    EXPECT_FALSE(camera.setCommonProperty(15, {30}, 3));
    const std::string before = "setCommonProperty data-length:1  cmd:3  id:15";
    EXPECT_EQ(out.lines(), (Lines{before, "set CommonProperty flag:15  fg2:0", before,
                                  "set CommonProperty flag:15  fg2:1", before, "setSnFailed"}));
}

TEST_F(PropertyWrite, DoesNotExamineIdEchoOrCommand) {
    answer("AA 5A 01 77 02 00 00 00 63 00 00 00");
    EXPECT_TRUE(camera.setCommonProperty(15, {30}, 3));
}

class Restart : public LinkTest {};

TEST_F(Restart, RebootAndResetShareAnswersAndTexts) {
    answer("AA 5A 01 05 01 00 00 00 00 FF FC");
    EXPECT_TRUE(camera.rebootCamera());
    answer("AA 5A 01 04 01 00 00 00 00 5F B9");
    EXPECT_TRUE(camera.resetToFactory());
    EXPECT_EQ(out.lines(), Lines{});
    answer("AA 5A 01 05 01 00 00 00 01 00 00");
    EXPECT_FALSE(camera.rebootCamera());
    answer("AA 5A 01 04 01 00 00 00 02 00 00");
    EXPECT_FALSE(camera.resetToFactory());
    EXPECT_FALSE(camera.rebootCamera());
    EXPECT_FALSE(camera.resetToFactory());
    EXPECT_EQ(out.lines(), (Lines{"reset failed2", "reset failed2", "reset failed", "reset failed"}));
}

} // namespace
