// Ctrl+C, readers that go, devices that vanish, questions on a terminal.
#include "tests/cli/tool.h"
#include "tests/support/workingdirectory.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

namespace clitest {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using Clock = std::chrono::steady_clock;

constexpr auto promptly = 3s; // a second, and the delays of a busy machine

/// Commands that are under way for long when a request is not answered.
struct LongCommand {
    const char* name;
    const char* line;
    const char* fault;
};

void PrintTo(const LongCommand& command, std::ostream* out) {
    *out << command.line;
}

class Interruption : public testing::TestWithParam<LongCommand> {
protected:
    Interruption() {
        std::ofstream("image.bin") << std::string(3000, 'x');
        camera.addFault(GetParam().fault);
    }

    /// Starts the command and waits until the camera has heard of it.
    void startTool(const Words& before = {}) {
        tool.emplace(joined(before, camera.with(GetParam().line)));
        ASSERT_TRUE(comesTrue([this] { return camera.requests() > 0; }));
        std::this_thread::sleep_for(100ms);
    }

    Camera camera;
    std::optional<Tool> tool;
};

TEST_P(Interruption, EndsTheCommandWithinASecond) {
    startTool();
    const auto start = Clock::now();
    tool->signal(SIGINT);
    const Ending ending = tool->end();
    EXPECT_LT(Clock::now() - start, promptly);
    EXPECT_EQ(ending.code, interrupted) << ending.err;
    for (const std::string& name : files::names())
        EXPECT_THAT(name, testing::AnyOf("out", "err", "image.bin", "folder"));
}

TEST_P(Interruption, PrintsOneJsonObject) {
    startTool({"--json"});
    tool->signal(SIGTERM);
    const Ending ending = tool->end();
    EXPECT_EQ(ending.code, interrupted);
    EXPECT_EQ(objectsOf(ending.out).back()["code"].toInt(), interrupted);
    EXPECT_EQ(schemaComplaints(ending.out), "");
}

TEST_P(Interruption, VanishedDeviceEndsTheCommandWithCode3) {
    startTool();
    camera.front().vanish();
    const Ending ending = tool->end();
    EXPECT_EQ(ending.code, noPort) << ending.out << ending.err;
    EXPECT_FALSE(ending.err.empty());
}

INSTANTIATE_TEST_SUITE_P(
    All, Interruption,
    testing::Values(LongCommand{"Capture", "capture", "silent@read"},
                    LongCommand{"PicturesGet", "pictures get 33 -o one.jpg", "silent@read"},
                    LongCommand{"PicturesGetAll", "pictures get-all -d folder", "silent@read"},
                    LongCommand{"UploadApp", "upload app image.bin", "no-verdict@appUpdate"},
                    LongCommand{"UploadModel", "upload model image.bin", "silent@modelUpdate"},
                    LongCommand{"SetSerialNumber", "sn A1", "late@reboot"},
                    LongCommand{"Check", "check", "silent@heartbeat"},
                    LongCommand{"Find", "find --addresses all", "silent@heartbeat"},
                    LongCommand{"Watch", "watch", "late@reboot"}),
    [](const auto& command) { return std::string(command.param.name); });

TEST(Interrupted, SecondOneEndsAtOnce) {
    Camera camera;
    camera.addFault("silent@read");
    Tool tool(camera.with("capture"));
    ASSERT_TRUE(comesTrue([&] { return camera.requests() > 0; }));
    tool.signal(SIGINT);
    tool.signal(SIGINT);
    EXPECT_EQ(tool.wait(), interrupted);
}

TEST(Interrupted, PortCanBeOpenedAfterwards) {
    Camera camera;
    Tool tool(camera.with("watch"));
    ASSERT_TRUE(comesTrue([&] { return camera.requests() > 0; }));
    tool.signal(SIGINT);
    ASSERT_EQ(tool.wait(), interrupted);
    EXPECT_EQ(camera.run("heartbeat").code, done);
}

TEST(Interrupted, WatchPrintsEachHeartbeatAndTheCounts) {
    Camera camera;
    camera.addFault("silent@heartbeat#2");
    Tool tool(joined({"--json"}, camera.with("watch")));
    ASSERT_TRUE(comesTrue([&] { return camera.requests() >= 3; }));
    tool.signal(SIGINT);
    const Ending ending = tool.end();
    EXPECT_EQ(ending.code, interrupted);
    const std::vector<QJsonObject> objects = objectsOf(ending.out);
    ASSERT_GE(objects.size(), 4U) << ending.out;
    EXPECT_TRUE(objects[0]["heartbeat"].toBool());
    EXPECT_FALSE(objects[1]["heartbeat"].toBool());
    EXPECT_EQ(objects.back()["asked"].toInt(), static_cast<int>(objects.size()) - 1);
    EXPECT_EQ(schemaComplaints(ending.out), "");
}

TEST(Interrupted, BatchIsResumed) {
    Camera camera;
    camera.addFault("silent@read#1");
    std::ofstream("jobs") << camera.job("sn") << camera.job("pictures get 33 -o one.jpg")
                          << camera.job("model");
    Tool tool({"--json", "batch", "jobs", "--resume", "state"});
    ASSERT_TRUE(comesTrue([] { return Process::text("state").find("\n1\n") != std::string::npos; }));
    ASSERT_TRUE(comesTrue([&] { return camera.requests() >= 3; }));
    tool.signal(SIGINT);
    EXPECT_EQ(tool.end().code, interrupted);
    EXPECT_FALSE(std::filesystem::exists("one.jpg"));
    const Ending second = run({"--json", "batch", "jobs", "--resume", "state"});
    EXPECT_EQ(second.code, done) << second.out << second.err;
    EXPECT_THAT(jobLines(second), testing::ElementsAre(2, 3));
    EXPECT_TRUE(std::filesystem::exists("one.jpg"));
}

// --- a reader that goes ------------------------------------------------------------------------------------

TEST(BrokenPipe, EndsWatchWithCode5) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    const Camera camera;
    std::thread reader([] {
        std::ifstream pipe("pipe");
        std::string line;
        std::getline(pipe, line);
    });
    Tool tool(camera.with("watch"), {"/dev/null", "pipe", "err"});
    reader.join();
    EXPECT_EQ(tool.wait(), file);
    EXPECT_THAT(Process::text("err"), HasSubstr("The output is not complete"));
}

