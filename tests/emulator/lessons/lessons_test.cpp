// Lessons: each shows its symptom to the real client; its remedy ends it.
#include "emulator/lessons/lessonrun.h"
#include "emulator/line/ptyfront.h"
#include "link/camerasp.h"
#include "tests/emulator/line/ptyclient.h"
#include "tests/emulator/program/program.h"

#include <filesystem>

namespace emulatortest {
namespace {

using namespace emulator;
using testing::HasSubstr;

constexpr std::uint32_t usualRate = 460800;
constexpr const char* endText = "这一课完成了。按 Ctrl+C 结束。";

/// A lesson on a pseudo-terminal. It checks for progress while the test waits.
class Classroom {
public:
    explicit Classroom(const char* lesson)
        : m_front(lessonCamera(*findLesson(lesson))),
          m_run(
              *findLesson(lesson), m_front, [this](const std::string& line) { m_said += line + '\n'; },
              [this](bool in) { in ? m_front.comeBack() : m_front.vanish(); }) {
        m_run.look();
    }

    PtyFront& front() { return m_front; }
    [[nodiscard]] std::string portName() const { return m_front.portName(); }
    [[nodiscard]] bool solved() const { return m_run.solved(); }
    /// The lesson praises and is solved.
    bool ends() { return hear().find("做得好") != std::string::npos && solved(); }
    /// Text since the last call.
    std::string hear() {
        m_run.look();
        return std::exchange(m_said, {});
    }
    /// Waits for the text.
    bool hears(const std::string& text) {
        return comesTrue([&] {
            m_run.look();
            return m_said.find(text) != std::string::npos;
        });
    }

private:
    PtyFront m_front;
    std::string m_said;
    LessonRun m_run;
};

TEST(Lesson, OneIsAHealthyCamera) {
    Classroom room("1");
    EXPECT_THAT(room.hear(), HasSubstr("点击“心跳测试”，灯变绿。"));
    CameraSp client(room.portName(), usualRate);
    EXPECT_TRUE(client.testHeartBeat());
    EXPECT_THAT(room.hear(), HasSubstr("下一步：点击“获取版本号”。"));
    EXPECT_EQ(client.getAppVersion(), "2.3.1");
    EXPECT_THAT(room.hear(), HasSubstr("下一步：点击“拍照”。"));
    EXPECT_TRUE(client.originCapture());
    ::usleep(300000); // the catalogue lists the picture by then
    const auto records = client.getOriginPicInfos();
    ASSERT_EQ(records.size(), 1U);
    const auto info =
        protocol::parseOriginRecord(ByteView(std::span(records[0].get(), protocol::origin_record::size)));
    client.getOriginTargetPic(static_cast<std::uint8_t>(info.id), info.fileSize);
    EXPECT_TRUE(room.ends());
}

TEST(Lesson, TwoIsSolvedByTheRightAddress) {
    Classroom room("2");
    EXPECT_THAT(room.hear(), HasSubstr("从机地址 05"));
    CameraSp client(room.portName(), usualRate);
    EXPECT_FALSE(client.testHeartBeat());
    EXPECT_THAT(room.hear(), HasSubstr("命令是发给别的地址的"));
    EXPECT_FALSE(client.testHeartBeat());
    EXPECT_EQ(room.hear(), "") << "a hint is given once";
    client.setSlaveAddress(5);
    EXPECT_TRUE(client.testHeartBeat());
    EXPECT_TRUE(room.ends());
}

/// Repeats, as answers of a loaded machine may come after the timeout.
bool answersSoon(CameraSp& client) {
    for (int tries = 0; tries < 5; ++tries) {
        if (client.testHeartBeat())
            return true;
    }
    return false;
}

TEST(Lesson, ThreeIsSolvedByTheRightRate) {
    Classroom room("3");
    EXPECT_THAT(room.hear(), HasSubstr("波特率 230400"));
    {
        CameraSp client(room.portName(), usualRate);
        EXPECT_FALSE(client.testHeartBeat());
    }
    EXPECT_THAT(room.hear(), HasSubstr("另一个波特率"));
    CameraSp client(room.portName(), 230400);
    EXPECT_TRUE(answersSoon(client));
    EXPECT_TRUE(room.ends());
}

TEST(Lesson, FourIsSolvedByReopeningThePort) {
    Classroom room("4");
    EXPECT_THAT(room.hear(), HasSubstr("插头松了"));
    const std::string before = room.portName();
    {
        CameraSp client(before, usualRate);
        EXPECT_TRUE(client.testHeartBeat());
        EXPECT_FALSE(client.testHeartBeat());
        EXPECT_TRUE(client.testHeartBeat());
        EXPECT_EQ(room.hear(), "");
        EXPECT_FALSE(client.testHeartBeat());
        EXPECT_THAT(room.hear(), HasSubstr("插头现在完全脱开了"));
        EXPECT_FALSE(client.testHeartBeat());
        EXPECT_EQ(room.portName(), "");
        EXPECT_TRUE(room.hears("必须重新打开"));
        EXPECT_FALSE(client.testHeartBeat()) << "the old opening stays dead";
    }
    CameraSp client(room.portName(), usualRate);
    EXPECT_TRUE(client.testHeartBeat());
    EXPECT_TRUE(room.ends());
}

TEST(Lesson, FiveIsSolvedByARestart) {
    Classroom room("5");
    room.front().withCamera([](VirtualCamera& camera) { camera.settings().rebootTime = 100ms; });
    EXPECT_THAT(room.hear(), HasSubstr("设置占空比失败，请重试"));
    CameraSp client(room.portName(), usualRate);
    EXPECT_TRUE(client.testHeartBeat());
    EXPECT_FALSE(client.setCommonProperty(15, {40}, 3));
    EXPECT_THAT(room.hear(), HasSubstr("结果是拒绝"));
    EXPECT_FALSE(client.setCommonProperty(15, {40}, 3)) << "trying again does not help";
    EXPECT_TRUE(client.rebootCamera());
    EXPECT_THAT(room.hear(), HasSubstr("再设置一次加热丝占空比"));
    ::usleep(300000);
    EXPECT_TRUE(client.setCommonProperty(15, {40}, 3));
    EXPECT_TRUE(room.ends());
}

TEST(Lesson, SixIsSilentAfterARestartThenSlow) {
    Classroom room("6");
    EXPECT_THAT(room.hear(), HasSubstr("不要断电"));
    EXPECT_EQ(room.front().withCamera([](VirtualCamera& camera) { return camera.settings().rebootTime; }),
              12s);
    room.front().withCamera([](VirtualCamera& camera) { camera.settings().rebootTime = 600ms; });
    CameraSp client(room.portName(), usualRate);
    EXPECT_TRUE(client.rebootCamera());
    EXPECT_THAT(room.hear(), HasSubstr("开始重启"));
    EXPECT_FALSE(client.testHeartBeat());
    EXPECT_THAT(room.hear(), HasSubstr("还在启动"));
    ::usleep(700000);
    EXPECT_FALSE(client.testHeartBeat()) << "the answer comes too late";
    EXPECT_THAT(room.hear(), HasSubstr("应答来得比工具等待的 0.2 秒晚"));
    EXPECT_FALSE(client.testHeartBeat());
    ::usleep(600000);
    EXPECT_FALSE(room.solved());
    EXPECT_TRUE(client.testHeartBeat());
    EXPECT_TRUE(room.ends());
}

TEST(Lesson, SevenLosesBytes) {
    constexpr int times = 30;
    Classroom room("7");
    EXPECT_THAT(room.hear(), HasSubstr("字节有时丢失"));
    PtyClient client(room.portName());
    Bytes whole;
    for (int i = 0; i < times; ++i) {
        client.write(hex(heartbeatRequest));
        protocol::append(whole, hex(heartbeatAnswer));
    }
    EXPECT_TRUE(room.hears("是线路的问题"));
    const Bytes heard = client.read(whole.size(), 300ms);
    EXPECT_FALSE(heard.empty());
    EXPECT_NE(heard, whole);
}

/// The texts that the coach gives now.
std::string textOf(const LessonCoach::Remark& remark) {
    std::string text;
    for (const std::string& line : remark.lines)
        text += line + '\n';
    return text;
}

TEST(Lesson, SevenIsSolvedByTighteningThePlug) {
    const Lesson& lesson = *findLesson("7");
    EXPECT_STREQ(lesson.line, "loose-plug");
    CameraBench bench;
    LessonCoach coach(lesson);
    const auto ask = [&](int times, const Bytes& request) {
        for (int i = 0; i < times; ++i)
            bench.ask(request);
        return coach.look(bench.camera, bench.now);
    };
    EXPECT_THAT(textOf(coach.look(bench.camera, bench.now)), HasSubstr("没有脱开"));
    EXPECT_EQ(textOf(ask(5, hex(heartbeatRequest))), "");
    EXPECT_THAT(textOf(ask(1, hex(heartbeatRequest))), HasSubstr("获取版本号"));
    const Bytes version = protocol::buildFrame(
        protocol::code(protocol::Command::getProperty),
        Bytes{static_cast<std::uint8_t>(protocol::code(protocol::PropertyId::appVersion))}, 1);
    const LessonCoach::Remark out = ask(2, version);
    EXPECT_EQ(out.plug, Plug::comesOut);
    EXPECT_EQ(out.line, nullptr);
    bench.now += 3s;
    const LessonCoach::Remark in = coach.look(bench.camera, bench.now);
    EXPECT_EQ(in.plug, Plug::goesIn);
    EXPECT_STREQ(in.line, "good");
    EXPECT_THAT(textOf(ask(5, hex(heartbeatRequest))), HasSubstr("信号良好"));
    EXPECT_TRUE(coach.solved());
}

/// tests/practice solves it.
TEST(Lesson, EightAsksForAnUpload) {
    Classroom room("8");
    EXPECT_THAT(room.hear(), HasSubstr("接受任何文件"));
    CameraSp client(room.portName(), usualRate);
    EXPECT_EQ(client.getAppVersion(), "2.3.1");
    EXPECT_THAT(room.hear(), HasSubstr("再点击“App固件升级”"));
}

TEST(Lesson, KeepsTheRecordOfAnUploadUnderWay) {
    CameraBench bench;
    LessonCoach coach(*findLesson("1"));
    EXPECT_NE(textOf(coach.look(bench.camera, bench.now)), "");
    bench.ask(hex(heartbeatRequest));
    bench.ask("AA 5A 01 1B 14 00 00 00 03 00 00 00 90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 7F 72 74 49",
              2s);
    ASSERT_TRUE(bench.camera.uploading());
    EXPECT_EQ(textOf(coach.look(bench.camera, bench.now)), "");
    bench.ask("61 62 63");
    EXPECT_THAT(textOf(coach.look(bench.camera, bench.now)), HasSubstr("灯是绿的"));
}

TEST(Lesson, FourIsSilentOnADeviceWithoutAPlug) {
    PtyFront front(lessonCamera(*findLesson("4")));
    std::string said;
    LessonRun run(*findLesson("4"), front, [&](const std::string& line) { said += line; });
    CameraSp client(front.portName(), usualRate);
    for (int i = 0; i < 4; ++i)
        client.testHeartBeat();
    run.look();
    run.look();
    EXPECT_THAT(said, HasSubstr("完全脱开"));
    EXPECT_FALSE(client.testHeartBeat());
    EXPECT_TRUE(comesTrue([&] {
        run.look();
        return said.find("已经插紧") != std::string::npos;
    }));
    EXPECT_TRUE(client.testHeartBeat());
    run.look();
    EXPECT_TRUE(run.solved());
}

TEST(Lesson, IsFoundByItsNumberOnly) {
    EXPECT_EQ(lessons().size(), 8U);
    for (const char* const wrong : {"", "0", "9", "-1", "one", "1.5"})
        EXPECT_EQ(findLesson(wrong), nullptr) << wrong;
}

TEST(LessonProgram, ListsTheLessons) {
    EXPECT_EQ(Program({"--lesson"}).wait(), 0);
    for (const Lesson& lesson : lessons())
        EXPECT_THAT(Program::text("out"), HasSubstr(lesson.title));
}

TEST(LessonProgram, TellsHowToReachItsPort) {
    Program program({"--lesson", "1"});
    EXPECT_TRUE(comesTrue([] {
        const std::string out = Program::text("out");
        return out.find("sudo virtual-camera --lesson 1 --link /dev/ttyUSB9") != std::string::npos &&
               out.find("shelf-camera -p /dev/") != std::string::npos;
    })) << Program::text("out");
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
}

TEST(LessonProgram, TeachesAtItsLink) {
    Program program({"--lesson", "2", "--link", "camera"});
    ASSERT_TRUE(comesTrue([] { return std::filesystem::is_symlink("camera"); }));
    {
        CameraSp client("camera", usualRate);
        EXPECT_FALSE(client.testHeartBeat());
        EXPECT_TRUE(comesTrue([] { return Program::text("out").find("别的地址") != std::string::npos; }));
        client.setSlaveAddress(5);
        EXPECT_TRUE(client.testHeartBeat());
    }
    EXPECT_TRUE(comesTrue([] { return Program::text("out").find(endText) != std::string::npos; }));
    EXPECT_EQ(Program::text("out").rfind("第 2 课：从机地址不对\n串口：camera\n", 0), 0U);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
}

/// The guide quotes the program.
TEST(LessonProgram, UsesTheTextsOfTheGuide) {
    const std::string guide = Program::text(USER_GUIDE);
    const auto expectInGuide = [&guide](std::string_view text) {
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            EXPECT_NE(guide.find(text.substr(0, end)), std::string::npos) << text.substr(0, end);
            text.remove_prefix(std::min(end + 1, text.size()));
        }
    };
    for (const Lesson& lesson : lessons()) {
        expectInGuide(lesson.title);
        expectInGuide(lesson.learns);
        expectInGuide(lesson.introduction);
        for (const LessonStep& step : lesson.steps)
            expectInGuide(step.text);
        for (const LessonHint& hint : lesson.hints)
            expectInGuide(hint.text);
    }
}

} // namespace
} // namespace emulatortest
