// batch: lists of jobs, their order, failures and continuation.
#include "tests/cli/tool.h"
#include "tests/support/workingdirectory.h"

#include <gmock/gmock.h>

namespace clitest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::string job(const Camera& camera, const std::string& command) {
    return camera.port() + " 1 0 " + command + "\n";
}

void writeJobs(const std::string& text) {
    std::ofstream("jobs") << text;
}

Ending batch(const Words& more = {}, const Words& before = {}) {
    return run(joined(joined(before, {"batch", "jobs"}), more));
}

/// Lines of the jobs that printed an object, in their order.
std::vector<int> jobLines(const Ending& ending) {
    std::vector<int> lines;
    for (const QJsonObject& object : objectsOf(ending.out))
        lines.push_back(object["jobLine"].toInt());
    return lines;
}

TEST(Batch, RunsTheJobsOfAPortInOrder) {
    const Camera camera;
    writeJobs("# remark\n\n" + job(camera, "sn") + job(camera, "heartbeat") + job(camera, "check"));
    const Ending ending = batch({}, {"--json"});
    EXPECT_EQ(ending.code, done);
    EXPECT_EQ(ending.err, "");
    EXPECT_THAT(jobLines(ending), ElementsAre(3, 4, 5));
    EXPECT_EQ(schemaComplaints(ending.out), "");
}

TEST(Batch, PrintsASummary) {
    Camera camera;
    camera.addFault("silent@getSn");
    writeJobs(job(camera, "heartbeat") + job(camera, "sn") + job(camera, "model"));
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
    writeJobs(job(bad, "sn") + job(bad, "model") + job(good, "sn") + job(good, "model"));
    const Ending ending = batch({}, {"--json"});
    EXPECT_EQ(ending.code, noAnswer);
    EXPECT_THAT(jobLines(ending), testing::UnorderedElementsAre(1, 3, 4));
}

TEST(Batch, KeepsGoingWhenAsked) {
    Camera camera;
    camera.addFault("silent@getSn");
    writeJobs(job(camera, "sn") + job(camera, "model"));
    const Ending ending = batch({"--keep-going"}, {"--json"});
    EXPECT_EQ(ending.code, noAnswer);
    EXPECT_THAT(jobLines(ending), ElementsAre(1, 2));
}

TEST(Batch, ResumesAfterAFailureWithoutRepeating) {
    Camera camera;
    camera.addFault("silent@getSn#1");
    writeJobs(job(camera, "heartbeat") + job(camera, "sn") + job(camera, "model"));
    EXPECT_EQ(batch({"--resume", "state"}).code, noAnswer);
    const Ending second = batch({"--resume", "state"}, {"--json"});
    EXPECT_EQ(second.code, done);
    EXPECT_THAT(jobLines(second), ElementsAre(2, 3));
    const Ending third = batch({"--resume", "state"}, {"--json"});
    EXPECT_EQ(third.code, done);
    EXPECT_EQ(third.out, "");
}

TEST(Batch, ResumesAfterAnInterruption) {
    Camera camera;
    camera.addFault("silent@read#1");
    writeJobs(job(camera, "sn") + job(camera, "pictures get 33 -o one.jpg") + job(camera, "model"));
    Tool tool({"--json", "batch", "jobs", "--resume", "state"});
    ASSERT_TRUE(comesTrue([] { return Process::text("state").find("\n1\n") != std::string::npos; }));
    ASSERT_TRUE(comesTrue([&] { return camera.requests() >= 3; }));
    tool.signal(SIGINT);
    EXPECT_EQ(tool.end().code, interrupted);
    EXPECT_FALSE(std::filesystem::exists("one.jpg"));
    const Ending second = batch({"--resume", "state"}, {"--json"});
    EXPECT_EQ(second.code, done) << second.out << second.err;
    EXPECT_THAT(jobLines(second), ElementsAre(2, 3));
    EXPECT_TRUE(std::filesystem::exists("one.jpg"));
}

TEST(Batch, IncompleteLineOfTheStateIsNoJob) {
    const Camera camera;
    std::string jobs;
    for (int i = 0; i < 12; ++i)
        jobs += job(camera, "heartbeat");
    writeJobs(jobs);
    ASSERT_EQ(batch({"--resume", "state"}).code, done);
    std::string state = Process::text("state");
    std::ofstream("state") << state.substr(0, state.find("\n12\n") + 2);
    EXPECT_THAT(jobLines(batch({"--resume", "state"}, {"--json"})), ElementsAre(12));
    EXPECT_EQ(Process::text("state"), state);
}

TEST(Batch, StateOfAnotherListIsRefused) {
    const Camera camera;
    writeJobs(job(camera, "sn"));
    ASSERT_EQ(batch({"--resume", "state"}).code, done);
    writeJobs(job(camera, "model"));
    const Ending ending = batch({"--resume", "state"});
    EXPECT_EQ(ending.code, usage);
    EXPECT_THAT(ending.err, StartsWith("The state file belongs to another job file: state"));
}

TEST(Batch, PortsWorkAtTheSameTime) {
    const Camera one;
    const Camera two;
    writeJobs(job(one, "sn A1") + job(two, "sn A2"));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(batch({}, {"--yes"}).code, done);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 11s) << "each stores for 6 s";
}

TEST(Batch, ChangesNeedAConfirmation) {
    Camera camera;
    writeJobs(job(camera, "heartbeat") + job(camera, "reboot"));
    const Ending ending = batch();
    EXPECT_EQ(ending.code, usage);
    EXPECT_EQ(ending.err, "The jobs change cameras; add --yes\n");
    EXPECT_EQ(camera.requests(), 0U);
}

TEST(Batch, BadLineIsRefusedBeforeTheFirstJob) {
    Camera camera;
    for (const char* const bad :
         {"x 1 0", "x 1 shiny sn", "x 999 0 sn", "x 1 0 fly", "x 1 0 watch", "x 1 0 find", "x 1 0 batch y"}) {
        writeJobs(job(camera, "heartbeat") + bad + "\n");
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
