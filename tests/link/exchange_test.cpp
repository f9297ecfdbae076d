// Every request: bytes, library calls, reads of a missing answer.
#include "tests/link/linktest.h"

#include <functional>

namespace {

struct ExchangeCase {
    const char* name;
    std::function<void(CameraSp&)> send;
    Lines calls;
};

void PrintTo(const ExchangeCase& exchange, std::ostream* out) {
    *out << exchange.name;
}

std::string written(const std::string& hexText) {
    return "write " + hexText;
}

const std::vector<ExchangeCase>& unanswered() {
    static const std::vector<ExchangeCase> cases{
        {"heartbeat",
         [](CameraSp& c) { c.testHeartBeat(); },
         {timeouts(200), "flushInput", "flush", written("AA 5A 01 01 01 00 00 00 00 5E FA"), "read 100"}},
        {"getSn", [](CameraSp& c) { c.getSn(); },
         Lines{timeouts(50), "flush", written("AA 5A 01 02 01 00 00 00 03 DD 04")} + times(10, "read 100")},
        {"setSnLong", [](CameraSp& c) { c.setSn("0123456789abcdef"); },
         Lines{
             timeouts(50), "flush",
             written("AA 5A 01 03 12 00 00 00 03 30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66 00 AB 6A")} +
             times(10, "read 100")},
        {"setSn", [](CameraSp& c) { c.setSn("A1"); },
         Lines{timeouts(50), "flush", written("AA 5A 01 03 04 00 00 00 03 41 31 00 1F 00")} +
             times(10, "read 100")},
        {"setSnEmpty", [](CameraSp& c) { c.setSn(""); },
         Lines{timeouts(50), "flush", written("AA 5A 01 03 02 00 00 00 03 00 05 EB")} +
             times(10, "read 100")},
        {"resetToFactory", [](CameraSp& c) { c.resetToFactory(); },
         Lines{timeouts(50), "flush", written("AA 5A 01 04 00 00 00 00 EA C2")} + times(10, "read 100")},
        {"rebootCamera", [](CameraSp& c) { c.rebootCamera(); },
         Lines{timeouts(50), "flush", written("AA 5A 01 05 00 00 00 00 BB 68")} + times(10, "read 100")},
        {"getAppVersion", [](CameraSp& c) { c.getAppVersion(); },
         Lines{timeouts(50), written("AA 5A 01 02 01 00 00 00 02 FC 14")} + times(4, "read 15")},
        {"getSystemVersion", [](CameraSp& c) { c.getSystemVersion(); },
         Lines{timeouts(50), written("AA 5A 01 02 01 00 00 00 15 2A 76")} + times(4, "read 15")},
        {"getQvVersion", [](CameraSp& c) { c.getQvVersion(); },
         Lines{timeouts(50), written("AA 5A 01 C2 01 00 00 00 D4 77 01")} + times(5, "read 15")},
        {"getModelInfo", [](CameraSp& c) { c.getModelInfo(); },
         Lines{timeouts(50), written("AA 5A 01 C2 01 00 00 00 CC 4E 92")} + times(10, "read 15")},
        {"gyro",
         [](CameraSp& c) { c.getCommonPropertyWithoutParse(3, 0x0F, 50, 100); },
         {timeouts(50), written("AA 5A 01 0F 01 00 00 00 03 9E 4A"), "read 100"}},
        {"rawOfAnotherSizeAndTime",
         [](CameraSp& c) { c.getCommonPropertyWithoutParse(3, 0x0F, 777, 33); },
         {timeouts(777), written("AA 5A 01 0F 01 00 00 00 03 9E 4A"), "read 33"}},
        {"setHeater", [](CameraSp& c) { c.setCommonProperty(15, {30}, 3); },
         Lines{timeouts(50), "flush", written("AA 5A 01 03 02 00 00 00 0F 1E 97 5D")} +
             times(10, "read 100")},
        {"setAngles",
         [](CameraSp& c) {
             c.setCommonProperty(10, {30, 60}, 3);
         },
         Lines{timeouts(50), "flush", written("AA 5A 01 03 03 00 00 00 0A 1E 3C 16 B8")} +
             times(10, "read 100")},
        {"originCapture", [](CameraSp& c) { c.originCapture(); },
         Lines{timeouts(1000), "flush", written("AA 5A 01 06 00 00 00 00 69 86")} + times(10, "read 512")},
        {"getOriginPicInfos", [](CameraSp& c) { c.getOriginPicInfos(); },
         Lines{timeouts(50), "flush", written("AA 5A 01 07 00 00 00 00 38 2C")} + times(10, "read 1024")},
        {"delOriginPicAll", [](CameraSp& c) { c.delOriginPic(0xFF); },
         Lines{"flush", written("AA 5A 01 08 01 00 00 00 FF 4C AC")} + times(10, "read 512")},
        {"delOriginPic", [](CameraSp& c) { c.delOriginPic(5); },
         Lines{"flush", written("AA 5A 01 08 01 00 00 00 05 19 E2")} + times(10, "read 512")},
        {"captureV1", [](CameraSp& c) { c.captureV1(); },
         Lines{"flush", written("AA 5A 01 C6 00 00 00 00 D1 B5")} + times(10, "read 512")},
        {"getPicInfosV1", [](CameraSp& c) { c.getPicInfosV1(); },
         Lines{timeouts(1000), "flushInput", "flush", written("AA 5A 01 C7 00 00 00 00 80 1F")} +
             times(50, "read 1024")},
        {"delPicV1OfId255", [](CameraSp& c) { c.delPicV1(255, 0, 0); },
         Lines{"flush", written("AA 5A 01 C8 07 00 00 00 FF 00 00 00 00 00 00 9D F6")} +
             times(10, "read 512")},
        {"delPicV1All", [](CameraSp& c) { c.delPicV1(0xFFFF, 12, 3); },
         Lines{"flush", written("AA 5A 01 C8 02 00 00 00 FF FF 63 9E")} + times(10, "read 512")},
        {"delPicV1", [](CameraSp& c) { c.delPicV1(258, 20240131, 7); },
         Lines{"flush", written("AA 5A 01 C8 07 00 00 00 02 01 03 D7 34 01 07 E0 3B")} +
             times(10, "read 512")},
    };
    return cases;
}

class Unanswered : public LinkTest, public testing::WithParamInterface<ExchangeCase> {};

TEST_P(Unanswered, RequestMakesExactlyTheseLibraryCalls) {
    GetParam().send(camera);
    EXPECT_EQ(calls(), GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(EveryRequest, Unanswered, testing::ValuesIn(unanswered()),
                         [](const auto& test) { return std::string(test.param.name); });

class Properties : public LinkTest {};

TEST_F(Properties, EachIdHasItsOwnReadRequest) {
    const std::vector<std::pair<std::uint8_t, const char*>> requests{
        {6, "AA 5A 01 02 01 00 00 00 06 78 54"},  {10, "AA 5A 01 02 01 00 00 00 0A F4 95"},
        {11, "AA 5A 01 02 01 00 00 00 0B D5 85"}, {12, "AA 5A 01 02 01 00 00 00 0C 32 F5"},
        {13, "AA 5A 01 02 01 00 00 00 0D 13 E5"}, {15, "AA 5A 01 02 01 00 00 00 0F 51 C5"},
        {16, "AA 5A 01 02 01 00 00 00 10 8F 26"}};
    for (const auto& [id, request] : requests) {
        camera.getCommonProperty(id, 2);
        EXPECT_EQ(hex(fake_serial::writes().back()), request);
    }
}

TEST_F(Properties, EachValueHasItsOwnWriteRequest) {
    struct Row {
        std::uint8_t id;
        std::vector<std::uint8_t> value;
        const char* request;
    };
    const std::vector<Row> rows{{15, {40}, "AA 5A 01 03 02 00 00 00 0F 28 02 0B"},
                                {15, {50}, "AA 5A 01 03 02 00 00 00 0F 32 79 B8"},
                                {15, {60}, "AA 5A 01 03 02 00 00 00 0F 3C B7 59"},
                                {6, {85}, "AA 5A 01 03 02 00 00 00 06 55 A0 1E"},
                                {6, {44}, "AA 5A 01 03 02 00 00 00 06 2C 1E F1"},
                                {6, {255}, "AA 5A 01 03 02 00 00 00 06 FF 00 0A"},
                                {6, {0}, "AA 5A 01 03 02 00 00 00 06 00 F0 14"},
                                {10, {44, 0}, "AA 5A 01 03 03 00 00 00 0A 2C 00 3E 2C"},
                                {11, {1}, "AA 5A 01 03 02 00 00 00 0B 01 8D 72"},
                                {11, {0}, "AA 5A 01 03 02 00 00 00 0B 00 AC 62"},
                                {13, {1}, "AA 5A 01 03 02 00 00 00 0D 01 2B D8"},
                                {13, {0}, "AA 5A 01 03 02 00 00 00 0D 00 0A C8"}};
    for (const Row& row : rows) {
        camera.setCommonProperty(row.id, row.value, 3);
        EXPECT_EQ(hex(fake_serial::writes().back()), row.request);
    }
}

class Address : public LinkTest {};

TEST_F(Address, IsTheLowByteOfTheNumber) {
    const std::vector<std::pair<std::int32_t, const char*>> heartbeats{
        {2, "AA 5A 02 01 01 00 00 00 00 DC 22"},
        {3, "AA 5A 03 01 01 00 00 00 00 BD 9A"},
        {0xEE, "AA 5A EE 01 01 00 00 00 00 54 68"},
        {0x1EE, "AA 5A EE 01 01 00 00 00 00 54 68"}};
    for (const auto& [address, request] : heartbeats) {
        camera.setSlaveAddress(address);
        camera.testHeartBeat();
        EXPECT_EQ(hex(fake_serial::writes().back()), request);
    }
    camera.setSlaveAddress(-1);
    camera.rebootCamera();
    EXPECT_EQ(fake_serial::writes().back()[2], 0xFF);
}

TEST_F(Address, IsInRebootAndSerialNumberRequests) {
    camera.setSlaveAddress(0xEE);
    camera.rebootCamera();
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A EE 05 00 00 00 00 80 26");
    camera.getSn();
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A EE 02 01 00 00 00 03 D7 96");
}

TEST_F(Address, SetterSendsNothing) {
    camera.setSlaveAddress(7);
    camera.setOriginPicCmdExtraAdd(250);
    EXPECT_EQ(calls(), Lines{});
}

class PictureOffset : public LinkTest {};

TEST_F(PictureOffset, WrapsTheFourFirstGenerationCodes) {
    camera.setOriginPicCmdExtraAdd(0xFA);
    camera.originCapture();
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A 01 00 00 00 00 00 EC 4B");
    camera.getOriginPicInfos();
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A 01 01 00 00 00 00 BD E1");
    camera.delOriginPic(0xFF);
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A 01 02 01 00 00 00 FF 4E 2A");
    fake_serial::willRead(std::vector<std::uint8_t>(12345 + 11));
    camera.getOriginTargetPic(5, 12345);
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A 01 03 09 00 00 00 05 00 00 00 00 39 30 00 00 81 94");
    std::remove("5.jpg");
}

TEST_F(PictureOffset, SendsTheNextCodeForOne) {
    camera.setOriginPicCmdExtraAdd(1);
    camera.originCapture();
    EXPECT_EQ(hex(fake_serial::writes().back()), "AA 5A 01 07 00 00 00 00 38 2C");
}

class KeptTimeouts : public LinkTest {};

TEST_F(KeptTimeouts, AreKeptByDeletion) {
    camera.delOriginPic(1);
    camera.testHeartBeat();
    camera.delOriginPic(1);
    EXPECT_EQ(fake_serial::count("setTimeout"), 1);
    EXPECT_EQ(fake_serial::calls().front(), "open COM9 460800 4294967295,50,0,50,0 8N1");
}

class Door : public LinkTest {};

TEST_F(Door, SendsItsSequenceNumberWithoutReading) {
    for (int i = 0; i < 257; ++i)
        camera.opDoor(i % 2 == 0);
    EXPECT_EQ(fake_serial::count("read"), 0);
    const std::vector<fake_serial::Bytes> frames = fake_serial::writes();
    ASSERT_EQ(frames.size(), 257U);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        ASSERT_EQ(frames[i].size(), 16U);
        EXPECT_EQ(frames[i][8], i % 2 == 0 ? 1 : 0);
        EXPECT_EQ(frames[i][13], i % 256);
    }
    EXPECT_EQ(Lines({calls()[0], calls()[1]}), (Lines{timeouts(50), "flush"}));
}

TEST_F(Door, TimeIsTheSecondsSinceTheEpoch) {
    const auto before = static_cast<std::uint64_t>(std::time(nullptr));
    camera.opDoor(true);
    const auto after = static_cast<std::uint64_t>(std::time(nullptr));
    const std::uint32_t sent =
        protocol::ByteView(fake_serial::writes().back()).get(protocol::Field<std::uint32_t>{9});
    EXPECT_GE(sent, static_cast<std::uint32_t>(before & 0xFFFFFFFFU));
    EXPECT_LE(sent, static_cast<std::uint32_t>(after & 0xFFFFFFFFU));
}

TEST_F(Door, ANewClientStartsAgainAtZero) {
    camera.opDoor(true);
    CameraSp another("COM9", 460800);
    another.opDoor(true);
    EXPECT_EQ(fake_serial::writes().back()[13], 0);
}

class Acceptance : public LinkTest {};

TEST_F(Acceptance, AcceptsASplitAnswerOnceItIsComplete) {
    answer("AA 5A 01 05 01");
    fake_serial::willTimeOut();
    answer("00 00 00 00 FF FC");
    EXPECT_TRUE(camera.rebootCamera());
    EXPECT_EQ(fake_serial::count("read"), 3);
}

TEST_F(Acceptance, OneByteTooManyFailsAfterAllTries) {
    answer("AA 5A 01 05 01 00 00 00 00 FF FC 00");
    EXPECT_FALSE(camera.rebootCamera());
    EXPECT_EQ(fake_serial::count("read"), 10);
    EXPECT_TRUE(out.has("reset failed"));
}

TEST_F(Acceptance, TwoAnswersInOneReadAreNeverAccepted) {
    answer("AA 5A 01 05 01 00 00 00 00 FF FC AA 5A 01 05 01 00 00 00 00 FF FC");
    EXPECT_FALSE(camera.rebootCamera());
}

TEST_F(Acceptance, GarbageIsLoggedByteByByteInDecimal) {
    answer("33 AA 33");
    answer("AA 5A 01 05 01 00 00 00 00 FF FC");
    std::cout << std::hex;
    EXPECT_TRUE(camera.rebootCamera());
    EXPECT_EQ(out.lines(), (Lines{"check data51", "check data170", "check data51"}));
}

TEST_F(Acceptance, ALoneByteIsKeptAndReadFurther) {
    answer("33");
    answer("AA");
    answer("5A 01 05 01 00 00 00 00 FF FC");
    EXPECT_TRUE(camera.rebootCamera());
    EXPECT_EQ(out.lines(), (Lines{"check data51"}));
}

TEST_F(Acceptance, IgnoresCheckCodeAddressAndCommand) {
    answer("AA 5A 77 99 01 00 00 00 00 00 00");
    EXPECT_TRUE(camera.rebootCamera());
}

TEST_F(Acceptance, AnEmptyPayloadIsReadByFrameIndex) {
    answer("AA 5A 01 05 00 00 00 00 00 00");
    EXPECT_TRUE(camera.rebootCamera());
}

} // namespace
