// The JSON camera, with envelopes computed outside this project.
#include "link/protocol/crc16.h"
#include "link/protocol/jsonenvelope.h"
#include "tests/emulator/camera/camerabench.h"

namespace emulatortest {
namespace {

const char* const firstChunk = "01 17 00 00 00 00 00 00 00 00 00 77 FD FC FB FA 64 00 6F 00 7B 22 74 69 6D "
                               "65 73 74 61 6D 70 22 3A 30 2C 22 "
                               "73 65 71 4E 75 6D 22 3A 30 2C 22 63 6D 64 54 79 70 65 22 3A 31 35 36 2C 22 "
                               "73 75 62 54 79 70 65 22 3A 30 2C "
                               "22 69 6E 66 6F 22 3A 7B 22 6F 70 65 6E 5F 63 6F 75 6E 74 22 3A 31 30 2C 22 "
                               "61 6E 67 6C 65 22 3A 39 2C 22 6F "
                               "66 66 73 65 74 22 3A 30 2C 22 6C 65 6E 67 74 68 22 3A 35 30 30 7D 7D B9 25";

class JsonCamera : public testing::Test {
protected:
    Bytes askText(const std::string& text) { return bench.ask(protocol::buildJsonRequest(text)); }
    Bytes body(const Bytes& answer) { return protocol::jsonBody(answer).toBytes(); }
    std::string text(const Bytes& answer) { return protocol::jsonBody(answer).toText(); }
    CameraBench bench{CameraType::quenta};
};

TEST_F(JsonCamera, AnswersThePropertyQueryByteForByte) {
    EXPECT_EQ(
        bench.ask(jsonPropertyQuery),
        hex("01 17 00 26 FD FC FB FA 64 00 1E 00 7B 22 72 65 73 75 6C 74 22 3A 30 2C 22 76 65 72 73 69 6F "
            "6E 22 3A 22 31 2E 30 2E 33 22 7D C5 05"));
    ASSERT_EQ(bench.camera.record().frames.size(), 1U);
    EXPECT_TRUE(bench.camera.record().frames[0].json);
}

TEST_F(JsonCamera, AnswersThePictureByteForByte) {
    bench.camera.state().jsonPicture = hex("FF D8 FF");
    EXPECT_EQ(
        bench.ask(firstChunk),
        hex("01 17 00 2A FD FC FB FA 64 00 22 00 7B 22 72 65 73 75 6C 74 22 3A 30 2C 22 73 69 7A 65 22 3A "
            "33 7D 3C 3C 42 49 4E 41 52 59 3E 3E FF D8 FF 4E 3C"));
}

class JsonTotals : public testing::TestWithParam<std::size_t> {};

TEST_P(JsonTotals, AreServedPieceByPiece) {
    CameraBench bench(CameraType::quenta);
    const Bytes picture = countingBytes(GetParam());
    bench.camera.state().jsonPicture = picture;
    const Bytes first = bench.ask(firstChunk);
    EXPECT_EQ(protocol::jsonPictureSize(protocol::jsonBody(first)), static_cast<int>(picture.size()));
    Bytes data = protocol::jsonPictureData(protocol::jsonBody(first)).toBytes();
    for (std::size_t offset = 500; offset < picture.size(); offset += 6500) {
        const auto length = static_cast<std::int64_t>(std::min<std::size_t>(6500, picture.size() - offset));
        const Bytes answer = bench.ask(protocol::buildJsonRequest(
            protocol::jsonChunkRequest(static_cast<std::int64_t>(offset), length)));
        protocol::append(data, protocol::jsonPictureData(protocol::jsonBody(answer)));
    }
    EXPECT_EQ(data, picture);
    EXPECT_EQ(bench.camera.record().badFrames, 0U);
}

INSTANTIATE_TEST_SUITE_P(All, JsonTotals, testing::Values(0, 3, 500, 501, 7000, 7001, 60000));

TEST_F(JsonCamera, DrawsANewPictureForEveryFirstPiece) {
    const Bytes first = bench.ask(firstChunk);
    const Bytes second = bench.ask(firstChunk);
    EXPECT_GT(protocol::jsonPictureSize(protocol::jsonBody(first)), 10000);
    EXPECT_NE(body(first), body(second));
}

TEST_F(JsonCamera, ChecksTheEnvelopeStrictly) {
    Bytes request = hex(firstChunk);
    request.back() ^= 1;
    EXPECT_TRUE(bench.ask(request).empty());
    request = hex(firstChunk);
    request[11] = 0x78; // the count
    const std::size_t covered = request.size() - 2;
    protocol::put(request, protocol::Field<std::uint16_t>{covered},
                  protocol::crc16Modbus(ByteView(request).range(0, covered)));
    EXPECT_TRUE(bench.ask(request).empty());
    EXPECT_EQ(bench.camera.record().badFrames, 2U);
    EXPECT_FALSE(bench.ask(firstChunk).empty());
}

TEST_F(JsonCamera, AnswersResultOneToWhatItDoesNotUnderstand) {
    EXPECT_EQ(text(askText("{}")), R"({"result":1})");
    EXPECT_EQ(text(askText("not json")), R"({"result":1})");
    EXPECT_EQ(text(askText(R"({"cmdType":156,"info":{"offset":-1,"length":5}})")), R"({"result":1})");
}

TEST_F(JsonCamera, ThePropertyTextCanBeSet) {
    bench.camera.state().jsonPropertyText = R"({"result":{"version":"7"}})";
    EXPECT_EQ(text(bench.ask(jsonPropertyQuery)), R"({"result":{"version":"7"}})");
}

TEST_F(JsonCamera, IsSilentToPictureAndPropertyFrames) {
    for (const std::uint8_t code : hex("02 03 06 07 08 09 C2 C6 C7 C8 C9"))
        EXPECT_TRUE(bench.askFrame(code, {2}).empty()) << int(code);
}

TEST_F(JsonCamera, FaultsSpoilThePictureAnswer) {
    const auto struck = [this](const char* fault) {
        bench.camera.faults().clear();
        bench.camera.addFault(fault);
        bench.camera.state().jsonPicture = hex("FF D8 FF");
        return text(bench.ask(firstChunk));
    };
    const std::string data = "\xFF\xD8\xFF";
    EXPECT_EQ(struck("no-marker"), R"({"result":0,"size":3})" + data);
    EXPECT_EQ(struck("no-size"), R"({"result":0}<<BINARY>>)" + data);
    EXPECT_EQ(struck("size-text=\"x\""), R"({"result":0,"size":"x"}<<BINARY>>)" + data);
    EXPECT_EQ(struck("size-text=-5"), R"({"result":0,"size":-5}<<BINARY>>)" + data);
    EXPECT_EQ(struck("invalid-json"), R"({"result":0,"size":3{<<BINARY>>)" + data);
}

TEST_F(JsonCamera, FaultsSpoilTheEnvelope) {
    for (std::size_t size = 9; size <= 13; ++size) {
        bench.camera.faults().clear();
        bench.camera.addFault("short-json=" + std::to_string(size) + "@json");
        const Bytes answer = bench.ask(jsonPropertyQuery);
        EXPECT_EQ(answer.size(), size);
        EXPECT_TRUE(protocol::isWholeAnswer(answer, protocol::jsonForm));
    }
    bench.camera.faults().clear();
    bench.camera.addFault("length=+1@jsonProperty");
    EXPECT_FALSE(protocol::isWholeAnswer(bench.ask(jsonPropertyQuery), protocol::jsonForm));
}

TEST_F(JsonCamera, ALaterPieceCanBeMissing) {
    bench.camera.addFault("silent@jsonPicture#2");
    bench.camera.state().jsonPicture = countingBytes(7001);
    EXPECT_FALSE(bench.ask(firstChunk).empty());
    EXPECT_FALSE(bench.ask(jsonPropertyQuery).empty());
    EXPECT_TRUE(askText(protocol::jsonChunkRequest(500, 6500)).empty());
    EXPECT_FALSE(askText(protocol::jsonChunkRequest(7000, 1)).empty());
}

} // namespace
} // namespace emulatortest
