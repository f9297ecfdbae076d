// The link closes while one user holds the line and another waits.
#include "tests/support/cameratype.h"
#include "tests/turn/users.h"

#include <QElapsedTimer>
#include <QPushButton>

using namespace guitest;
using namespace std::chrono_literals;
using namespace turn;
using std::chrono::milliseconds;

namespace {

/// The longest timeout of the library is one second.
constexpr int closeLimitMs = 1600;
constexpr auto moments = {0ms, 40ms, 150ms, 400ms, 900ms};

struct TwoUsers {
    const char* first;
    const char* second;
    const char* fault = nullptr; ///< of the camera; nothing: it answers after 90 ms
};

void PrintTo(const TwoUsers& users, std::ostream* out) {
    *out << users.first << users.second;
}

class Closing : public testing::TestWithParam<TwoUsers> {};

TEST_P(Closing, EndsBothInTime) {
    const User& first = userCalled(GetParam().first);
    const User& second = userCalled(GetParam().second);
    for (const milliseconds moment : moments) {
        SCOPED_TRACE(std::string(first.name) + " and " + second.name + ", closed after " +
                     std::to_string(moment.count()) + " ms");
        TurnWindow bench({.cameraType = second.cameraTypes.front(),
                          .answerDelay = 90ms,
                          .pauses = TurnWindow::Pauses::real,
                          .answers = TurnWindow::Answers::plain});
        if (GetParam().fault != nullptr)
            bench.fault(GetParam().fault);
        Work firstWork = prepared(first, bench);
        Work secondWork = prepared(second, bench);
        first.start(firstWork);
        second.start(secondWork);
        QTest::qWait(static_cast<int>(moment.count()));
        QElapsedTimer time;
        time.start();
        find<QPushButton>(bench.window(), "btn_open")->click(); // an upload's question is answered with yes
        EXPECT_LT(time.elapsed(), closeLimitMs);
        EXPECT_EQ(text(bench.window(), "btn_open"), "打开串口");
        EXPECT_TRUE(eventually([&bench] { return bench.isIdle(); })) << "a job or an upload still runs";
    }
}

// Waits for a silent camera are the longest. Captures and second uploads of a kind need answers to continue.
INSTANTIATE_TEST_SUITE_P(
    Every, Closing,
    testing::Values(TwoUsers{"Location", "Degree", "silent"}, TwoUsers{"Degree", "Location"},
                    TwoUsers{"Location", "Version", "silent"}, TwoUsers{"Location", "Capture"},
                    TwoUsers{"Location", "CaptureJson", "silent"}, TwoUsers{"Degree", "CaptureV1"},
                    TwoUsers{"Location", "AppUpload", "silent"}, TwoUsers{"Degree", "AppUpload"},
                    TwoUsers{"Location", "AppUploadV1", "silent"},
                    TwoUsers{"Degree", "SystemUpload", "silent"}, TwoUsers{"Location", "SystemUpload"},
                    TwoUsers{"Location", "ModelUpload", "silent"}),
    [](const auto& test) {
        const bool silent = test.param.fault != nullptr;
        return std::string(test.param.first) + test.param.second + (silent ? "Silent" : "");
    });

} // namespace
