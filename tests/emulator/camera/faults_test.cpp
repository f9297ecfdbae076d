// What every fault does to an answer.
#include "tests/emulator/camera/camerabench.h"

#include <set>

namespace emulatortest {
namespace {

TEST(FaultText, NamesKindParameterRequestAndOccurrence) {
    const Fault fault = parseFault("truncate=3@getSn#2");
    EXPECT_EQ(fault.kind, FaultKind::truncate);
    EXPECT_EQ(fault.number, 3);
    EXPECT_EQ(fault.selector.code, 0x02);
    EXPECT_EQ(fault.selector.detail, 0x03);
    EXPECT_EQ(fault.first, 2U);
    EXPECT_EQ(fault.last, 2U);
}

TEST(FaultText, LeavesOutRequestAndOccurrence) {
    const Fault fault = parseFault("silent");
    EXPECT_FALSE(fault.selector.code);
    EXPECT_FALSE(fault.selector.lineCode);
    EXPECT_EQ(fault.first, 1U);
    EXPECT_EQ(fault.last, Fault::always);
}

TEST(FaultText, TakesRangesCodesAndDetails) {
    const Fault ranged = parseFault("delay=0x10@0x1D#2-4");
    EXPECT_EQ(ranged.number, 16);
    EXPECT_EQ(ranged.selector.lineCode, 0x1D);
    EXPECT_EQ(ranged.first, 2U);
    EXPECT_EQ(ranged.last, 4U);
    const Fault open = parseFault("silent@getProperty:15#3+");
    EXPECT_EQ(open.selector.detail, 15);
    EXPECT_EQ(open.first, 3U);
    EXPECT_EQ(open.last, Fault::always);
}

TEST(FaultText, KnowsOffsetsRelativeToTheFile) {
    EXPECT_TRUE(parseFault("offset=size").relative);
    EXPECT_EQ(parseFault("offset=size-5").number, -5);
    EXPECT_EQ(parseFault("offset=size+5").number, 5);
    EXPECT_FALSE(parseFault("offset=0xFFFFFFFF").relative);
    EXPECT_EQ(parseFault("offset=0xFFFFFFFF").number, 0xFFFFFFFFLL);
}

class BadFaultText : public testing::TestWithParam<const char*> {};

TEST_P(BadFaultText, IsRefusedWithAReason) {
    try {
        static_cast<void>(parseFault(GetParam()));
        FAIL() << "taken: " << GetParam();
    } catch (const FaultError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr(GetParam()));
    }
}

INSTANTIATE_TEST_SUITE_P(All, BadFaultText,
                         testing::Values("", "nonsense", "silent=1", "truncate", "truncate=", "truncate=x",
                                         "truncate=-1", "truncate=3@nobody", "truncate=3@getSn#0",
                                         "truncate=3#4-2", "silent#", "silent@", "before=A", "before=XY",
                                         "offset=sizes", "delay=99999999999999999999", "delay=--5",
                                         "silent@0x1FF", "split=4,"));

TEST(FaultTable, NamesEveryKindOnceAndInOrder) {
    std::set<std::string_view> names;
    for (std::size_t i = 0; i < faultKinds().size(); ++i) {
        const FaultKindInfo& info = faultKinds()[i];
        EXPECT_EQ(static_cast<std::size_t>(info.kind), i);
        EXPECT_TRUE(names.insert(info.name).second) << info.name;
        EXPECT_FALSE(info.description.empty());
        const std::string example(info.example);
        EXPECT_EQ(parseFault(std::string(info.name) + (example.empty() ? "" : "=" + example)).kind,
                  info.kind);
    }
    EXPECT_EQ(faultKinds().back().kind, FaultKind::stopReading);
}

TEST(FaultTable, RequestNamesAreFoundByTheirOwnText) {
    for (const protocol::RequestName& name : protocol::requestNames()) {
        const auto selector = parseSelector(name.name);
        ASSERT_TRUE(selector) << name.name;
        EXPECT_TRUE(selector->matches({name.code, name.code, name.detail})) << name.name;
    }
}

struct AnswerFault {
    const char* fault;
    const char* answer; ///< to getSn of "A1"

