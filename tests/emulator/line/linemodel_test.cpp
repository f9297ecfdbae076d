// The imperfect line: its words, the damage of bytes, their times.
#include "emulator/line/linemodel.h"
#include "tests/emulator/camera/camerabench.h"

#include <bit>
#include <set>

namespace emulatortest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Receiver = LineDamage::Receiver;

// --- words -------------------------------------------------------------------------------------------------

std::string complaintAbout(const std::string& line) {
    try {
        static_cast<void>(parseLine(line));
    } catch (const LineTextError& error) {
        return error.what();
    }
    return "";
}

TEST(LineText, NamesAPreset) {
    for (const LinePreset& preset : linePresets())
        EXPECT_EQ(parseLine(preset.name), preset.traits) << preset.name;
    EXPECT_EQ(parseLine("good"), LineTraits());
}

TEST(LineText, ChangesAPreset) {
    LineTraits expected = parseLine("ftdi");
    expected.bitErrors = 1e-6;
    expected.latency = 40ms;
    expected.echoes = true;
    EXPECT_EQ(parseLine("ftdi,bits=1e-6,latency=40,echo"), expected);
}

TEST(LineText, EveryExampleIsATrait) {
    for (const LineTrait& trait : lineTraits())
        EXPECT_NE(parseLine(trait.form), LineTraits()) << trait.form;
}

TEST(LineText, UnknownNameListsTheKnownOnes) {
    EXPECT_THAT(complaintAbout("soggy"),
                HasSubstr("there is no line \"soggy\"; known: good, long-cable, ftdi, cheap-adapter, "
                          "loose-plug, bits=1e-5, lost="));
    EXPECT_THAT(complaintAbout(""), HasSubstr("there is no line \"\""));
    EXPECT_THAT(complaintAbout("ftdi,"), HasSubstr("there is no line \"\""));
}

TEST(LineText, WrongValueShowsAnExample) {
    for (const char* const wrong : {"bits", "bits=", "bits=2", "bits=-1", "bits=1x", "bits=nan"})
        EXPECT_THAT(complaintAbout(wrong), HasSubstr("write it like bits=1e-5")) << wrong;
    for (const char* const wrong : {"latency", "latency=-1", "latency=1.5", "latency=10001"})
        EXPECT_THAT(complaintAbout(wrong), HasSubstr("write it like latency=5")) << wrong;
    for (const char* const wrong : {"echo=", "echo=1"})
        EXPECT_THAT(complaintAbout(wrong), HasSubstr("write it like echo")) << wrong;
}

// --- damage ------------------------------------------------------------------------------------------------

constexpr std::size_t many = 200'000; // bytes

LineDamage damageOf(const std::string& line, std::uint64_t seed = 1) {
    return {Receiver::tool, parseLine(line), seed};
}

TEST(LineDamage, SameSeedGivesTheSameDamage) {
    const Bytes bytes = countingBytes(10000);
    for (const LinePreset& preset : linePresets()) {
        const std::string name(preset.name);
        EXPECT_EQ(damageOf(name).pass(bytes), damageOf(name).pass(bytes)) << name;
    }
    EXPECT_NE(damageOf("loose-plug", 1).pass(bytes), damageOf("loose-plug", 2).pass(bytes));
}

TEST(LineDamage, DirectionsDiffer) {
    const Bytes bytes = countingBytes(10000);
    LineDamage other(Receiver::camera, parseLine("bits=1e-3"), 1);
    EXPECT_NE(damageOf("bits=1e-3").pass(bytes), other.pass(bytes));
}

TEST(LineDamage, IsTheSameForDividedBytes) {
    const std::string line = "bits=1e-3,lost=1e-2,doubled=1e-2,burst=1e-2,break=1e-2";
    const Bytes bytes = countingBytes(5000);
    const Bytes whole = damageOf(line).pass(bytes);
    LineDamage damage = damageOf(line);
    Bytes pieces;
    for (std::size_t at = 0; at < bytes.size(); at += 7)
        protocol::append(pieces, damage.pass(ByteView(bytes).range(at, at + 7)));
    EXPECT_EQ(pieces, whole);
}

