// A refused capture enables the controls while an older picture is still being downloaded.
#include "link/protocol/commands.h"
#include "tests/support/cameratype.h"
#include "tests/turn/users.h"

#include <QElapsedTimer>

using namespace guitest;
using namespace std::chrono_literals;
using namespace turn;
using protocol::Command;

namespace {

constexpr int endLimitMs = 30000;
constexpr int quickMs = 2000;
constexpr auto answerDelay = 30ms;

struct Generation {
    std::uint32_t cameraType;
    const char* user;
    const char* refusal; ///< fault
    const char* hiding;  ///< fault: what was refused is not in the catalogue
    const char* cut;     ///< fault: a picture that is one byte short
    Command read;
};

constexpr Generation first{cameratype::ostra,      "Capture",
                           "refuse@capture",       "hide-newest@catalogue",
                           "picture-size=-1@read", Command::originRead};
constexpr Generation second{cameratype::shelfDynamic, "CaptureV1",
                            "refuse@captureV1",       "hide-newest@catalogueV1",
                            "picture-size=-1@readV1", Command::readV1};

using Case = std::tuple<Generation, std::string>;

void PrintTo(const Generation& generation, std::ostream* out) {
    *out << generation.user;
}

std::string caseName(const testing::TestParamInfo<Case>& test) {
    const auto& [generation, user] = test.param;
    return generation.user + ("Then" + user);
}

class RefusedCapture : public testing::TestWithParam<Case> {
protected:
    explicit RefusedCapture(TurnWindow::Answers form = TurnWindow::Answers::plain) : answers(form) {
        bench.fault(generation.refusal);
        bench.fault(generation.hiding);
    }

    /// Waits until the controls are enabled.
    void capture() {
        capturer.start(capturing);
        bench.putPicturesBack();
        EXPECT_TRUE(eventually([this] { return capturer.isOffered(bench); }, endLimitMs));
    }

    const Generation generation = std::get<0>(GetParam());
    const TurnWindow::Answers answers;
    // Real pauses: the older picture is fetched while an upload is under way.
    TurnWindow bench{{.cameraType = generation.cameraType,
                      .answerDelay = answerDelay,
                      .pauses = TurnWindow::Pauses::real,
                      .answers = answers}};
    const User& capturer = userCalled(generation.user);
    const User& next = userCalled(std::get<1>(GetParam()));
    Work capturing = prepared(capturer, bench);
    Work work = prepared(next, bench);
};

TEST_P(RefusedCapture, DisturbsNoUpload) {
    capture();
    ASSERT_TRUE(next.canStart(work));
    next.start(work);
    EXPECT_TRUE(eventually([this] { return next.ended(work); }, endLimitMs)) << "the upload shows no result";
    EXPECT_TRUE(eventually([this] { return bench.isIdle(); }, endLimitMs)) << "a job still runs";
    expectOwnValues(next, work, false);
    bench.putPicturesBack(); // without the refused one, which the camera has all the same
    expectOwnValues(capturer, capturing, false);
    const emulator::CameraRecord record = bench.record();
    const LineRules rules = bench.lineRules();
    for (const QString& fault : uploadFaults(record, rules) + overlaps(record, rules))
        ADD_FAILURE() << "on the line: " << fault.toStdString();
    EXPECT_TRUE(next.isOffered(bench) && capturer.isOffered(bench)) << "still disabled";
}

INSTANTIATE_TEST_SUITE_P(First, RefusedCapture,
                         testing::Combine(testing::Values(first),
                                          testing::Values(std::string("AppUpload"),
                                                          std::string("SystemUpload"),
                                                          std::string("ModelUpload"))),
                         caseName);
INSTANTIATE_TEST_SUITE_P(V1, RefusedCapture,
                         testing::Combine(testing::Values(second),
                                          testing::Values(std::string("AppUploadV1"),
                                                          std::string("SystemUpload"),
                                                          std::string("ModelUpload"))),
                         caseName);

/// The download of the older picture never ends.
class EndlessDownload : public RefusedCapture {
protected:
    EndlessDownload() : RefusedCapture(TurnWindow::Answers::padded) {}

    void SetUp() override {
        bench.fault(generation.cut);
        capture();
        EXPECT_TRUE(eventually([this] { return bench.record().count(protocol::code(generation.read)) == 1; }))
            << "no picture was asked for";
        QTest::qWait(200); // all its bytes have arrived
        EXPECT_FALSE(bench.isIdle()) << "the download has ended";
    }

    void closeLink() {
        QElapsedTimer time;
        time.start();
        click(bench.window(), "btn_open");
        EXPECT_LT(time.elapsed(), quickMs) << "to close the link";
        EXPECT_EQ(text(bench.window(), "btn_open"), "打开串口");
    }
};

TEST_P(EndlessDownload, DelaysNoOtherUser) {
    ASSERT_TRUE(next.canStart(work)) << next.name << " is disabled";
    for (int round = 1; round <= 2; ++round) {
        QElapsedTimer time;
        time.start();
        next.start(work);
        EXPECT_LT(time.elapsed(), quickMs) << next.name << ", round " << round;
        expectOwnValues(next, work, false);
    }
    closeLink();
}

INSTANTIATE_TEST_SUITE_P(First, EndlessDownload,
                         testing::Combine(testing::Values(first),
                                          testing::Values(std::string("Heartbeat"), std::string("ModelInfo"),
                                                          std::string("Gyro"), std::string("List"))),
                         caseName);
INSTANTIATE_TEST_SUITE_P(V1, EndlessDownload,
                         testing::Combine(testing::Values(second),
                                          testing::Values(std::string("Heartbeat"), std::string("ModelInfo"),
                                                          std::string("Gyro"), std::string("ListV1"))),
                         caseName);

} // namespace