// --- questions on a terminal -------------------------------------------------------------------------------

/// A terminal whose user answers.
class Terminal {
public:
    Terminal() : m_master(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        if (grantpt(m_master) != 0 || unlockpt(m_master) != 0)
            throw std::runtime_error("no pseudo-terminal");
        m_name = ptsname(m_master);
        m_keptOpen = open(m_name.c_str(), O_RDWR | O_NOCTTY);
    }
    ~Terminal() {
        close(m_keptOpen);
        close(m_master);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    [[nodiscard]] const std::string& name() const { return m_name; }
    /// Text written since the last call.
    [[nodiscard]] std::string shown() const {
        std::string text(65536, '\0');
        const ssize_t count = read(m_master, text.data(), text.size());
        text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return text;
    }
    void type(const std::string& text) const {
        ASSERT_EQ(write(m_master, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

private:
    int m_master;
    int m_keptOpen = -1;
    std::string m_name;
};

class Question : public testing::Test {
protected:
    Question() {
        tool.emplace(Words{"-p", camera.port(), "heater", "40"},
                     Process::Streams{terminal.name(), "out", "err"});
        comesTrue([] { return Process::text("err").find("Type y to go on") != std::string::npos; });
    }

    [[nodiscard]] int heater() {
        return camera.front().withCamera(
            [](auto& c) { return c.state().properties[emulator::property::heaterDuty].at(0); });
    }

    Camera camera;
    Terminal terminal;
    std::optional<Tool> tool;
};

TEST_F(Question, NamesTheCommand) {
    EXPECT_EQ(Process::text("err"), "heater 40: changes 1 camera(s). Type y to go on: ");
}

TEST_F(Question, YesGoesOn) {
    terminal.type("y\n");
    EXPECT_EQ(tool->wait(), done);
    EXPECT_EQ(heater(), 40);
}

TEST_F(Question, AnyOtherAnswerChangesNothing) {
    terminal.type("\n");
    EXPECT_EQ(tool->wait(), usage);
    EXPECT_THAT(Process::text("err"), HasSubstr("Cancelled"));
    EXPECT_EQ(heater(), 30);
}

TEST_F(Question, InterruptionChangesNothing) {
    tool->signal(SIGINT);
    EXPECT_EQ(tool->wait(), interrupted);
    EXPECT_EQ(heater(), 30);
}

TEST(Screen, ShowsProgressUnlessQuiet) {
    const Camera camera;
    const Terminal screen;
    Tool quiet(joined({"-q"}, camera.with("heater 40")), {"/dev/null", "out", screen.name()});
    EXPECT_EQ(quiet.wait(), done);
    EXPECT_EQ(screen.shown(), "");
    Tool loud(camera.with("heater 40"), {"/dev/null", "out", screen.name()});
    EXPECT_EQ(loud.wait(), done);
    EXPECT_THAT(screen.shown(), HasSubstr("waiting for the camera to store"));
}

} // namespace
} // namespace clitest
