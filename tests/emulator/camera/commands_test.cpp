// Every command but pictures, uploads and JSON, with frames computed outside this project.
#include "tests/emulator/camera/camerabench.h"

namespace emulatortest {
namespace {

struct Exchange {
    const char* name;
    const char* request;
    const char* answer;

    friend void PrintTo(const Exchange& row, std::ostream* out) { *out << row.name; }
};

class GoldenExchange : public testing::TestWithParam<Exchange> {};

TEST_P(GoldenExchange, IsAnsweredWithExactlyTheseBytes) {
    CameraBench bench;
    bench.camera.state().serialNumber = "A1";
    bench.camera.state().appVersion = std::string("1.2.3\0x", 7);
    EXPECT_EQ(bench.ask(GetParam().request), hex(GetParam().answer));
    EXPECT_EQ(bench.camera.record().badFrames, 0U);
    ASSERT_EQ(bench.camera.record().frames.size(), 1U);
    EXPECT_EQ(bench.camera.record().frames[0].bytes, hex(GetParam().request));
}

INSTANTIATE_TEST_SUITE_P(
    Commands, GoldenExchange,
    testing::Values(
        Exchange{"heartbeat", heartbeatRequest, heartbeatAnswer},
        Exchange{"appVersion", "AA 5A 01 02 01 00 00 00 02 FC 14",
                 "AA 5A 01 02 09 00 00 00 02 00 31 2E 32 2E 33 00 78 24 AE"},
        Exchange{"serialNumber", getSnRequest, snAnswerA1},
        Exchange{"heaterDuty", "AA 5A 01 02 01 00 00 00 0F 51 C5", "AA 5A 01 02 03 00 00 00 0F 00 1E 69 30"},
        Exchange{"captureAngles", "AA 5A 01 02 01 00 00 00 0A F4 95",
                 "AA 5A 01 02 04 00 00 00 0A 00 1E 3C D1 D3"},
        Exchange{"orientation", "AA 5A 01 02 01 00 00 00 10 8F 26",
                 "AA 5A 01 02 06 00 00 00 10 00 2D 00 00 00 D5 DE"},
        Exchange{"setHeaterDuty", "AA 5A 01 03 02 00 00 00 0F 1E 97 5D",
                 "AA 5A 01 03 02 00 00 00 0F 00 68 AE"},
        Exchange{"reboot", "AA 5A 01 05 00 00 00 00 BB 68", "AA 5A 01 05 01 00 00 00 00 FF FC"},
        Exchange{"factoryReset", "AA 5A 01 04 00 00 00 00 EA C2", "AA 5A 01 04 01 00 00 00 00 5F B9"},
        Exchange{"gyroTestUnframed", "AA 5A 01 0F 01 00 00 00 03 9E 4A", "33 73 75 63 63 65 73 73"},
        Exchange{"doorUnanswered", "AA 5A 01 CD 06 00 00 00 01 C2 B1 A0 65 00 68 70", ""},
        Exchange{"emptyCatalogue", "AA 5A 01 07 00 00 00 00 38 2C", "AA 5A 01 07 01 00 00 00 00 BF 77"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Commands, AddressEeAnswersWithItsOwnAddress) {
    CameraBench bench(CameraType::dorvel);
    EXPECT_EQ(bench.ask("AA 5A EE 01 01 00 00 00 00 54 68"), hex("AA 5A EE 01 01 00 00 00 01 75 78"));
}

TEST(Commands, OtherPropertiesAnswerTheirValues) {
    CameraBench bench;
    CameraState& state = bench.camera.state();
    EXPECT_EQ(bench.ask("AA 5A 01 02 01 00 00 00 06 78 54"),
              protocol::buildFrame(0x02, Bytes{6, 0, state.properties[6][0]}, 1));
    state.systemVersion = "9.9";
    EXPECT_EQ(bench.ask("AA 5A 01 02 01 00 00 00 15 2A 76"),
              protocol::buildFrame(0x02, hex("15 00 39 2E 39"), 1));
    state.qvVersion = "q";
    EXPECT_EQ(bench.ask("AA 5A 01 C2 01 00 00 00 D4 77 01"), protocol::buildFrame(0xC2, hex("D4 00 71"), 1));
    state.modelInfo = "m1";
    EXPECT_EQ(bench.ask("AA 5A 01 C2 01 00 00 00 CC 4E 92"),
              protocol::buildFrame(0xC2, hex("CC 00 6D 31"), 1));
}

TEST(Commands, AnUnknownPropertyIsAnsweredWithResultOne) {
    CameraBench bench;
    bench.camera.state().properties.erase(property::heaterDuty);
    EXPECT_EQ(bench.ask("AA 5A 01 02 01 00 00 00 0F 51 C5"), hex("AA 5A 01 02 02 00 00 00 0F 01 28 06"));
    EXPECT_EQ(bench.askFrame(0xC2, {0x01}), protocol::buildFrame(0xC2, hex("01 01"), 1));
}

TEST(Commands, WrittenPropertiesAreReadBack) {
    CameraBench bench;
    bench.ask("AA 5A 01 03 03 00 00 00 0A 1E 3C 16 B8");
    EXPECT_EQ(bench.camera.state().properties[10], (Bytes{30, 60}));
    bench.ask("AA 5A 01 03 02 00 00 00 06 2C 1E F1");
    EXPECT_EQ(bench.camera.state().properties[6], Bytes{44});
    bench.ask("AA 5A 01 03 02 00 00 00 0D 00 0A C8");
    EXPECT_EQ(bench.camera.state().properties[13], Bytes{0});
}

TEST(Commands, RefusedAndReadOnlyPropertiesKeepTheirValue) {
    CameraBench bench;
    bench.camera.settings().refusedProperties = {15};
    EXPECT_EQ(bench.ask("AA 5A 01 03 02 00 00 00 0F 28 02 0B"), hex("AA 5A 01 03 02 00 00 00 0F 01 49 BE"));
    EXPECT_EQ(bench.camera.state().properties[15], Bytes{30});
    EXPECT_EQ(bench.askFrame(0x03, {12, 7}), protocol::buildFrame(0x03, hex("0C 01"), 1));
    EXPECT_EQ(bench.askFrame(0x03, {0x63, 7}), protocol::buildFrame(0x03, hex("63 01"), 1));
}

TEST(Commands, TheSerialNumberEndsAtTheZeroByte) {
    CameraBench bench;
    bench.ask("AA 5A 01 03 12 00 00 00 03 30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66 00 AB 6A");
    EXPECT_EQ(bench.camera.state().serialNumber, "0123456789abcdef");
    bench.ask("AA 5A 01 03 04 00 00 00 03 41 31 00 1F 00");
    EXPECT_EQ(bench.camera.state().serialNumber, "A1");
    bench.ask("AA 5A 01 03 02 00 00 00 03 00 05 EB");
    EXPECT_EQ(bench.camera.state().serialNumber, "");
}

class Orientation : public testing::Test {
protected:
    Bytes read(Time wait) { return bench.ask("AA 5A 01 02 01 00 00 00 10 8F 26", wait); }
    static Bytes answer(std::uint32_t value) {
        Bytes payload = {16, 0};
        protocol::put(payload, protocol::Field<std::uint32_t>{2}, value);
        return protocol::buildFrame(0x02, payload, 1);
    }
    CameraBench bench;
};

TEST_F(Orientation, TakesTheFourQuantitiesInTurn) {
    for (const std::uint32_t value : {45U, 3U, 120U, 981U, 45U})
        EXPECT_EQ(read(100ms), answer(value));
}

TEST_F(Orientation, BeginsAgainAfterTwoSecondsWithoutARead) {
    read(100ms);
    read(2100ms);
    EXPECT_EQ(read(100ms), answer(45));
}

TEST_F(Orientation, CanReportNoValueAndTooFewBytes) {
    bench.camera.state().orientation[0].answer = OrientationItem::Answer::sentinel;
    bench.camera.state().orientation[1].answer = OrientationItem::Answer::tooShort;
    EXPECT_EQ(read(100ms), hex("AA 5A 01 02 06 00 00 00 10 00 00 FF FF 7F F9 93"));
    EXPECT_EQ(read(100ms), protocol::buildFrame(0x02, hex("10 00 03 00 00"), 1));
}

TEST(Power, CameraIsSilentWhileItRestarts) {
    CameraBench bench;
    bench.camera.settings().rebootTime = 3s;
    bench.ask("AA 5A 01 05 00 00 00 00 BB 68", 500ms);
    EXPECT_TRUE(bench.camera.booting(bench.now));
    EXPECT_EQ(bench.ask(heartbeatRequest, 2s), Bytes());
    EXPECT_FALSE(bench.camera.record().frames.back().heard);
    bench.listen(1s);
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
}

TEST(Power, FactoryResetTakesTenSeconds) {
    CameraBench bench;
    bench.camera.state().properties[15] = {60};
    bench.camera.state().pictures.push_back(makePicture(5, Bytes{1}));
    bench.ask("AA 5A 01 04 00 00 00 00 EA C2", 9s);
    EXPECT_EQ(bench.camera.state().properties[15], Bytes{30});
    EXPECT_TRUE(bench.camera.state().pictures.empty());
    EXPECT_TRUE(bench.camera.booting(bench.now));
    bench.listen(2s);
    EXPECT_FALSE(bench.camera.booting(bench.now));
}

TEST(Door, EventsAreKeptWithTimeAndNumber) {
    CameraBench bench;
    bench.ask("AA 5A 01 CD 06 00 00 00 01 C2 B1 A0 65 00 68 70");
    bench.ask("AA 5A 01 CD 06 00 00 00 00 C2 B1 A0 65 01 E9 25");
    bench.ask("AA 5A 01 CD 06 00 00 00 01 C2 B1 A0 65 FF 98 6E");
    const std::vector<DoorEvent>& log = bench.camera.state().doorLog;
    ASSERT_EQ(log.size(), 3U);
    EXPECT_TRUE(log[0].open);
    EXPECT_FALSE(log[1].open);
    EXPECT_EQ(log[1].time, 0x65A0B1C2U);
    EXPECT_TRUE(log[1].sequenceRight);
    EXPECT_FALSE(log[2].sequenceRight);
}

TEST(Door, CanBeAnsweredWithAFrame) {
    CameraBench bench;
    bench.camera.settings().answersDoor = true;
    EXPECT_EQ(bench.ask("AA 5A 01 CD 06 00 00 00 01 C2 B1 A0 65 00 68 70"),
              protocol::buildFrame(0xCD, {{0}}, 1));
}

TEST(Line, ForeignAddressesAreRecordedAndNotAnswered) {
    CameraBench bench;
    EXPECT_EQ(bench.ask("AA 5A 02 01 01 00 00 00 00 DC 22"), Bytes());
    EXPECT_EQ(bench.camera.record().foreignFrames, 1U);
    bench.camera.settings().answersAllAddresses = true;
    EXPECT_EQ(bench.ask("AA 5A EE 01 01 00 00 00 00 54 68"), hex("AA 5A EE 01 01 00 00 00 01 75 78"));
    EXPECT_EQ(bench.camera.record().foreignFrames, 1U);
}

TEST(Line, AWrongCheckCodeIsABadFrame) {
    CameraBench bench;
    EXPECT_EQ(bench.ask("AA 5A 01 01 01 00 00 00 00 5E FB"), Bytes());
    EXPECT_EQ(bench.camera.record().badFrames, 1U);
    EXPECT_FALSE(bench.camera.record().frames.at(0).wellFormed);
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
}

TEST(Line, FindsTheNextFrameAfterAnImpossibleLength) {
    CameraBench bench;
    EXPECT_EQ(bench.ask(std::string("AA 5A 01 01 FF FF FF FF") + heartbeatRequest), hex(heartbeatAnswer));
    EXPECT_EQ(bench.camera.record().badFrames, 1U);
}

TEST(Line, GarbageBeforeAFrameIsSkippedAndCounted) {
    CameraBench bench;
    EXPECT_EQ(bench.ask(std::string("33 AA 33") + heartbeatRequest), hex(heartbeatAnswer));
    EXPECT_EQ(bench.camera.record().garbageBytes, 3U);
    EXPECT_EQ(bench.camera.record().byteCount, 14U);
}

TEST(Line, AFrameMayComeByteByByte) {
    CameraBench bench;
    Bytes answer;
    for (const std::uint8_t byte : hex(heartbeatRequest))
        protocol::append(answer, bench.ask(Bytes{byte}, 20ms));
    EXPECT_EQ(answer, hex(heartbeatAnswer));
    EXPECT_EQ(bench.camera.record().chunks.size(), 11U);
}

TEST(Line, AFrameThatBreaksOffDoesNotSpoilTheNext) {
    CameraBench bench;
    EXPECT_EQ(bench.ask("AA 5A 01 01 01 00", 2s), Bytes());
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
    EXPECT_EQ(bench.camera.record().badFrames, 1U);
}

TEST(Line, HearsNothingAtAWrongRateIfConfigured) {
    CameraBench bench;
    bench.camera.setLineSpeed(9600);
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
    bench.camera.settings().mindsBaudRate = true;
    EXPECT_EQ(bench.ask(heartbeatRequest), Bytes());
    bench.camera.setLineSpeed(460800);
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
}

TEST(Line, AnswersComeAfterTheSetDelayOfTheirCommand) {
    CameraBench bench;
    bench.camera.settings().answerDelay = 20ms;
    bench.camera.settings().commandDelays[0x02] = 300ms;
    bench.camera.receive(hex(heartbeatRequest), bench.now);
    EXPECT_EQ(bench.camera.nextDue(), bench.now + 20ms);
    bench.listen(100ms);
    bench.camera.receive(hex(getSnRequest), bench.now);
    EXPECT_EQ(bench.camera.nextDue(), bench.now + 300ms);
    EXPECT_EQ(bench.camera.takeDue(bench.now + 299ms), Bytes());
    EXPECT_FALSE(bench.camera.takeDue(bench.now + 300ms).empty());
}

TEST(Line, EveryRequestAndAnswerIsToldInWords) {
    CameraBench bench;
    bench.ask(heartbeatRequest);
    ASSERT_EQ(bench.events.size(), 2U);
    EXPECT_EQ(bench.events[0].text, "heartbeat (01, address 0x01): 00");
    EXPECT_EQ(bench.events[0].kind, Event::Kind::received);
    EXPECT_EQ(bench.events[1].text, "payload 01, 11 bytes after 8 ms");
    EXPECT_EQ(bench.events[1].kind, Event::Kind::answered);
}

struct TypeRow {
    CameraType type;
    std::uint8_t address;
    std::uint32_t baudRate;
    bool properties, firstPictures, v1Pictures, appUpdate, appUpdateV1, json;

    friend void PrintTo(const TypeRow& row, std::ostream* out) {
        *out << "type " << static_cast<std::uint32_t>(row.type);
    }
};

class Types : public testing::TestWithParam<TypeRow> {};

TEST_P(Types, KnowTheirOwnCommandsOnly) {
    const TypeRow& row = GetParam();
    const auto answers = [&row](std::uint8_t code, const Bytes& payload) {
        CameraBench bench(row.type);
        return !bench.askFrame(code, payload).empty();
    };
    EXPECT_TRUE(answers(0x01, {0}));
    EXPECT_EQ(answers(0x02, {15}), row.properties);
    EXPECT_EQ(answers(0x03, {15, 30}), row.properties);
    EXPECT_EQ(answers(0xC2, {0xCC}), row.properties);
    EXPECT_EQ(answers(0x0F, {3}), row.properties);
    EXPECT_TRUE(answers(0x04, {}));
    EXPECT_TRUE(answers(0x05, {}));
    EXPECT_EQ(answers(0x06, {}), row.firstPictures);
    EXPECT_EQ(answers(0x07, {}), row.firstPictures);
    EXPECT_EQ(answers(0x08, {0xFF}), row.firstPictures);
    EXPECT_EQ(answers(0xC6, {}), row.v1Pictures);
    EXPECT_EQ(answers(0xC7, {}), row.v1Pictures);
    EXPECT_EQ(answers(0xC8, {0xFF, 0xFF}), row.v1Pictures);
    EXPECT_EQ(answers(0x1B, Bytes(20)), row.appUpdate);
    EXPECT_TRUE(answers(0x0B, Bytes(20)));
    EXPECT_TRUE(answers(0xCB, Bytes(21)));
    EXPECT_EQ(answers(0x1D, Bytes(22)), row.appUpdateV1);
    EXPECT_EQ(answers(0x1E, Bytes(8)), row.appUpdateV1);
    EXPECT_FALSE(answers(0x77, {}));
    EXPECT_EQ(!CameraBench(row.type).ask(jsonPropertyQuery).empty(), row.json);
}

TEST_P(Types, HaveTheirOwnAddressAndRate) {
    const CameraSettings settings = settingsForType(GetParam().type);
    EXPECT_EQ(settings.address, GetParam().address);
    EXPECT_EQ(settings.baudRate, GetParam().baudRate);
}

INSTANTIATE_TEST_SUITE_P(
    All, Types,
    testing::Values(TypeRow{CameraType::ostra, 1, 460800, true, true, false, true, false, false},
                    TypeRow{CameraType::dorvel, 0xEE, 460800, true, true, false, true, false, false},
                    TypeRow{CameraType::salesStatic, 1, 460800, true, true, false, true, false, false},
                    TypeRow{CameraType::quenta, 3, 230400, false, false, false, true, false, true},
                    TypeRow{CameraType::salesDynamic, 2, 460800, true, false, true, false, true, false}));

TEST(Types, CanBeMadeToAnswerEveryGeneration) {
    CameraBench bench;
    bench.camera.settings().answersEveryGeneration = true;
    EXPECT_FALSE(bench.askFrame(0xC7, {}).empty());
    EXPECT_FALSE(bench.askFrame(0x07, {}).empty());
}

TEST(Types, TheHeartbeatCanBeSwitchedOff) {
    CameraBench bench(CameraType::quenta);
    EXPECT_FALSE(bench.ask("AA 5A 03 01 01 00 00 00 00 BD 9A").empty());
    bench.camera.settings().answersHeartbeat = false;
    EXPECT_TRUE(bench.ask("AA 5A 03 01 01 00 00 00 00 BD 9A").empty());
}

} // namespace
} // namespace emulatortest
