// The mark of the line's quality on damaged and good answers, which are those of the kept recordings.
#include "link/protocol/jsonenvelope.h"
#include "service/linelog.h"
#include "trace/recordingfile.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace std::chrono_literals;
using protocol::Bytes;
using Signal = service::RecentExchanges::Signal;
using trace::Side;

/// All that one side sends before the other answers.
struct Turn {
    Bytes asked;
    Bytes answered;

    [[nodiscard]] bool isFramed() const {
        return !answered.empty() &&
               (startsAs(answered, protocol::frameForm) || startsAs(answered, protocol::jsonForm));
    }
};

std::vector<Turn> turnsOf(const std::string& name) {
    std::vector<Turn> turns;
    for (const trace::RecordingEntry& entry :
         trace::loadRecording(KEPT_RECORDINGS "/" + name + ".rec").entries) {
        const bool asks = entry.from == Side::tool;
        if (turns.empty() || (asks && !turns.back().answered.empty()))
            turns.emplace_back();
        protocol::append(asks ? turns.back().asked : turns.back().answered, entry.bytes);
    }
    return turns;
}

const std::vector<std::vector<Turn>>& sessions() {
    static const std::vector<std::vector<Turn>> all{turnsOf("ostra"), turnsOf("quenta"),
                                                    turnsOf("sales-dynamic")};
    return all;
}

service::LineLog emptyLog() {
    trace::RecordingHead head;
    head.device = "-";
    return {head, Clock::Time{}, 16 << 10, 1000};
}

/// The mark after one changed bit, with the exchange before it and, perhaps, the one behind it.
Signal signalAfter(const std::vector<Turn>& turns, std::size_t damaged, std::size_t bit, bool followed) {
    service::LineLog log = emptyLog();
    trace::Time now{0};
    const std::size_t end = std::min(turns.size(), damaged + (followed ? 2 : 1));
    for (std::size_t i = damaged - std::min<std::size_t>(damaged, 1); i < end; ++i) {
        Bytes answer = turns[i].answered;
        if (i == damaged)
            answer[bit / 8] = static_cast<std::uint8_t>(answer[bit / 8] ^ (1U << (bit % 8)));
        log.record.add(Side::tool, turns[i].asked, now += 100ms);
        log.record.add(Side::camera, answer, now += 10ms);
    }
    log.rows.update(now + 3s);
    return log.rows.recent().signal();
}

/// Every bit of the header and of short answers, some of the pictures.
std::size_t nextBit(std::size_t bit, std::size_t bits) {
    constexpr std::size_t wholeBits = 60 * 8;
    const bool inPicture = bit >= wholeBits && bit + wholeBits < bits;
    return bit + (inPicture ? 29 : 1);
}

TEST(QualityMarkOnALine, NamesEverySingleBitErrorOfAFramedAnswer) {
    std::size_t errors = 0;
    std::size_t missed = 0;
    for (const std::vector<Turn>& turns : sessions()) {
        for (std::size_t i = 0; i < turns.size(); ++i) {
            const std::size_t bits = turns[i].isFramed() ? turns[i].answered.size() * 8 : 0;
            for (std::size_t bit = 0; bit < bits; bit = nextBit(bit, bits)) {
                const bool followed = errors++ % 2 == 0;
                if (signalAfter(turns, i, bit, followed) == Signal::disturbed)
                    continue;
                ++missed;
                ADD_FAILURE() << "turn " << i << ", byte " << bit / 8 << ", bit " << bit % 8
                              << (followed ? ", followed" : ", last");
            }
        }
    }
    EXPECT_GT(errors, 10000U);
    EXPECT_EQ(missed, 0U);
    RecordProperty("errors", static_cast<int>(errors));
}

/// Sends the exchange with its answer in up to four pieces.
void passInPieces(service::LineLog& log, const Turn& turn, trace::Time& now, std::mt19937_64& random) {
    const auto draw = [&random](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
    log.record.add(Side::tool, turn.asked, now += 20ms);
    const protocol::ByteView answer(turn.answered);
    std::size_t at = 0;
    for (std::size_t pieces = 1 + draw(4); at < answer.size(); --pieces) {
        const std::size_t end = pieces <= 1 ? answer.size() : at + 1 + draw(answer.size() - at);
        log.record.add(Side::camera, answer.range(at, end), now += std::chrono::milliseconds(draw(40)));
        at = end;
        if (draw(4) == 0)
            log.rows.update(now);
    }
}

TEST(QualityMarkOnALine, RaisesNoFalseAlarm) {
    service::LineLog log = emptyLog();
    std::mt19937_64 random(1);
    trace::Time now{0};
    std::size_t exchanges = 0;
    while (exchanges < 100'000) {
        for (const std::vector<Turn>& turns : sessions()) {
            for (const Turn& turn : turns)
                passInPieces(log, turn, now, random);
            exchanges += turns.size();
            ASSERT_LE(turns.size(), service::RecentExchanges::count);
            log.rows.update(now);
            ASSERT_EQ(log.rows.recent().signal(), Signal::good) << exchanges;
            ASSERT_EQ(log.rows.recent().counts().unanswered, 0) << exchanges;
        }
    }
}

} // namespace