TEST(LineDamage, ChangesBitsAtTheRate) {
    LineDamage damage = damageOf("bits=1e-3");
    const Bytes bytes = countingBytes(many);
    const Bytes out = damage.pass(bytes);
    std::uint64_t changed = 0;
    ASSERT_EQ(out.size(), many);
    for (std::size_t i = 0; i < many; ++i)
        changed += static_cast<unsigned>(std::popcount(static_cast<unsigned>(out[i] ^ bytes[i])));
    EXPECT_EQ(damage.counts().bits, changed);
    EXPECT_NEAR(static_cast<double>(changed), 8e-3 * many, 0.05 * 8e-3 * many);
}

TEST(LineDamage, LosesAndDoublesAtTheRate) {
    LineDamage damage = damageOf("lost=1e-2,doubled=2e-2");
    const std::size_t size = damage.pass(countingBytes(many)).size();
    const LineDamageCounts counts = damage.counts();
    EXPECT_NEAR(static_cast<double>(counts.lostBytes), 1e-2 * many, 1e-3 * many);
    EXPECT_NEAR(static_cast<double>(counts.addedBytes), 2e-2 * many, 1e-3 * many);
    EXPECT_EQ(size, many + counts.addedBytes - counts.lostBytes);
    EXPECT_EQ(counts.bits, 0U);
}

TEST(LineDamage, BurstChangesNeighbours) {
    LineDamage damage = damageOf("burst=5e-4");
    static_cast<void>(damage.pass(countingBytes(many)));
    // On average 100 bursts of 8.5 bytes with 2 changed bits each.
    EXPECT_GT(damage.counts().bits, 1000U);
    EXPECT_LT(damage.counts().bits, 2500U);
}

TEST(LineDamage, BreakIsAZeroByteAndLoss) {
    LineDamage damage = damageOf("break=1");
    const Bytes out = damage.pass(Bytes(2, 0x55));
    EXPECT_EQ(out.at(0), 0);
    EXPECT_GE(damage.counts().lostBytes, 1U);
    EXPECT_EQ(std::count(out.begin(), out.end(), 0x55), 0);
}

TEST(LineDamage, OverrunSparesTheFirstBytesOfAPiece) {
    LineDamage damage = damageOf("overrun=1");
    EXPECT_EQ(damage.pass(countingBytes(LineTraits::fifoBytes)), countingBytes(LineTraits::fifoBytes));
    EXPECT_EQ(damage.pass(countingBytes(60)), countingBytes(LineTraits::fifoBytes));
}

TEST(LineDamage, WrongParityReadsZeros) {
    EXPECT_THAT(damageOf("parity").pass(Bytes{0x01, 0x03, 0x00, 0xFE}), ElementsAre(0x01, 0, 0, 0xFE));
    LineDamage toCamera(Receiver::camera, parseLine("parity"), 1);
    EXPECT_THAT(toCamera.pass(Bytes{0x01, 0x03, 0x00, 0xFE}), ElementsAre(0x01, 0xFE));
}

TEST(LineDamage, StrikesWhereItIsTold) {
    LineDamage damage(Receiver::tool, {}, 1);
    damage.add({LineStrike::Kind::flip, 2, 4});
    damage.add({LineStrike::Kind::lose, 4, 2});
    damage.add({LineStrike::Kind::repeat, 6, 1});
    EXPECT_EQ(damage.pass(hex("01 02")), hex("01 02"));
    EXPECT_EQ(damage.pass(hex("03 04 05 06 07 08")), hex("13 04 07 07 08"));
    EXPECT_EQ(damage.pass(hex("09")), hex("09"));
}

TEST(LineDamage, LossGoesOnInTheNextPiece) {
    LineDamage damage(Receiver::tool, {}, 1);
    damage.add({LineStrike::Kind::lose, 1, 3});
    EXPECT_EQ(damage.pass(hex("01 02")), hex("01"));
    EXPECT_EQ(damage.pass(hex("03 04 05")), hex("05"));
}

// --- times -------------------------------------------------------------------------------------------------

/// A camera behind a line, on the clock of the test.
class ModelledCamera : public testing::Test {
protected:
    struct Heard {
        Time after{0}; ///< since the request
        Bytes bytes;
    };

