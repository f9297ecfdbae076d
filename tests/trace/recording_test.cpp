// The text of recordings: writing, reading, refusing.
#include "tests/trace/tapbench.h"
#include "trace/recordingfile.h"

#include <filesystem>
#include <fstream>

namespace tracetest {
namespace {

const char* const head = "camera line recording 1\n"
                         "start 2026-01-02T03:04:05.006Z\n"
                         "device /dev/ttyUSB0\n"
                         "baud 460800\n"
                         "offset 0\n"
                         "serials kept\n";

Recording readText(const std::string& text) {
    std::istringstream lines(text);
    return readRecording(lines);
}

std::string complaintAbout(const std::string& text) {
    try {
        static_cast<void>(readText(text));
    } catch (const RecordingError& error) {
        return error.what();
    }
    return "none";
}

TEST(RecordingText, WritesChunksAndTheMeaningOfFrames) {
    TapBench bench;
    bench.tool(heartbeatRequest, 12345us);
    bench.camera(heartbeatAnswer, 8ms);
    EXPECT_EQ(*bench.text,
              std::string(head) +
                  "#  time, ms  from    bytes; what they mean stands below them\n"
                  "      12.345 tool    AA 5A 01 01 01 00 00 00 00 5E FA\n"
                  "#                    tool: heartbeat (01), address 01, 1 payload byte, check "
                  "code right: 00\n"
                  "      20.345 camera  AA 5A 01 01 01 00 00 00 01 7F EA\n"
                  "#                    camera: answer to: heartbeat (01), address 01, 1 payload "
                  "byte, check code right: the camera is there\n");
}

TEST(RecordingText, IsReadAsItWasWritten) {
    TapBench bench;
    bench.tool(countingBytes(5000));
    bench.camera(Bytes{0x00});
    const Recording read = bench.recording();
    EXPECT_EQ(read.head.start, "2026-01-02T03:04:05.006Z");
    EXPECT_EQ(read.head.device, "/dev/ttyUSB0");
    EXPECT_EQ(read.head.baudRate, 460800U);
    EXPECT_FALSE(read.head.serialsBlanked);
    ASSERT_EQ(read.entries.size(), 2U);
    EXPECT_EQ(read.entries[0].from, Side::tool);
    EXPECT_EQ(read.entries[0].at, 10ms);
    EXPECT_EQ(read.entries[0].bytes, countingBytes(5000));
    EXPECT_EQ(read.entries[1].from, Side::camera);
    EXPECT_EQ(read.entries[1].bytes, Bytes{0x00});
}

TEST(RecordingText, MayHaveRemarksBlankLinesAndWindowsLineEnds) {
    EXPECT_EQ(readText(std::string(head) + "\n  # by hand\r\n 1.000 tool AA\r\n").entries.size(), 1U);
    EXPECT_TRUE(readText(head).entries.empty());
}

TEST(RecordingText, LosesAllReturnsBeforeALineEndAtOnce) {
    const trace::Recording read =
        readText("camera line recording 1\nstart now\r\r\r\ndevice d\r\nbaud 9600\noffset 9\nserials kept\n");
    EXPECT_EQ(read.head.start, "now");
    EXPECT_EQ(read.head.device, "d");
}

struct BadText {
    const char* text;
    const char* complaint;

    friend void PrintTo(const BadText& bad, std::ostream* out) { *out << bad.complaint; }
};

class NoRecording : public testing::TestWithParam<BadText> {};

TEST_P(NoRecording, IsRefusedWithItsLineNumber) {
    EXPECT_EQ(complaintAbout(std::string(head) + GetParam().text), GetParam().complaint);
}

INSTANTIATE_TEST_SUITE_P(
    Entries, NoRecording,
    testing::Values(
        BadText{"12 tool AA\n", "line 7: \"12\" is no time in ms with three places"},
        BadText{"1.0 tool AA\n", "line 7: \"1.0\" is no time in ms with three places"},
        BadText{"-1.000 tool AA\n", "line 7: \"-1.000\" is no time in ms with three places"},
        BadText{"1.000 tool AA\n0.999 tool AA\n", "line 8: the time runs back"},
        BadText{"1.000 robot AA\n", "line 7: the bytes are from \"tool\" or \"camera\", not \"robot\""},
        BadText{"1.000 tool\n", "line 7: no bytes"},
        BadText{"1.000 tool AA 5\n", "line 7: \"5\" is no byte of two hexadecimal digits"},
        BadText{"1.000 tool AAA\n", "line 7: \"AAA\" is no byte of two hexadecimal digits"},
        BadText{"1.000 tool AG\n", "line 7: \"AG\" is no byte of two hexadecimal digits"},
        BadText{"1.000 tool AA 5A", "line 7: the file ends in the middle of this line; take the line out"}));

TEST(RecordingText, IsRefusedWithoutItsHead) {
    EXPECT_EQ(complaintAbout(""), "line 1: the first line of a recording is \"camera line recording 1\"");
    EXPECT_EQ(complaintAbout("camera line recording 2\n"),
              "line 1: the first line of a recording is \"camera line recording 1\"");
    EXPECT_EQ(complaintAbout("camera line recording 1\nstart x\n"),
              "line 3: \"device\" and its value are missing here");
    EXPECT_EQ(complaintAbout("camera line recording 1\nstart x\ndevice y\nbaud fast\n"),
              "line 4: \"fast\" is no value for \"baud\"");
    EXPECT_EQ(complaintAbout("camera line recording 1\nstart x\ndevice y\nbaud 1\noffset 256\n"),
              "line 5: \"256\" is no value for \"offset\"");
    EXPECT_EQ(complaintAbout("camera line recording 1\nstart x\ndevice y\nbaud 1\noffset 0\nserials gone\n"),
              "line 6: \"serials\" is \"kept\" or \"blanked\", not \"gone\"");
}

TEST(RecordingFile, HoldsEveryLineAtOnce) {
    RecordingFile file("new.rec");
    file.append("one\n");
    std::ifstream text("new.rec");
    std::string line;
    EXPECT_TRUE(std::getline(text, line));
    EXPECT_EQ(line, "one");
}

TEST(RecordingFile, NeverReplacesAnother) {
    std::ofstream("old.rec") << "precious";
    EXPECT_THROW(RecordingFile("old.rec"), std::runtime_error);
    EXPECT_EQ(std::filesystem::file_size("old.rec"), 8U);
}

TEST(RecordingFile, NamesAMissingFile) {
    try {
        static_cast<void>(loadRecording("missing.rec"));
        FAIL() << "no error";
    } catch (const RecordingError& error) {
        EXPECT_STREQ(error.what(), "cannot read missing.rec: it does not exist");
    }
}

} // namespace
} // namespace tracetest
