// Every pair of users of the line; the second starts as soon as the first allows it.
#include "tests/support/cameratype.h"
#include "tests/turn/users.h"

#include <QElapsedTimer>

#include <array>
#include <span>

using namespace guitest;
using namespace std::chrono_literals;
using namespace turn;
using std::chrono::milliseconds;

namespace {

constexpr std::array answerDelays{0ms, 30ms, 60ms, 90ms, 150ms, 200ms};
/// For a first user that blocks the window or disables its controls.
constexpr std::array sampleDelays{60ms};
/// A single user of a quick camera shows right values, unless the machine stalls; then it repeats.
constexpr auto quickAnswer = 30ms;
constexpr auto quickSlack = 50ms;
constexpr int attempts = 3;
constexpr int pairLimitMs = 15000;
/// Number of failures after which a test stops.
constexpr int testLimitMs = 90000;

struct UserAndDelay {
    const User* first;
    milliseconds delay;
    std::size_t number; ///< of the delay in its list
};

std::vector<UserAndDelay> everything() {
    std::vector<UserAndDelay> all;
    for (const User& user : users()) {
        const bool sampled = !user.meetsOthers && !isThorough();
        const std::span<const milliseconds> delays =
            sampled ? std::span<const milliseconds>(sampleDelays) : answerDelays;
        for (std::size_t number = 0; number < delays.size(); ++number)
            all.push_back({&user, delays[number], number});
    }
    return all;
}

std::string nameOf(const UserAndDelay& test) {
    return std::string(test.first->name) + "At" + std::to_string(test.delay.count()) + "ms";
}

void PrintTo(const UserAndDelay& test, std::ostream* out) {
    *out << nameOf(test);
}

/// Second users for this camera type. A pair of several types runs under the first.
std::vector<const User*> partnersOf(const User& first, std::uint32_t cameraType) {
    const auto types = {cameratype::ostra, cameratype::quenta, cameratype::shelfDynamic};
    std::vector<const User*> partners;
    for (const User& second : users()) {
        const auto* const type = std::find_if(types.begin(), types.end(), [&](std::uint32_t each) {
            return first.existsFor(each) && second.existsFor(each);
        });
        const bool beginsByItself = !std::string_view(second.name).ends_with("ReturnWait");
        if (type != types.end() && *type == cameraType && beginsByItself)
            partners.push_back(&second);
    }
    return partners;
}

class Pairs : public testing::TestWithParam<UserAndDelay> {
protected:
    using Partners = std::vector<const User*>;

    /// Users whose controls stay enabled; disabled ones cannot meet the first.
    Partners runAlone(std::uint32_t cameraType, const Partners& partners, int attempt = 1);
    void runPair(const User& second);
    [[nodiscard]] bool isDue(const User& second) const;
    void useBench(std::uint32_t cameraType);
    void awaitEnd(const User& user, const Work& work, const QElapsedTimer& time);
    void expectCleanEnd(const Partners& partners, bool misled);

    const User& first = *GetParam().first;
    const milliseconds delay = GetParam().delay;
    int apart = 0;
    int together = 0;
    int failures = 0; ///< places that showed one