    void ask(std::string_view request) {
        m_asked = m_now;
        model.receive(hex(request), m_now);
    }
    /// The bytes that come until the line rests.
    std::vector<Heard> listen() {
        std::vector<Heard> heard;
        while (const auto due = model.nextDue()) {
            m_now = std::max(m_now, *due);
            Bytes bytes = model.takeDue(m_now);
            if (!bytes.empty())
                heard.push_back({m_now - m_asked, std::move(bytes)});
        }
        return heard;
    }
    void useLine(const std::string& text, std::uint64_t seed = 1) { model.setTraits(parseLine(text), seed); }
    void pass(Time duration) { m_now += duration; }
    [[nodiscard]] Time now() const { return m_now; }

    VirtualCamera camera;
    LineModel model{camera};

private:
    Time m_now{1s};
    Time m_asked{0};
};

constexpr Time delayOfAnswers = 8ms;

TEST_F(ModelledCamera, PerfectLineAddsNothing) {
    ask(heartbeatRequest);
    const auto heard = listen();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].bytes, hex(heartbeatAnswer));
    EXPECT_EQ(heard[0].after, delayOfAnswers);
}

TEST_F(ModelledCamera, LatencyCountsInBothDirections) {
    useLine("latency=20");
    ask(heartbeatRequest);
    EXPECT_EQ(camera.record().byteCount, 0U);
    const auto heard = listen();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].after, delayOfAnswers + 40ms);
    EXPECT_EQ(camera.record().chunks.at(0).at, 1s + 20ms);
}

TEST_F(ModelledCamera, JitterKeepsTheOrder) {
    useLine("jitter=30");
    std::set<Time> times;
    for (int i = 0; i < 50; ++i) {
        ask("AA 5A 01 01 01");
        ask("00 00 00 00 5E FA");
        const auto heard = listen();
        ASSERT_EQ(heard.size(), 1U);
        EXPECT_EQ(heard[0].bytes, hex(heartbeatAnswer));
        EXPECT_GE(heard[0].after, delayOfAnswers);
        EXPECT_LE(heard[0].after, delayOfAnswers + 60ms);
        times.insert(heard[0].after);
    }
    EXPECT_GT(times.size(), 40U);
}

TEST_F(ModelledCamera, TimerHoldsTheRestOfAPacket) {
    camera.state().serialNumber = std::string(80, '7');
    useLine("timer=16");
    ask(getSnRequest);
    const auto heard = listen();
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[0].bytes.size(), 62U);
    EXPECT_EQ(heard[0].after, delayOfAnswers);
    EXPECT_EQ(heard[1].bytes.size(), 30U);
    EXPECT_EQ(heard[1].after, delayOfAnswers + 16ms);
}

TEST_F(ModelledCamera, EchoComesBeforeTheAnswer) {
    useLine("echo");
    ask(heartbeatRequest);
    const auto heard = listen();
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[0].bytes, hex(heartbeatRequest));
    EXPECT_EQ(heard[0].after, 0ms);
    EXPECT_EQ(heard[1].bytes, hex(heartbeatAnswer));
}

TEST_F(ModelledCamera, LostRequestHasNoAnswer) {
    useLine("lost=1");
    ask(heartbeatRequest);
    EXPECT_TRUE(listen().empty());
    EXPECT_EQ(camera.record().byteCount, 0U);
    EXPECT_EQ(model.countsTo(Receiver::camera).lostBytes, 11U);
}

TEST_F(ModelledCamera, PausedCameraGetsBytesAfterThePause) {
    camera.addFault("stop-reading=300@heartbeat#1");
    useLine("latency=10");
    ask(heartbeatRequest);
    pass(5ms);
    model.receive(hex(heartbeatRequest), now());
    const auto heard = listen();
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(camera.record().chunks.at(1).at, 1s + 310ms);
}

TEST_F(ModelledCamera, ClearLosesWhatIsOnItsWay) {
    useLine("latency=20");
    ask(heartbeatRequest);
    model.clear();
    EXPECT_TRUE(listen().empty());
}

TEST_F(ModelledCamera, ChosenDamageStrikesOneDirection) {
    model.strike(Receiver::camera, {LineStrike::Kind::flip, 8, 0});
    ask(heartbeatRequest);
    EXPECT_TRUE(listen().empty());
    EXPECT_EQ(camera.record().badFrames, 1U);
    ask(heartbeatRequest);
    EXPECT_EQ(listen().size(), 1U);
}

} // namespace
} // namespace emulatortest