    friend void PrintTo(const AnswerFault& row, std::ostream* out) { *out << row.fault; }
};

class SnAnswer : public testing::TestWithParam<AnswerFault> {};

TEST_P(SnAnswer, IsChangedOnceByTheFault) {
    CameraBench bench;
    bench.camera.state().serialNumber = "A1";
    bench.camera.addFault(std::string(GetParam().fault) + "@getSn#1");
    EXPECT_EQ(bench.ask(getSnRequest), hex(GetParam().answer));
    EXPECT_EQ(bench.ask(getSnRequest), hex(snAnswerA1));
}

INSTANTIATE_TEST_SUITE_P(
    All, SnAnswer,
    testing::Values(
        AnswerFault{"silent", ""}, AnswerFault{"truncate=3", "AA 5A 01 02 04 00 00 00 03 00 41"},
        AnswerFault{"truncate=100", ""},
        AnswerFault{"stray=2", "AA 5A 01 02 04 00 00 00 03 00 41 31 8A EF EE EE"},
        AnswerFault{"before=AA", "AA AA 5A 01 02 04 00 00 00 03 00 41 31 8A EF"},
        AnswerFault{"before=AA33", "AA 33 AA 5A 01 02 04 00 00 00 03 00 41 31 8A EF"},
        AnswerFault{"before=33", "33 AA 5A 01 02 04 00 00 00 03 00 41 31 8A EF"},
        AnswerFault{"glue",
                    "AA 5A 01 02 04 00 00 00 03 00 41 31 8A EF AA 5A 01 02 04 00 00 00 03 00 41 31 8A EF"},
        AnswerFault{"raw=414243", "41 42 43"},
        AnswerFault{"bad-check", "AA 5A 01 02 04 00 00 00 03 00 41 31 75 10"},
        AnswerFault{"zero-check", "AA 5A 01 02 04 00 00 00 03 00 41 31 00 00"},
        AnswerFault{"split=4,120", snAnswerA1}, AnswerFault{"delay=200", snAnswerA1}));

struct PayloadFault {
    const char* fault;
    const char* payload;

    friend void PrintTo(const PayloadFault& row, std::ostream* out) { *out << row.fault; }
};

class SnPayload : public testing::TestWithParam<PayloadFault> {};

TEST_P(SnPayload, IsChangedInsideAWellFormedFrame) {
    CameraBench bench;
    bench.camera.state().serialNumber = "A1";
    bench.camera.addFault(GetParam().fault);
    EXPECT_EQ(bench.ask(getSnRequest), protocol::buildFrame(0x02, hex(GetParam().payload), 1));
}

INSTANTIATE_TEST_SUITE_P(
    All, SnPayload,
    testing::Values(PayloadFault{"payload=0", ""}, PayloadFault{"payload=1", "03"},
                    PayloadFault{"result=1", "03 01 41 31"}, PayloadFault{"result=0xFF", "03 FF 41 31"},
                    PayloadFault{"echo=0x63", "63 00 41 31"}, PayloadFault{"zero-inside=1", "03 00 41 00"},
                    PayloadFault{"value-size=5", "03 00 41 31 78 78 78"},
                    PayloadFault{"value-size=1", "03 00 41"}, PayloadFault{"refuse", "01"}));

TEST(FaultEffect, WrongFieldsKeepARightCheckCode) {
    CameraBench bench;
    bench.camera.state().serialNumber = "A1";
    bench.camera.addFault("address=0x55#1");
    bench.camera.addFault("command=0x21#2");
    EXPECT_EQ(bench.ask(getSnRequest), protocol::buildFrame(0x02, hex("03 00 41 31"), 0x55));
    EXPECT_EQ(bench.ask(getSnRequest), protocol::buildFrame(0x21, hex("03 00 41 31"), 1));
    for (const auto& [fault, field] :
         {std::pair{"length=2", 2U}, std::pair{"length=+1", 5U}, std::pair{"length=-1", 3U},
          std::pair{"length=0xFFFFFFFF", 0xFFFFFFFFU}}) {
        bench.camera.faults().clear();
        bench.camera.addFault(fault);
        const Bytes answer = bench.ask(getSnRequest);
        ASSERT_EQ(answer.size(), 14U);
        EXPECT_EQ(ByteView(answer).get(protocol::frame_layout::payloadLength), field) << fault;
    }
}

TEST(FaultEffect, ADelayIsAddedToTheAnswerTime) {
    CameraBench bench;
    bench.camera.addFault("delay=700");
    bench.camera.receive(hex(heartbeatRequest), bench.now);
    EXPECT_EQ(bench.camera.nextDue(), bench.now + 708ms);
}

TEST(FaultEffect, ASplitPausesInsideTheAnswer) {
    CameraBench bench;
    bench.camera.addFault("split=4,120");
    EXPECT_EQ(bench.ask(heartbeatRequest, 100ms), hex("AA 5A 01 01"));
    EXPECT_EQ(bench.listen(100ms), hex("01 00 00 00 01 7F EA"));
}

TEST(FaultEffect, ALateAnswerComesBeforeTheNextOne) {
    CameraBench bench;
    bench.camera.state().serialNumber = "A1";
    bench.camera.addFault("late@getSn");
    EXPECT_EQ(bench.ask(getSnRequest), Bytes());
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(std::string(snAnswerA1) + heartbeatAnswer));
}

TEST(FaultEffect, TheSecondOccurrenceAloneIsStruck) {
    CameraBench bench;
    bench.camera.addFault("silent@heartbeat#2");
    EXPECT_FALSE(bench.ask(heartbeatRequest).empty());
    bench.ask(getSnRequest);
    EXPECT_TRUE(bench.ask(heartbeatRequest).empty());
    EXPECT_FALSE(bench.ask(heartbeatRequest).empty());
}

