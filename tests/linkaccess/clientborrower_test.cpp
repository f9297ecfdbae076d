// A window borrows the client: without a client, on the pool, and while links come and go.
#include "linkaccess/clientborrower.h"
#include "tests/support/recordingobserver.h"
#include "tests/support/stdoutcapture.h"

#include <QApplication>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

namespace {

/// Makes the protected members public.
class Window final : public QWidget, public ClientBorrower {
public:
    explicit Window(CameraSp* client) : ClientBorrower(this, client) {}
    using ClientBorrower::ask;
    using ClientBorrower::reporter;
    using ClientBorrower::runOnPool;
    using ClientBorrower::runWithoutClient;

    int changes = 0;

protected:
    void clientChanged() override { ++changes; }
};

/// Polls instead of waiting for events of a window, which may be gone by then.
void waitForPool() {
    QThreadPool::globalInstance()->waitForDone();
    QTest::qWait(20); // results are posted with a timer of no delay
}

/// A client without a port; every command fails at once.
std::unique_ptr<CameraSp> portlessClient() {
    return std::make_unique<CameraSp>(std::string(), 9600U);
}

} // namespace

TEST(ClientBorrower, WithoutAClientEveryCommandHasFailed) {
    const Window window(nullptr);
    EXPECT_FALSE(window.ask(QString(), &CameraSp::testHeartBeat));
    EXPECT_EQ(window.ask(QString(), &CameraSp::getModelInfo), "");
    EXPECT_TRUE(
        window.ask(QString(), &CameraSp::getCommonProperty, std::uint8_t{15}, std::uint8_t{2}).empty());
}

TEST(ClientBorrower, ReportsEveryCommandWithoutAClient) {
    Window window(nullptr);
    RecordingObserver observer;
    window.setObserver(&observer);
    window.ask(QStringLiteral("x"), &CameraSp::testHeartBeat);
    EXPECT_EQ(observer.missing, 1);
    window.runOnPool(
        QString(), &window, [](CameraSp*) { return 0; }, [](int) {});
    EXPECT_EQ(observer.missing, 2);
    EXPECT_TRUE(observer.began.isEmpty());
    waitForPool();
}

TEST(ClientBorrower, ReportsUseAndOutcome) {
    const auto client = portlessClient();
    Window window(client.get());
    RecordingObserver observer;
    window.setObserver(&observer);
    window.ask(QStringLiteral("heartbeat"), &CameraSp::testHeartBeat);
    EXPECT_EQ(observer.began, QStringList("heartbeat"));
    EXPECT_EQ(observer.ended, QStringList("heartbeat failed"));
    window.ask(QStringLiteral("door"), &CameraSp::opDoor, true);
    window.runOnPool(
        QStringLiteral("job"), &window, [](CameraSp*) { return std::string("text"); },
        [](const std::string&) {});
    EXPECT_EQ(observer.began, QStringList({"heartbeat", "door", "job"}));
    waitForPool();
    EXPECT_EQ(observer.ended, QStringList({"heartbeat failed", "door failed", "job ok"}));
}

TEST(ClientBorrower, DoesNotReportJobsOfAnEarlierLink) {
    const auto client = portlessClient();
    Window window(client.get());
    RecordingObserver observer;
    window.setObserver(&observer);
    window.runOnPool(
        QStringLiteral("job"), &window, [](CameraSp*) { return true; }, [](bool) {});
    window.attachClient(nullptr);
    waitForPool();
    EXPECT_EQ(observer.began, QStringList("job"));
    EXPECT_TRUE(observer.ended.isEmpty());
}

TEST(LinkUse, AListOfValuesIsPartlyReadWhenOneWas) {
    using Values = std::vector<std::vector<std::uint8_t>>;
    const CommandReport failure{CommandEnd::noAnswer};
    EXPECT_FALSE(outcomeOf(Values{}, failure).partly);
    EXPECT_FALSE(outcomeOf(Values{{}, {}}, failure).partly);
    EXPECT_TRUE(outcomeOf(Values{{}, {1}}, failure).partly);
    EXPECT_FALSE(outcomeOf(Values{{1}, {1}}, CommandReport{}).partly);
}

