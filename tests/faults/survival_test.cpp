// Commands on bad lines: few runs, always the same ones. scripts/survival.sh makes many.
#include "tests/faults/survival.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

using namespace faultmatrix;

namespace {

std::string textOf(const Survival& survival) {
    return std::to_string(survival.works) + " work, " + std::to_string(survival.fails) + " fail, " +
           std::to_string(survival.wrong) + " wrong, " + std::to_string(survival.named) + " of " +
           std::to_string(survival.singleBits) + " named, " + std::to_string(survival.alarms) + " alarms";
}

class SurvivingCommand : public testing::TestWithParam<const Command*> {};

TEST_P(SurvivingCommand, WorksOnLinesThatLoseNothing) {
    for (const char* const line : {"good", "ftdi", "latency=2,jitter=12"}) {
        const Survival survival = survive(*GetParam(), line, 2);
        EXPECT_EQ(survival.works, 2U) << line << ": " << textOf(survival);
        EXPECT_EQ(survival.cleanRuns, 2U) << line;
        EXPECT_EQ(survival.alarms, 0U) << line << ": " << textOf(survival);
    }
}

INSTANTIATE_TEST_SUITE_P(Every, SurvivingCommand, testing::ValuesIn(methods()),
                         [](const testing::TestParamInfo<const Command*>& test) {
                             return test.param->method;
                         });

TEST(Survival, SameSeedsGiveTheSameRuns) {
    const Command& command = methodNamed("getSn");
    const Survival once = survive(command, "bits=1e-3", 20);
    EXPECT_EQ(survive(command, "bits=1e-3", 20), once) << textOf(once);
    EXPECT_EQ(once.works + once.fails + once.wrong, 20U);
}

TEST(Survival, DigestPreventsFalseSuccess) {
    for (const char* const method : {"appUpdate", "modelUpdate"}) {
        const Command& command = methodNamed(method);
        ASSERT_TRUE(hasDigestVerdict(command));
        const Survival survival = survive(command, "bits=1e-4", 20);
        EXPECT_EQ(survival.wrong, 0U) << method << ": " << textOf(survival);
        EXPECT_GT(survival.fails, 0U) << method;
        EXPECT_GT(survival.works, 0U) << method;
    }
}

TEST(Survival, UploadWithoutVerdictIsTakenForASuccess) {
    EXPECT_GT(survive(methodNamed("firewareUpdate"), "bits=1e-4", 20).wrong, 0U);
}

/// The client reads no check code: it accepts a changed value, and the mark tells.
TEST(Survival, MarkNamesWrongValues) {
    const Survival survival = survive(methodNamed("getModelInfo"), "bits=1e-3", 60);
    EXPECT_GT(survival.wrong, 0U) << textOf(survival);
    EXPECT_GT(survival.singleBits, 10U);
    EXPECT_EQ(survival.named, survival.singleBits) << textOf(survival);
}

/// The whole page when the environment names it: CAMERA_SURVIVAL_REPORT, CAMERA_SURVIVAL_RUNS.
TEST(Survival, PageNamesCommandsAndSums) {
    const char* const path = std::getenv("CAMERA_SURVIVAL_REPORT");
    const char* const runs = std::getenv("CAMERA_SURVIVAL_RUNS");
    const std::string page = path == nullptr ? "survival.md" : path;
    const std::vector<const Command*> some{&methodNamed("testHeartBeat"), &methodNamed("modelUpdate")};
    ASSERT_TRUE(writeSurvivalPage(page, path == nullptr ? some : methods(),
                                  runs == nullptr ? 1 : static_cast<unsigned>(std::stoul(runs))));
    std::ifstream in(page);
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    for (const char* const expected :
         {"|Command|bits=1e-7|", "|`testHeartBeat`|", "|`modelUpdate`|", "|uploads with a verdict by digest|",
          " single-bit errors in framed answers"})
        EXPECT_NE(text.find(expected), std::string::npos) << expected;
}

} // namespace
