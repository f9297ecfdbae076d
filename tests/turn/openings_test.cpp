// A reading window opens, and perhaps closes, shortly before an upload starts.
#include "link/protocol/commands.h"
#include "tests/support/cameratype.h"
#include "tests/turn/users.h"

using namespace guitest;
using namespace std::chrono_literals;
using namespace turn;
using std::chrono::milliseconds;

namespace {

constexpr int openingLimitMs = 20000;

/// Answers of the camera to reads of properties; it always answers uploads.
struct Reads {
    const char* name;
    milliseconds answerDelay;
    bool answered;
    std::vector<milliseconds> openFor;   ///< before the upload starts; the window stays open
    std::vector<milliseconds> closedFor; ///< the window is closed before the upload starts
};

std::vector<Reads> readsOf() {
    if (isThorough()) {
        const std::vector<milliseconds> leads{0ms, 20ms, 100ms, 200ms, 500ms};
        return {{"AnsweredAfter30ms", 30ms, true, leads, leads},
                {"AnsweredAfter90ms", 90ms, true, leads, leads},
                {"NotAnswered", 30ms, false, leads, leads}};
    }
    return {{"AnsweredAfter30ms", 30ms, true, {20ms, 200ms}, {100ms}},
            {"AnsweredAfter90ms", 90ms, true, {0ms, 500ms}, {20ms}},
            // Each of the four reads takes half a second.
            {"NotAnswered", 30ms, false, {0ms}, {100ms}}};
}

using Opening = std::tuple<std::string, std::string, Reads>;

void PrintTo(const Reads& reads, std::ostream* out) {
    *out << reads.name;
}

class Openings : public testing::TestWithParam<Opening> {
protected:
    void open(milliseconds lead, bool closesAgain);
    void uploadAfter(milliseconds lead, bool closesAgain, TurnWindow& bench);

    const User& reader = userCalled(std::get<0>(GetParam()));
    const User& uploader = userCalled(std::get<1>(GetParam()));
    const Reads reads = std::get<2>(GetParam());
    std::unique_ptr<TurnWindow> bench;
};

void expectUndisturbed(TurnWindow& bench, const std::set<std::uint8_t>& silentCodes) {
    EXPECT_TRUE(eventually([&bench] { return bench.isIdle(); }, openingLimitMs)) << "a job still runs";
    LineRules rules = bench.lineRules();
    rules.silentCodes = silentCodes;
    const emulator::CameraRecord record = bench.record();
    for (const QString& fault : uploadFaults(record, rules) + overlaps(record, rules))
        ADD_FAILURE() << "on the line: " << fault.toStdString();
}

void Openings::open(milliseconds lead, bool closesAgain) {
    SCOPED_TRACE(std::string(reader.name) + " opened " + std::to_string(lead.count()) + " ms before " +
                 uploader.name + (closesAgain ? " and closed again" : ""));
    const int before = failuresSoFar();
    if (bench == nullptr)
        bench = std::make_unique<TurnWindow>(
            TurnWindow::Setup{.cameraType = uploader.cameraTypes.front(), .answerDelay = reads.answerDelay});
    bench->renewCamera();
    std::set<std::uint8_t> silentCodes;
    if (!reads.answered) {
        bench->fault("silent@0x02");
        silentCodes.insert(protocol::code(protocol::Command::getProperty));
    }
    uploadAfter(lead, closesAgain, *bench);
    expectUndisturbed(*bench, silentCodes);
    if (failuresSoFar() != before)
        bench.reset(); // bytes left on the line would disturb the next one
}

void Openings::uploadAfter(milliseconds lead, bool closesAgain, TurnWindow& used) {
    Work reading = prepared(reader, used);
    Work upload = prepared(uploader, used);
    reader.start(reading);
    QTest::qWait(static_cast<int>(lead.count()));
    if (closesAgain)
        closeOwnWindow(reading);
    ASSERT_TRUE(uploader.canStart(upload));
    uploader.start(upload);
    EXPECT_TRUE(eventually([&] { return uploader.ended(upload); }, openingLimitMs))
        << "the upload shows no result";
    expectOwnValues(uploader, upload, false);
    if (closesAgain)
        return;
    EXPECT_TRUE(eventually([&] { return reader.ended(reading); }, openingLimitMs))
        << "the window shows nothing";
    expectOwnValues(reader, reading, false);
    EXPECT_TRUE(reading.window->isEnabled());
    closeOwnWindow(reading);
}

TEST_P(Openings, DoNotDisturbTheUpload) {
    for (const milliseconds lead : reads.openFor)
        open(lead, false);
    for (const milliseconds lead : reads.closedFor)
        open(lead, true);
}

std::string openingName(const testing::TestParamInfo<Opening>& test) {
    const auto& [reader, uploader, reads] = test.param;
    return reader + uploader + reads.name;
}

INSTANTIATE_TEST_SUITE_P(
    Every, Openings,
    testing::Combine(testing::Values(std::string("Location"), std::string("Degree")),
                     testing::Values(std::string("AppUpload"), std::string("AppUploadV1"),
                                     std::string("SystemUpload"), std::string("ModelUpload")),
                     testing::ValuesIn(readsOf())),
    openingName);

TEST(OpeningsWithADeadCamera, LetTheUploadFail) {
    const User& reader = userCalled("Location");
    const User& uploader = userCalled("SystemUpload");
    TurnWindow bench({.cameraType = cameratype::ostra});
    bench.fault("silent");
    Work reading = prepared(reader, bench);
    Work upload = prepared(uploader, bench);
    reader.start(reading);
    QTest::qWait(100);
    uploader.start(upload);
    EXPECT_TRUE(eventually([&] { return uploader.ended(upload) && reader.ended(reading); }, openingLimitMs));
    const auto code = protocol::code(protocol::Command::firewareAnnounce);
    expectUndisturbed(bench, {protocol::code(protocol::Command::getProperty), code});
    EXPECT_EQ(bench.record().count(code), 1U);
    EXPECT_EQ(uploader.shown(upload).at(0).text, "升级已完成，结果:失败！false");
    for (const Shown& each : reader.shown(reading))
        EXPECT_TRUE(each.failures.contains(each.text)) << each.where.toStdString();
}

} // namespace
