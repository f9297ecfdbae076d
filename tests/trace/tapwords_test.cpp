// Words of the tap for frames and uploads.
#include "link/protocol/jsonenvelope.h"
#include "tests/trace/tapbench.h"

namespace tracetest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct Exchange {
    const char* request;
    const char* answer;
    const char* requestWords;
    const char* answerWords;

    friend void PrintTo(const Exchange& exchange, std::ostream* out) { *out << exchange.requestWords; }
};

class TapWords : public testing::TestWithParam<Exchange> {};

TEST_P(TapWords, SayWhatARequestAsksAndAnAnswerMeans) {
    TapBench bench;
    bench.tool(GetParam().request);
    EXPECT_EQ(bench.lastWords(), GetParam().requestWords);
    bench.camera(GetParam().answer);
    EXPECT_EQ(bench.lastWords(), GetParam().answerWords);
}

INSTANTIATE_TEST_SUITE_P(
    Commands, TapWords,
    testing::Values(
        Exchange{getSnRequest, snAnswerA1,
                 "read serial number (02), address 01, 1 payload byte, check code right: 03",
                 "answer to: read serial number (02), address 01, 4 payload bytes, check code right: id 03, "
                 "success, value \"A1\""},
        Exchange{"AA 5A 01 03 02 00 00 00 0F 1E 97 5D", "AA 5A 01 03 02 00 00 00 0F 01 49 BE",
                 "write property (03), address 01, 2 payload bytes, check code right: 0f 1e",
                 "answer to: write property (03), address 01, 2 payload bytes, check code right: id 0f, "
                 "refused with result 01"},
        Exchange{"AA 5A 01 05 00 00 00 00 BB 68", "AA 5A 01 05 01 00 00 00 00 FF FC",
                 "reboot (05), address 01, 0 payload bytes, check code right",
                 "answer to: reboot (05), address 01, 1 payload byte, check code right: success"},
        Exchange{"AA 5A 01 0F 01 00 00 00 03 9E 4A", "33 73 75 63 63 65 73 73",
                 "gyro test (0f), address 01, 1 payload byte, check code right: 03",
                 "8 bytes outside any frame: \"3success\""},
        Exchange{
            "AA 5A 01 C7 00 00 00 00 80 1F",
            "AA 5A 01 C7 22 00 00 00 01 02 01 03 D7 34 01 07 01 2D 00 F1 53 65 14 00 00 00 15 49 D1 AA E2 "
            "02 14 E0 65 AB 4B 76 AA AC 89 A8 28 87",
            "list the pictures (V1) (c7), address 01, 0 payload bytes, check code right",
            "answer to: list the pictures (V1) (c7), address 01, 34 payload bytes, check code right: 1 "
            "picture; id 258, 20 bytes"},
        Exchange{
            "AA 5A 01 09 09 00 00 00 05 00 00 00 00 39 30 00 00 28 89",
            "AA 5A 01 09 15 00 00 00 00 00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 FF "
            "BB",
            "read a picture (09), address 01, 9 payload bytes, check code right: id 5, 12345 bytes",
            "answer to: read a picture (09), address 01, 21 payload bytes, check code right: success, 20 "
            "picture bytes"},
        Exchange{"AA 5A 01 CB 1D 00 00 00 01 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 7F 72 6D "
                 "6F 64 65 6C 5F 76 31 B0 21",
                 "AA 5A 01 CB 06 00 00 00 01 01 00 00 00 00 D0 92",
                 "announce model (cb), address 01, 29 payload bytes, check code right: 3 bytes named "
                 "\"model_v1\"",
                 "answer to: announce model (cb), address 01, 6 payload bytes, check code right: not ready, "
                 "status 01, type 01, to go on from byte 0"},
        Exchange{"AA 5A 01 1E 08 00 00 00 03 00 00 00 00 00 00 00 AF 2B", "AA 5A 01 1E 01 00 00 00 01 F8 35",
                 "upload packet (second protocol) (1e), address 01, 8 payload bytes, check code right: 03 00 "
                 "00 00 00 00 00 00",
                 "answer to: upload packet (second protocol) (1e), address 01, 1 payload byte, check code "
                 "right: refused with result 01"},
        Exchange{
            "AA 5A 01 77 00 00 00 00 00 00", "AA 5A 01 02 01 00 00 00 03 DD 04",
            "unknown command (77), address 01, 0 payload bytes, check code WRONG",
            "answer to: read serial number (02), address 01, 1 payload byte, check code right: too short "
            "for this command"}));

