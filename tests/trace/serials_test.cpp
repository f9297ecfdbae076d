// Blanking of serial numbers in recordings.
#include "link/protocol/crc16.h"
#include "tests/trace/tapbench.h"
#include "trace/framewords.h"

namespace tracetest {
namespace {

using testing::HasSubstr;
using testing::Not;

Bytes allOf(const TapBench& bench, Side side) {
    Bytes bytes;
    for (const RecordingEntry& entry : bench.recording().entries) {
        if (entry.from == side)
            protocol::append(bytes, entry.bytes);
    }
    return bytes;
}

TEST(BlankedSerials, BlankReadAnswersWithARightCheckCode) {
    TapBench bench(true);
    bench.camera(snAnswerA1);
    EXPECT_EQ(allOf(bench, Side::camera), protocol::buildFrame(0x02, hex("03 00 58 58"), 1));
    EXPECT_THAT(bench.lastWords(), HasSubstr("check code right: id 03, success, value \"XX\""));
    EXPECT_TRUE(bench.recording().head.serialsBlanked);
}

TEST(BlankedSerials, BlankTheWholeWriteRequest) {
    TapBench bench(true);
    bench.tool("AA 5A 01 03 04 00 00 00 03 41 31 00 1F 00");
    EXPECT_EQ(allOf(bench, Side::tool), protocol::buildFrame(0x03, hex("03 58 58 00"), 1));
}

TEST(BlankedSerials, LeaveAWrongCheckCodeWrong) {
    TapBench bench(true);
    bench.camera("AA 5A 01 02 04 00 00 00 03 00 41 31 8A EE");
    EXPECT_THAT(bench.lastWords(), HasSubstr("check code WRONG"));
    EXPECT_THAT(bench.lastWords(), HasSubstr("\"XX\""));
}

TEST(BlankedSerials, AreNotWrittenBeforeTheFrameIsWhole) {
    TapBench bench(true);
    for (const std::uint8_t byte : hex(snAnswerA1)) {
        bench.camera(Bytes{byte}, 1ms);
        EXPECT_THAT(*bench.text, Not(HasSubstr("41\n")));
    }
    EXPECT_EQ(allOf(bench, Side::camera), protocol::buildFrame(0x02, hex("03 00 58 58"), 1));
    EXPECT_EQ(bench.recording().entries.size(), hex(snAnswerA1).size());
}

TEST(BlankedSerials, AreBlankInAFrameThatBreaksOff) {
    TapBench bench(true);
    bench.camera("AA 5A 01 02 04 00 00 00 03 00 41");
    bench.recorder.finish();
    EXPECT_EQ(allOf(bench, Side::camera), hex("AA 5A 01 02 04 00 00 00 03 00 58"));
}

TEST(BlankedSerials, DelayNoOtherFrame) {
    TapBench bench(true);
    bench.camera("AA 5A 01 09 15 00 00 00 00 00 01");
    EXPECT_EQ(bench.recording().entries.size(), 1U);
    bench.tool("AA 5A 01 03 02 00 00 00 0F 1E");
    EXPECT_EQ(bench.recording().entries.size(), 2U);
}

TEST(BlankedSerials, KeepOtherProperties) {
    TapBench bench(true);
    const Bytes version = protocol::buildFrame(0x02, hex("02 00 41 31"), 1);
    bench.camera(version);
    EXPECT_EQ(allOf(bench, Side::camera), version);
}

Bytes jsonAnswer(std::string_view text) {
    const auto count = static_cast<std::uint8_t>(text.size() + 8);
    Bytes bytes = hex("01 17 00 00 FD FC FB FA 64 00 22 00");
    bytes[3] = count;
    protocol::append(bytes, protocol::bytesOf(text));
    put(bytes, protocol::Field<std::uint16_t>{bytes.size()}, protocol::crc16Modbus(bytes));
    return bytes;
}

TEST(BlankedSerials, BlankDeviceNamesInEnvelopes) {
    TapBench bench(true);
    bench.camera(jsonAnswer(R"({"version":"1","deviceId":"AB12","info":{"SN" : "77"}})"));
    EXPECT_EQ(allOf(bench, Side::camera),
              jsonAnswer(R"({"version":"1","deviceId":"XXXX","info":{"SN" : "XX"}})"));
    EXPECT_THAT(bench.lastWords(), HasSubstr("check code right"));
}

TEST(BlankedSerials, KeepSerialsUnlessBlankingIsOn) {
    TapBench bench(false);
    bench.camera(snAnswerA1);
    EXPECT_EQ(allOf(bench, Side::camera), hex(snAnswerA1));
}

} // namespace
} // namespace tracetest
