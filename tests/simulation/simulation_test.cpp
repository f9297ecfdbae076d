// The simulation itself: the same seed gives the same session, and counterexamples are kept.
#include "tests/simulation/runner.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iomanip>
#include <set>
#include <sstream>

using namespace simulation;

namespace {

constexpr std::uint64_t repeatedSeeds = CAMERA_REPEATED_SEEDS;

std::string complaintsOf(const Outcome& outcome) {
    std::string text;
    for (const std::string& complaint : outcome.complaints)
        text += complaint + '\n';
    return text;
}

TEST(Simulation, SameSeedGivesTheSameSession) {
    std::set<std::uint64_t> hashes;
    for (std::uint64_t seed = 1; seed <= repeatedSeeds; ++seed) {
        const Scenario scenario = scenarioOf(seed);
        EXPECT_EQ(scenario, scenarioOf(seed));
        const Outcome once = runInChild(scenario);
        const Outcome again = runInChild(scenario);
        EXPECT_EQ(once.hash, again.hash) << "seed " << seed;
        EXPECT_EQ(once.seconds, again.seconds) << "seed " << seed;
        EXPECT_EQ(complaintsOf(once), complaintsOf(again)) << "seed " << seed;
        hashes.insert(once.hash);
    }
    EXPECT_GT(hashes.size(), repeatedSeeds * 9 / 10) << "different seeds give different sessions";
}

/// Runs simulate from seed 1 on; its output.
std::string outputOf(int sessions, int jobs) {
    const std::string command = std::string(SIMULATE_PROGRAM) + " --sessions " + std::to_string(sessions) +
                                " --jobs " + std::to_string(jobs) + " 2>/dev/null";
    std::FILE* const output = ::popen(command.c_str(), "r"); // NOLINT(cert-env33-c): a path of the build
    std::string text;
    for (int byte = std::fgetc(output); byte != EOF; byte = std::fgetc(output))
        text += static_cast<char>(byte);
    EXPECT_EQ(::pclose(output), 0);
    return text;
}

TEST(Simulation, SessionsDoNotDisturbEachOther) {
    constexpr int sessions = 20;
    std::uint64_t sum = 0;
    for (std::uint64_t seed = 1; seed <= sessions; ++seed)
        sum += runInChild(scenarioOf(seed)).hash;
    std::ostringstream hash;
    hash << "hash " << std::setw(16) << std::setfill('0') << std::hex << sum;
    for (const int jobs : {1, 4})
        EXPECT_NE(outputOf(sessions, jobs).find(hash.str()), std::string::npos) << jobs << " at a time";
}

TEST(Simulation, OrderOfThreadsComesFromTheSeed) {
    Scenario scenario = scenarioOf(1);
    scenario.preemption = 200;
    const Outcome one = runInChild(scenario);
    ++scenario.seed;
    EXPECT_NE(one.hash, runInChild(scenario).hash);
}

TEST(Simulation, ScenarioIsReadAsItIsWritten) {
    for (std::uint64_t seed = 1; seed <= repeatedSeeds; ++seed) {
        const Scenario scenario = scenarioOf(seed);
        const auto read = parseScenario(toText(scenario));
        ASSERT_TRUE(read) << toText(scenario);
        EXPECT_EQ(*read, scenario);
    }
    EXPECT_FALSE(parseScenario("type=0 order=1 preemption=0 paints=0; dance 1 2 +3"));
    EXPECT_FALSE(parseScenario(""));
}

TEST(Simulation, SessionsHaveFewFaults) {
    std::size_t disturbed = 0;
    for (std::uint64_t seed = 1; seed <= 1000; ++seed) {
        std::size_t faults = 0;
        for (const Step& step : scenarioOf(seed).steps)
            faults += infoOf(step.kind).fault ? 1U : 0U;
        EXPECT_LE(faults, mostFaults);
        disturbed += faults > 0 ? 1U : 0U;
    }
    EXPECT_GT(disturbed, 500U);
    EXPECT_LT(disturbed, 990U) << "some sessions go well";
}

/// Counterexamples of defects that are mended: a comment, then a scenario.
TEST(Simulation, MendedDefectsStayMended) {
    std::ifstream file(CAMERA_SOURCE_DIR "/tests/simulation/seeds.txt");
    ASSERT_TRUE(file);
    int scenarios = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.front() == '#')
            continue;
        const auto scenario = parseScenario(line);
        ASSERT_TRUE(scenario) << line;
        EXPECT_EQ(complaintsOf(runInChild(*scenario)), "") << line;
        ++scenarios;
    }
    EXPECT_GT(scenarios, 0);
}

} // namespace
