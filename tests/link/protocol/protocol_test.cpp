// Check codes, frames and answer acceptance, against values computed outside the product.
#include "link/protocol/crc16.h"
#include "link/protocol/frame.h"
#include "link/protocol/jsonenvelope.h"
#include "link/protocol/picturerecords.h"
#include "tests/fake/fakeserial.h"

#include <gtest/gtest.h>

using namespace protocol;
using fake_serial::bytes;
using fake_serial::hex;

TEST(CheckCode, XmodemHasItsPublishedCheckValue) {
    EXPECT_EQ(crc16Xmodem(bytesOf("123456789")), 0x31C3);
    EXPECT_EQ(crc16Xmodem({}), 0x0000);
}

TEST(CheckCode, ModbusHasItsPublishedCheckValue) {
    EXPECT_EQ(crc16Modbus(bytesOf("123456789")), 0x4B37);
}

TEST(CheckCode, ModbusOfNothingIsAllOnes) {
    EXPECT_EQ(crc16Modbus({}), 0xFFFF);
}

TEST(Frame, WithoutPayloadIsTenBytes) {
    EXPECT_EQ(hex(buildFrame(0x05, {}, 1)), "AA 5A 01 05 00 00 00 00 BB 68");
}

TEST(Frame, CarriesAPayloadBeyond64Kilobytes) {
    const Bytes frame = buildFrame(0x09, Bytes(70000, 0x11), 1);
    ASSERT_EQ(frame.size(), 70010U);
    EXPECT_EQ(hex(Bytes(frame.begin(), frame.begin() + 8)), "AA 5A 01 09 70 11 01 00");
    EXPECT_TRUE(isWholeAnswer(frame, frameForm));
}

TEST(AnswerForm, TakesExactlyOneFrameAndNoByteMore) {
    Bytes answer = bytes("AA 5A 01 05 01 00 00 00 00 FF FC");
    EXPECT_TRUE(isWholeAnswer(answer, frameForm));
    answer.push_back(0);
    EXPECT_FALSE(isWholeAnswer(answer, frameForm));
    answer.resize(10);
    EXPECT_FALSE(isWholeAnswer(answer, frameForm));
}

TEST(AnswerForm, DoesNotExamineCheckCodeAddressOrCommand) {
    EXPECT_TRUE(isWholeAnswer(bytes("AA 5A 77 99 01 00 00 00 00 00 00"), frameForm));
}

TEST(AnswerForm, RefusesALengthThatWrapsIn32Bits) {
    EXPECT_FALSE(isWholeAnswer(bytes("AA 5A 01 01 FF FF FF FF 00"), frameForm));
}

TEST(AnswerForm, NeverReadsAShortBuffer) {
    for (std::size_t size = 0; size < 9; ++size)
        EXPECT_FALSE(isWholeAnswer(Bytes(size, 0xAA), frameForm)) << size;
}

TEST(Garbage, IsDroppedUpToTheStartBytes) {
    EXPECT_EQ(leadingGarbage(bytes("33 AA 5A 01"), frameForm), 1U);
    EXPECT_EQ(leadingGarbage(bytes("AA 33 AA 5A"), frameForm), 2U);
    EXPECT_EQ(leadingGarbage(bytes("33 44 AA"), frameForm), 2U);
    EXPECT_EQ(leadingGarbage(bytes("33"), frameForm), 0U);
    EXPECT_EQ(leadingGarbage({}, frameForm), 0U);
}

TEST(HeartbeatText, AnswerTextHasNoLeadingZeros) {
    EXPECT_EQ(heartbeatText(bytes("AA 5A EE 01 01 00 00 00 01 75 78")), "AA5A110001");
    EXPECT_TRUE(isHeartbeatAnswer(bytes("AA 5A EE 01 01 00 00 00 01 75 78")));
    EXPECT_TRUE(isHeartbeatAnswer(bytes("AA 5A 01 01 01 00 00 00 01 00 00")));
}

TEST(HeartbeatText, OtherBytesWithTheSameTextAreNoHeartbeat) {
    const Bytes impostor = bytes("AA 5A 01 11 00 00 00 01 00 00");
    EXPECT_EQ(heartbeatText(impostor), "AA5A110001" + std::string());
    EXPECT_FALSE(isHeartbeatAnswer(impostor));
    EXPECT_FALSE(isHeartbeatAnswer(bytes("0A 0A 01 5A 01 01 00 00 00 01 00 00")));
}

TEST(HeartbeatText, RefusesOtherPayloadOtherCommandAndOtherSizes) {
    for (const char* answer : {"AA 5A 01 01 01 00 00 00 00 5E FA", "AA 5A 01 02 01 00 00 00 01 00 00",
                               "AA 5A 01 01 01 00 00 00 01 7F", "AA 5A 01 01 01 00 00 00 01 7F EA 00",
                               "33 AA 5A 01 01 01 00 00 00 01 7F EA", "AA 5A", "AA", ""})
        EXPECT_FALSE(isHeartbeatAnswer(bytes(answer))) << answer;
}

TEST(Records, OneRecordNeeds36And42Bytes) {
    EXPECT_EQ(catalogueRecords(Bytes(36), origin_record::size).size(), 1U);
    EXPECT_EQ(catalogueRecords(Bytes(35), origin_record::size).size(), 0U);
    EXPECT_EQ(catalogueRecords(Bytes(42), v1_record::size).size(), 1U);
    EXPECT_EQ(catalogueRecords(Bytes(41), v1_record::size).size(), 0U);
    EXPECT_EQ(catalogueRecords({}, v1_record::size).size(), 0U);
}

