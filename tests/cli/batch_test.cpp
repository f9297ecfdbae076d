// batch: lists of jobs, their order, failures and continuation.
#include "tests/cli/tool.h"
#include "tests/support/workingdirectory.h"

#include <gmock/gmock.h>

namespace clitest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

void writeJobs(const std::string& text) {
    std::ofstream("jobs") << text;
}

Ending batch(const Words& more = {}, const Words& before = {}) {
    return run(joined(joined(before, {"batch", "jobs"}), more));
}

TEST(Batch, RunsTheJobsOfAPortInOrder) {
    const Camera camera;
    writeJobs("# remark\n\n" + camera.job("sn") + camera.job("heartbeat") + camera.job("check"));
    const Ending ending = batch({}, {"--json"});
    EXPECT_EQ(ending.code, done);
    EXPECT_EQ(ending.err, "");
    EXPECT_THAT(jobLines(ending), ElementsAre(3, 4, 5));
    EXPECT_EQ(schemaComplaints(ending.out), "");
}

TEST(Batch, PrintsASummary) {
    Camera camera;
    camera.addFault("silent@getSn");
    writeJobs(camera.job("heartbeat") + camera.job("sn") + camera.job("model"));
    const Ending ending = batch();
    EXPECT_EQ(ending.code, noAnswer);
    EXPECT_THAT(ending.out, HasSubstr("   1  " + camera.port() + "  done  heartbeat\n"));
    EXPECT_THAT(ending.out, HasSubstr("   2  " + camera.port() + "  failed (4)  sn\n"));
    EXPECT_THAT(ending.out, HasSubstr("   3  " + camera.port() + "  not run  model\n"));
}

TEST(Batch, FailedJobEndsOnlyTheListOfItsPort) {
    Camera bad;
    const Camera good;
    bad.addFault("silent@getSn");
    writeJobs(bad.job("sn") + bad.job("model") + good.job("sn") + good.job("model"));
    const Ending ending = batch({}, {"--json"});
    EXPECT_EQ(ending.code, noAnswer);
    EXPECT_THAT(jobLines(ending), testing::UnorderedElementsAre(1, 3, 4));
}

TEST(Batch, KeepsGoingWhenAsked) {
    Camera camera;
    camera.addFault("silent@getSn");
    writeJobs(camera.job("sn") + camera.job("model"));
    const Ending ending = batch({"--keep-going"}, {"--json"});
    EXPECT_EQ(ending.code, noAnswer);
    EXPECT_THAT(jobLines(ending), ElementsAre(1, 2));
}

TEST(Batch, ResumesAfterAFailureWithoutRepeating) {
    Camera camera;
    camera.addFault("silent@getSn#1");
    writeJobs(camera.job("heartbeat") + camera.job("sn") + camera.job("model"));
    EXPECT_EQ(batch({"--resume", "state"}).code, noAnswer);
    const Ending second = batch({"--resume", "state"}, {"--json"});
    EXPECT_EQ(second.code, done);
    EXPECT_THAT(jobLines(second), ElementsAre(2, 3));
    const Ending third = batch({"--resume", "state"}, {"--json"});
    EXPECT_EQ(third.code, done);
    EXPECT_EQ(third.out, "");
}

TEST(Batch, IncompleteLineOfTheStateIsNoJob) {
    const Camera camera;
    std::string jobs;
    for (int i = 0; i < 12; ++i)
        jobs += camera.job("heartbeat");
    writeJobs(jobs);
    ASSERT_EQ(batch({"--resume", "state"}).code, done);
    std::string state = Process::text("state");
    std::ofstream("state") << state.substr(0, state.find("\n12\n") + 2);
    EXPECT_THAT(jobLines(batch({"--resume", "state"}, {"--json"})), ElementsAre(12));
    EXPECT_EQ(Process::text("state"), state);
}

TEST(Batch, StateOfAnotherListIsRefused) {
    const Camera camera;
    writeJobs(camera.job("sn"));
    ASSERT_EQ(batch({"--resume", "state"}).code, done);
    writeJobs(camera.job("model"));
    const Ending ending = batch({"--resume", "state"});
    EXPECT_EQ(ending.code, usage);
    EXPECT_THAT(ending.err, StartsWith("The state file belongs to another job file: state"));
}

TEST(Batch, PortsWorkAtTheSameTime) {
    const Camera one;
    const Camera two;
    writeJobs(one.job("sn A1") + two.job("sn A2"));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(batch({}, {"--yes"}).code, done);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 11s) << "each stores for 6 s";
}

TEST(Batch, ChangesNeedAConfirmation) {
    Camera camera;
    writeJobs(camera.job("heartbeat") + camera.job("reboot"));
    const Ending ending = batch();
    EXPECT_EQ(ending.code, usage);
    EXPECT_EQ(ending.err, "The jobs change cameras; add --yes\n");
    EXPECT_EQ(camera.requests(), 0U);
}

TEST(Batch, BadLineIsRefusedBeforeTheFirstJob) {
    Camera camera;
    for (const char* const bad :
         {"x 1 0", "x 1 shiny sn", "x 999 0 sn", "x 1 0 fly", "x 1 0 watch", "x 1 0 find", "x 1 0 batch y"}) {
        writeJobs(camera.job("heartbeat") + bad + "\n");
        const Ending ending = batch();
        EXPECT_EQ(ending.code, usage) << bad;
        EXPECT_THAT(ending.err, StartsWith("Job file, line 2: ")) << bad;
    }
    EXPECT_EQ(camera.requests(), 0U);
}

TEST(Batch, EmptyListIsRefused) {
    writeJobs("# nothing\n");
    const Ending ending = batch();
    EXPECT_EQ(ending.code, usage);
    EXPECT_EQ(ending.err, "The job file holds no jobs\n");
}

TEST(Batch, MissingPortEndsWithCode3) {
    writeJobs("missing 1 0 sn\n");
    EXPECT_EQ(batch().code, noPort);
}

} // namespace
} // namespace clitest