TEST(TapWords, NameAWrongCheckCode) {
    TapBench bench;
    bench.camera("AA 5A 01 01 01 00 00 00 01 00 00");
    EXPECT_THAT(bench.lastWords(), HasSubstr("check code WRONG: the camera is there"));
}

TEST(TapWords, ShowTheTextsOfEnvelopes) {
    TapBench bench;
    bench.tool(jsonPropertyQuery);
    EXPECT_EQ(bench.lastWords(), "JSON property query, 50 body bytes, check code right: "
                                 R"({"timestamp":1,"seqNum":1,"cmdType":145,"info":""})");
    bench.camera(
        "01 17 00 2A FD FC FB FA 64 00 22 00 7B 22 72 65 73 75 6C 74 22 3A 30 2C 22 73 69 7A 65 22 3A "
        "33 7D 3C 3C 42 49 4E 41 52 59 3E 3E FF D8 FF 4E 3C");
    EXPECT_EQ(bench.lastWords(), "JSON answer, 34 body bytes, check code right: "
                                 R"({"result":0,"size":3}<<BINARY>> and 3 picture bytes)");
}

TEST(TapWords, RecogniseShiftedPictureCommands) {
    std::vector<std::string> words;
    RecordingHead head;
    head.pictureOffset = 0xFA;
    Recorder recorder(head, [](const std::string&) {});
    recorder.onEvent([&](const Event& event) { words.push_back(event.text); });
    recorder.pass(Side::tool, hex("AA 5A 01 01 00 00 00 00 BD E1"), 0ms);
    EXPECT_THAT(words, ElementsAre(StartsWith("list the pictures (01)")));
}

const char* const appAnnouncement =
    "AA 5A 01 1B 14 00 00 00 14 05 00 00 9F 04 FA 44 F3 CC 4A 6C 92 DA E6 7B 41 "
    "50 0F C7 55 3D";
const char* const readyAt512 = "AA 5A 01 1B 05 00 00 00 00 00 02 00 00 F1 40";

TEST(TapWords, SumUpUploadDataFromTheResumeOffset) {
    TapBench bench;
    bench.tool(appAnnouncement);
    bench.camera(readyAt512);
    EXPECT_THAT(bench.lastWords(), HasSubstr("ready, to go on from byte 512"));
    const std::size_t before = bench.words.size();
    bench.tool(Bytes(512, 0xAA), 2s);
    EXPECT_EQ(bench.words.size(), before) << bench.lastWords();
    bench.tool(Bytes(276, 0x5A));
    EXPECT_EQ(bench.lastWords(), "upload data, 788 of 788 bytes");
    bench.camera("AA 5A 01 1B 01 00 00 00 00 D8 66");
    EXPECT_THAT(bench.lastWords(), HasSubstr("verdict: success"));
    EXPECT_EQ(bench.recording().entries.at(2).bytes, Bytes(512, 0xAA));
}

TEST(TapWords, ReportABrokenUploadAtTheNextRequest) {
    TapBench bench;
    bench.tool(appAnnouncement);
    bench.camera(readyAt512);
    bench.tool(Bytes(100), 2s);
    bench.tool(heartbeatRequest, 6s);
    EXPECT_THAT(bench.words, testing::Contains("upload data, 100 of 788 bytes, broken off"));
    EXPECT_THAT(bench.lastWords(), StartsWith("heartbeat"));
}

TEST(TapWords, ReportABrokenFrameAfterASecond) {
    TapBench bench;
    bench.camera("AA 5A 01 01 01");
    EXPECT_TRUE(bench.words.empty());
    bench.recorder.passTime(bench.now + 1001ms);
    EXPECT_EQ(bench.lastWords(), "broken off after 5 bytes: aa 5a 01 01 01");
}

TEST(TapWords, DecodeTheNextAnswerAfterACutOne) {
    TapBench bench;
    bench.tool(heartbeatRequest);
    bench.camera("AA 5A 01 01 01 00 00");
    bench.tool(heartbeatRequest);
    bench.camera(heartbeatAnswer);
    EXPECT_THAT(bench.lastWords(), HasSubstr("check code right: the camera is there"));
}

TEST(TapWords, JoinAFrameThatComesInPieces) {
    TapBench bench;
    for (const std::uint8_t byte : hex(heartbeatAnswer))
        bench.camera(Bytes{byte}, 1ms);
    EXPECT_EQ(bench.words.size(), 1U);
    EXPECT_EQ(bench.recording().entries.size(), 11U);
}

} // namespace
} // namespace tracetest