TEST(FaultEffect, SeveralFaultsStrikeTogether) {
    CameraBench bench;
    bench.camera.state().serialNumber = "A1";
    bench.camera.addFault("result=1");
    bench.camera.addFault("stray=1");
    Bytes expected = protocol::buildFrame(0x02, hex("03 01 41 31"), 1);
    expected.push_back(0xEE);
    EXPECT_EQ(bench.ask(getSnRequest), expected);
}

TEST(FaultEffect, TheBadHeartbeatAnswerIsResultZero) {
    CameraBench bench;
    bench.camera.addFault("result=0@heartbeat");
    EXPECT_EQ(bench.ask(heartbeatRequest), hex("AA 5A 01 01 01 00 00 00 00 5E FA"));
}

TEST(FaultEffect, CataloguesListAnyNumberOfRecords) {
    for (const std::size_t count : {0U, 1U, 10U, 11U, 378U, 379U}) {
        CameraBench bench;
        bench.camera.addFault("records=" + std::to_string(count));
        const Bytes answer = bench.askFrame(0x07, {});
        EXPECT_EQ(answer.size(), 11 + 27 * count);
        EXPECT_EQ(answer.at(8), count % 256);
        CameraBench v1(CameraType::salesDynamic);
        v1.camera.addFault("records=" + std::to_string(count));
        EXPECT_EQ(v1.askFrame(0xC7, {}).size(), 11 + 33 * count);
    }
}

TEST(FaultEffect, TheCountByteCanLie) {
    CameraBench bench;
    bench.camera.takePicture(0s);
    bench.camera.addFault("count=200");
    const Bytes answer = bench.askFrame(0x07, {});
    EXPECT_EQ(answer.size(), 38U);
    EXPECT_EQ(answer.at(8), 200);
}

TEST(FaultEffect, TheCapturedPictureCanBeMissingInTheCatalogue) {
    CameraBench bench;
    bench.camera.takePicture(0s);
    bench.askFrame(0x06, {});
    bench.camera.addFault("hide-newest");
    const Bytes answer = bench.askFrame(0x07, {});
    EXPECT_EQ(answer.size(), 38U);
    EXPECT_EQ(answer.at(9), bench.camera.state().pictures[0].info.id);
}

TEST(FaultEffect, PicturesCanBeShorterOrLongerThanStated) {
    const Bytes request = hex("05 00 00 00 00 14 00 00 00");
    for (const auto& [fault, size] : {std::pair{"picture-size=-5", 26U}, std::pair{"picture-size=+5", 36U},
                                      std::pair{"picture-size=3", 14U}, std::pair{"refuse", 11U}}) {
        CameraBench bench;
        bench.camera.state().pictures = {makePicture(5, countingBytes(20))};
        bench.camera.addFault(std::string(fault) + "@read");
        EXPECT_EQ(bench.askFrame(0x09, request).size(), size) << fault;
    }
}

TEST(FaultEffect, ARestartCanNeverEnd) {
    CameraBench bench;
    bench.camera.addFault("stay-down@reboot");
    EXPECT_FALSE(bench.askFrame(0x05, {}).empty());
    bench.listen(1h);
    EXPECT_TRUE(bench.ask(heartbeatRequest).empty());
}

TEST(FaultEffect, ARestartCanEndWithTheThirdHeartbeat) {
    CameraBench bench;
    bench.camera.addFault("back-at=3@reboot");
    bench.askFrame(0x05, {});
    EXPECT_TRUE(bench.ask(heartbeatRequest).empty());
    EXPECT_TRUE(bench.ask(getSnRequest).empty());
    EXPECT_TRUE(bench.ask(heartbeatRequest).empty());
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
    EXPECT_FALSE(bench.ask(getSnRequest).empty());
}

TEST(FaultEffect, TheDeviceCanDisappearBeforeOrInsideAnAnswer) {
    CameraBench before;
    before.camera.addFault("hang-up");
    EXPECT_EQ(before.ask(heartbeatRequest), Bytes());
    EXPECT_TRUE(before.hungUp);
    CameraBench inside;
    inside.camera.addFault("hang-up=4");
    EXPECT_EQ(inside.ask(heartbeatRequest), hex("AA 5A 01 01"));
    EXPECT_TRUE(inside.hungUp);
}

TEST(FaultEffect, TheCameraCanStopReadingForAWhile) {
    CameraBench bench;
    bench.camera.addFault("stop-reading=3000@heartbeat");
    const Time start = bench.now;
    EXPECT_EQ(bench.ask(heartbeatRequest), hex(heartbeatAnswer));
    EXPECT_TRUE(bench.camera.readingPaused(start + 2999ms));
    EXPECT_FALSE(bench.camera.readingPaused(start + 3000ms));
    EXPECT_FALSE(bench.hungUp);
}

} // namespace
} // namespace emulatortest