TEST(LinkUse, ResultHasItsOwnWords) {
    struct Result {
        [[nodiscard]] QString outcomeText(const CommandReport& report) const {
            return report.succeeded() ? QStringLiteral("good") : QStringLiteral("bad");
        }
    };
    EXPECT_EQ(outcomeOf(Result{}, CommandReport{}).text, "good");
    EXPECT_EQ(outcomeOf(Result{}, CommandReport{CommandEnd::refused}).text, "bad");
}

TEST(ClientBorrower, ReportsJobsBegunBeforeTheObserver) {
    const auto client = portlessClient();
    Window window(client.get());
    RecordingObserver observer;
    window.runOnPool(
        QStringLiteral("early"), &window, [](CameraSp*) { return 1; }, [](int) {});
    window.setObserver(&observer);
    EXPECT_EQ(observer.began, QStringList("early"));
    waitForPool();
    EXPECT_EQ(observer.ended, QStringList("early ok"));
    window.setObserver(nullptr);
}

TEST(ClientBorrower, JobThatThrowsHasFailed) {
    const auto client = portlessClient();
    Window window(client.get());
    RecordingObserver observer;
    window.setObserver(&observer);
    int applied = -1;
    const StdoutCapture out;
    window.runOnPool(
        QStringLiteral("job"), &window, [](CameraSp*) -> int { throw std::runtime_error("scripted"); },
        [&](int result) { applied = result; });
    waitForPool();
    EXPECT_EQ(applied, 0);
    EXPECT_EQ(observer.ended, QStringList("job failed"));
    EXPECT_EQ(observer.last.report.end, CommandEnd::failed);
    EXPECT_EQ(out.lines(), std::vector<std::string>{"command failed:scripted"});
    client->waitUntilUnused(); // the lease was given back
}

TEST(ClientBorrower, AppliesResultsOnTheUserInterfaceThread) {
    const auto client = portlessClient();
    Window window(client.get());
    QThread* worker = nullptr;
    QThread* applier = nullptr;
    std::string seen;
    window.runOnPool(
        QString(), &window,
        [&worker](CameraSp*) { return worker = QThread::currentThread(), std::string("result"); },
        [&](const std::string& result) {
            seen = result;
            applier = QThread::currentThread();
        });
    ASSERT_TRUE(QTest::qWaitFor([&seen] { return !seen.empty(); }));
    EXPECT_EQ(seen, "result");
    EXPECT_EQ(applier, qApp->thread());
    EXPECT_NE(worker, nullptr);
    EXPECT_NE(worker, qApp->thread());
}

TEST(ClientBorrower, JobGetsTheClientOrNone) {
    const auto client = portlessClient();
    for (CameraSp* attached : {client.get(), static_cast<CameraSp*>(nullptr)}) {
        Window window(attached);
        bool applied = false;
        CameraSp* given = nullptr;
        window.runOnPool(
            QString(), &window, [](CameraSp* borrowed) { return borrowed; },
            [&](CameraSp* borrowed) {
                applied = true;
                given = borrowed;
            });
        ASSERT_TRUE(QTest::qWaitFor([&applied] { return applied; }));
        EXPECT_EQ(given, attached);
    }
}

TEST(ClientBorrower, DropsTheResultOfAnEarlierLink) {
    const auto client = portlessClient();
    const auto next = portlessClient();
    Window window(client.get());
    bool applied = false;
    window.runOnPool(
        QString(), &window, [](CameraSp*) { return 1; }, [&applied](int) { applied = true; });
    window.attachClient(nullptr);
    window.attachClient(next.get());
    waitForPool();
    EXPECT_FALSE(applied);
}