    std::unique_ptr<TurnWindow> bench;
};

void Pairs::useBench(std::uint32_t cameraType) {
    const bool fits = bench != nullptr && bench->setup().cameraType == cameraType;
    if (!fits) {
        bench.reset();
        bench =
            std::make_unique<TurnWindow>(TurnWindow::Setup{.cameraType = cameraType, .answerDelay = delay});
    }
    bench->renewCamera();
}

void Pairs::awaitEnd(const User& user, const Work& work, const QElapsedTimer& time) {
    const bool ended = eventually([&] { return user.ended(work); },
                                  std::max(0, pairLimitMs - static_cast<int>(time.elapsed())));
    EXPECT_TRUE(ended && time.elapsed() < pairLimitMs)
        << user.name << " has not ended in time, " << time.elapsed() << " ms after the start of "
        << first.name;
}

void Pairs::expectCleanEnd(const Partners& partners, bool misled) {
    EXPECT_TRUE(eventually([this] { return bench->isIdle(); }, pairLimitMs))
        << "a job or an upload still runs";
    const emulator::CameraRecord record = bench->record();
    const LineRules rules = bench->lineRules();
    QStringList faults = uploadFaults(record, rules, misled);
    if (!misled)
        faults += overlaps(record, rules);
    for (const QString& fault : faults)
        ADD_FAILURE() << "on the line: " << fault.toStdString();
    for (const User* const user : partners)
        EXPECT_TRUE(user->isOffered(*bench)) << user->name << " is still disabled";
}

Pairs::Partners Pairs::runAlone(std::uint32_t cameraType, const Partners& partners, int attempt) {
    SCOPED_TRACE(std::string(first.name) + " alone, answers after " + std::to_string(delay.count()) + " ms");
    useBench(cameraType);
    Work work = prepared(first, *bench);
    std::vector<Work> others;
    for (const User* const partner : partners)
        others.push_back(prepared(*partner, *bench));
    QElapsedTimer time;
    time.start();
    first.start(work);
    Partners startable;
    for (std::size_t i = 0; i < partners.size(); ++i) {
        if (partners[i]->canStart(others[i]))
            startable.push_back(partners[i]);
    }
    awaitEnd(first, work, time);
    expectCleanEnd(partners, first.misleads(delay));
    expectOwnValues(first, work, first.leavesLateAnswer(delay));
    const bool quick = delay <= quickAnswer && delay + quickSlack <= first.answerLimit;
    const bool again = quick && failuresShown(first, work) > 0 && attempt < attempts;
    if (quick && !again)
        expectRightValues(first, work);
    closeOwnWindow(work);
    for (Work& other : others)
        closeOwnWindow(other);
    if (again || first.leavesLateAnswer(delay))
        bench.reset();
    if (again)
        return runAlone(cameraType, partners, attempt + 1);
    apart += static_cast<int>(partners.size() - startable.size());
    return startable;
}

void Pairs::runPair(const User& second) {
    SCOPED_TRACE(std::string(first.name) + ", then " + second.name + ", answers after " +
                 std::to_string(delay.count()) + " ms");
    Work firstWork = prepared(first, *bench);
    Work secondWork = prepared(second, *bench);
    QElapsedTimer time;
    time.start();
    first.start(firstWork);
    if (!second.canStart(secondWork)) {
        ADD_FAILURE() << second.name << " is disabled now, but was not before";
        return;
    }
    second.start(secondWork);
    awaitEnd(first, firstWork, time);
    awaitEnd(second, secondWork, time);
    expectCleanEnd({&first, &second}, first.misleads(delay) || second.misleads(delay));
    const bool lateAnswers = first.leavesLateAnswer(delay) || second.leavesLateAnswer(delay);
    expectOwnValues(first, firstWork, lateAnswers);
    expectOwnValues(second, secondWork, lateAnswers);
    ++together;
    failures += failuresShown(first, firstWork) + failuresShown(second, secondWork);
    closeOwnWindow(firstWork);
    closeOwnWindow(secondWork);
}

/// A long second is run at half of the delays after a first that it can meet, at one after any other.
bool Pairs::isDue(const User& second) const {
    if (first.misleads(delay) && second.readsOnWhenMisled)
        return false;
    if (isThorough() || !second.isLong || first.misleads(delay))
        return true;
    const auto pair = static_cast<std::size_t>((&first - users().data()) + (&second - users().data()));
    const std::size_t number = GetParam().number;
    return first.meetsOthers ? pair % 2 == number % 2 : pair % sampleDelays.size() == number;
}

TEST_P(Pairs, GetTheirOwnAnswersInTurn) {
    QElapsedTimer time;
    time.start();
    for (const std::uint32_t type : {cameratype::ostra, cameratype::quenta, cameratype::shelfDynamic}) {
        const Partners partners = partnersOf(first, type);
        if (partners.empty())
            continue;
        for (const User* const second : runAlone(type, partners)) {
            if (!isDue(*second))
                continue;
            ASSERT_LT(time.elapsed(), testLimitMs) << "stopped before " << second->name;
            useBench(type);
            const int before = failuresSoFar();
            runPair(*second);
            if (failuresSoFar() != before || first.leavesLateAnswer(delay) || second->leavesLateAnswer(delay))
                bench.reset(); // bytes left on the line would disturb the next pair
        }
    }
    RecordProperty("pairs_together", together);
    RecordProperty("pairs_apart_by_disabled_controls", apart);
    RecordProperty("failures_shown", failures);
}

INSTANTIATE_TEST_SUITE_P(Every, Pairs, testing::ValuesIn(everything()),
                         [](const auto& test) { return nameOf(test.param); });

} // namespace