TEST(Records, LeaveOutTheCheckCode) {
    for (std::size_t count = 0; count < 40; ++count) {
        EXPECT_EQ(catalogueRecords(Bytes(11 + 27 * count), origin_record::size).size(), count);
        EXPECT_EQ(catalogueRecords(Bytes(11 + 33 * count), v1_record::size).size(), count);
    }
}

TEST(Records, LeaveOutAPartOfARecord) {
    EXPECT_EQ(catalogueRecords(Bytes(11 + 27 + 20), origin_record::size).size(), 1U);
}

TEST(Records, V1UsesOneLayoutBothWays) {
    const Bytes answer =
        bytes("AA 5A 01 C7 22 00 00 00 01 02 01 03 D7 34 01 07 01 2D 00 F1 53 65 14 00 00 00 15 49 D1 "
              "AA E2 02 14 E0 65 AB 4B 76 AA AC 89 A8 28 87");
    const std::vector<ByteView> records = catalogueRecords(answer, v1_record::size);
    ASSERT_EQ(records.size(), 1U);
    const PictureInfo info = parseV1Record(records.front());
    EXPECT_EQ(info.id, 258);
    EXPECT_EQ(info.date, 20240131U);
    EXPECT_EQ(info.gid, 7);
    EXPECT_EQ(info.triggerType, 1);
    EXPECT_EQ(info.triggerAngle, 45);
    EXPECT_EQ(info.creationTime, 1700000000U);
    EXPECT_EQ(info.fileSize, 20U);
    EXPECT_EQ(paddedHexText(info.digest), "1549d1aae20214e065ab4b76aaac89a8");
    EXPECT_EQ(hex(buildV1Record(info)), hex(records.front().toBytes()));
}

TEST(Records, FirstGenerationUsesOneLayoutBothWays) {
    const Bytes record =
        bytes("05 01 2D 00 F1 53 65 14 00 00 00 15 49 D1 AA E2 02 14 E0 65 AB 4B 76 AA AC 89 A8");
    const PictureInfo info = parseOriginRecord(record);
    EXPECT_EQ(info.id, 5);
    EXPECT_EQ(info.triggerType, 1);
    EXPECT_EQ(info.triggerAngle, 45);
    EXPECT_EQ(info.creationTime, 1700000000U);
    EXPECT_EQ(info.fileSize, 20U);
    EXPECT_EQ(paddedHexText(info.digest), "1549d1aae20214e065ab4b76aaac89a8");
    EXPECT_EQ(hex(buildOriginRecord(info)), hex(record));
}

TEST(Records, APartOfARecordIsRefused) {
    EXPECT_THROW((void)parseOriginRecord(Bytes(10)), ShortAnswer);
    EXPECT_THROW((void)parseV1Record(Bytes(16)), ShortAnswer);
}

TEST(PictureSize, IsFoundByIdAndIsFourOnesOtherwise) {
    const Bytes one =
        bytes("AA 5A 01 07 1C 00 00 00 01 05 01 2D 00 F1 53 65 14 00 00 00 15 49 D1 AA E2 02 14 E0 65 AB "
              "4B 76 AA AC 89 A8 09 03");
    EXPECT_EQ(hex(pictureSizeBytes(one, 5)), "14 00 00 00");
    EXPECT_EQ(hex(pictureSizeBytes(one, 6)), "01 01 01 01");
    EXPECT_EQ(hex(pictureSizeBytes(Bytes(35, 5), 5)), "01 01 01 01");
}

TEST(PictureSize, WalkEndsForCataloguesLongerThanItsIndex) {
    for (const std::size_t count : {10U, 11U, 378U}) {
        const Bytes answer(11 + 27 * count, 0);
        EXPECT_EQ(hex(pictureSizeBytes(answer, 9)), "01 01 01 01") << count;
    }
}

TEST(JsonEnvelope, ChunkRequestsReplaceOnlyTheTwoNumbers) {
    EXPECT_EQ(jsonChunkRequest(0, 500).size(), 111U);
    EXPECT_EQ(jsonChunkRequest(500, 6500).size(), 114U);
    EXPECT_NE(jsonChunkRequest(7000, 1).find(R"("offset":7000,"length":1})"), std::string::npos);
    EXPECT_EQ(jsonPropertyQuery().size(), 50U);
}

TEST(JsonEnvelope, ShortAnswersHaveNoBody) {
    for (std::size_t size = 0; size <= 14; ++size)
        EXPECT_TRUE(jsonBody(Bytes(size, 0x01)).empty()) << size;
    EXPECT_EQ(jsonBody(Bytes(15, 0x01)).size(), 1U);
}

TEST(JsonEnvelope, SizeFollowsTheRulesOfTheStandardConversion) {
    const auto size = [](const char* text) { return jsonPictureSize(bytesOf(text)); };
    EXPECT_EQ(size(R"({"size":7001})"), 7001);
    EXPECT_EQ(size(R"({"size":  12x})"), 12);
    EXPECT_EQ(size(R"({"size":-5})"), -5);
    EXPECT_EQ(size(R"({"size":"x"})"), std::nullopt);
    EXPECT_EQ(size(R"({"size":99999999999})"), std::nullopt);
    EXPECT_EQ(size(R"({"result":0})"), std::nullopt);
}

TEST(JsonEnvelope, PictureDataIsWhatFollowsTheMarker) {
    EXPECT_EQ(jsonPictureData(bytesOf("{}<<BINARY>>abc")).toText(), "abc");
    EXPECT_TRUE(jsonPictureData(bytesOf("{}<<BINARY>")).empty());
    EXPECT_TRUE(jsonPictureData(bytesOf("{}<<BINARY>>")).empty());
}