TEST(ClientBorrower, DropsTheResultForAWindowThatIsGone) {
    const auto client = portlessClient();
    auto window = std::make_unique<Window>(client.get());
    bool applied = false;
    std::atomic<bool> worked = false;
    window->runOnPool(
        QString(), window.get(), [&worked](CameraSp*) { return worked = true, 1; },
        [&applied](int) { applied = true; });
    window.reset();
    waitForPool();
    EXPECT_TRUE(worked);
    EXPECT_FALSE(applied);
}

TEST(ClientBorrower, EndOfALinkCutsPausesOfItsJobs) {
    auto client = portlessClient();
    Window window(client.get());
    std::atomic<bool> ended = false;
    window.runOnPool(
        QString(), &window,
        [&ended](CameraSp* borrowed) {
            const bool slept = borrowed->pause(std::chrono::seconds(30));
            ended = true;
            return slept;
        },
        [](bool) {});
    const auto start = std::chrono::steady_clock::now();
    window.attachClient(nullptr);
    client->requestStop();
    client->waitUntilUnused();
    EXPECT_TRUE(ended);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    client.reset();
    waitForPool();
}

TEST(ClientBorrower, ManyJobsInARowLeaveTheClientUnused) {
    auto client = portlessClient();
    Window window(client.get());
    constexpr int jobs = 200;
    int applied = 0;
    for (int job = 0; job < jobs; ++job)
        window.runOnPool(
            QString(), &window, [](CameraSp* borrowed) { return borrowed->stopRequested(); },
            [&applied](bool stopped) { applied += stopped ? 0 : 1; });
    EXPECT_TRUE(QTest::qWaitFor([&applied] { return applied == jobs; }));
    client->waitUntilUnused();
}

TEST(ClientBorrower, IsDisabledWhileTheClientIsBusy) {
    Window window(nullptr);
    window.setExchangeAllowed(false);
    EXPECT_FALSE(window.isEnabled());
    window.setExchangeAllowed(true);
    EXPECT_TRUE(window.isEnabled());
}

TEST(ClientBorrower, LearnsThatTheLinkChanged) {
    const auto client = portlessClient();
    Window window(nullptr);
    window.attachClient(client.get());
    window.attachClient(nullptr);
    EXPECT_EQ(window.changes, 2);
}

TEST(ClientBorrower, RunsWithoutClientAndReport) {
    Window window(nullptr);
    RecordingObserver observer;
    window.setObserver(&observer);
    int applied = 0;
    Window::runWithoutClient(
        &window, [] { return 7; }, [&applied](int value) { applied = value; });
    waitForPool();
    EXPECT_EQ(applied, 7);
    EXPECT_EQ(observer.missing, 0);
}

TEST(ClientBorrower, ReportsValuesInOrderBeforeTheResult) {
    const auto client = portlessClient();
    Window window(client.get());
    std::vector<int> shown;
    const auto report = window.reporter<int>(&window, [&shown](const int& value) { shown.push_back(value); });
    window.runOnPool(
        QString(), &window,
        [report](CameraSp*) {
            for (int value = 1; value <= 3; ++value)
                report(value);
            return 4;
        },
        [&shown](int value) { shown.push_back(value); });
    waitForPool();
    EXPECT_EQ(shown, (std::vector<int>{1, 2, 3, 4}));
}

TEST(ClientBorrower, DropsReportsOfAnEarlierLink) {
    const auto client = portlessClient();
    Window window(client.get());
    int shown = 0;
    const auto report = window.reporter<int>(&window, [&shown](const int&) { ++shown; });
    report(1);
    window.attachClient(nullptr);
    QTest::qWait(10);
    EXPECT_EQ(shown, 0);
}

TEST(ClientBorrower, DropsReportsToADeadWindow) {
    const auto client = portlessClient();
    int shown = 0;
    auto window = std::make_unique<Window>(client.get());
    const auto report = window->reporter<int>(window.get(), [&shown](const int&) { ++shown; });
    report(1);
    window.reset();
    QTest::qWait(10);
    EXPECT_EQ(shown, 0);
}
