// find, check, several ports and conform.
#include "emulator/line/cameraprofile.h"
#include "tests/cli/tool.h"
#include "tests/support/workingdirectory.h"

#include <QJsonArray>

#include <gmock/gmock.h>

namespace clitest {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Clock = std::chrono::steady_clock;

/// Answers at one rate only.
emulator::CameraSettings settingsAt(std::uint32_t rate, std::uint8_t address) {
    emulator::CameraSettings settings = quickSettings();
    settings.mindsBaudRate = true;
    settings.baudRate = rate;
    settings.address = address;
    return settings;
}

QJsonArray camerasIn(const Ending& ending) {
    const std::vector<QJsonObject> objects = objectsOf(ending.out);
    return objects.size() == 1 ? objects[0]["cameras"].toArray() : QJsonArray();
}

Ending find(const Camera& camera, const std::string& more = {}) {
    return run(joined({"--json", "-p", camera.port(), "find"}, wordsOf(more)));
}

bool isOnlyHeartbeats(Camera& camera) {
    return camera.front().withCamera([](const auto& c) {
        const auto& record = c.record();
        return std::all_of(record.frames.begin(), record.frames.end(),
                           [](const auto& frame) { return !frame.wellFormed || frame.code == 0x01; });
    });
}

TEST(Find, TellsRateAndAddress) {
    Camera camera(settingsAt(115200, 3));
    const Ending ending = find(camera);
    EXPECT_EQ(ending.code, done);
    ASSERT_EQ(camerasIn(ending).size(), 1) << ending.out;
    EXPECT_EQ(camerasIn(ending).at(0)["rate"].toInt(), 115200);
    EXPECT_EQ(camerasIn(ending).at(0)["address"].toInt(), 3);
    EXPECT_EQ(schemaComplaints(ending.out), "");
}

TEST(Find, SendsHeartbeatsOnly) {
    Camera camera;
    ASSERT_EQ(find(camera).code, done);
    EXPECT_GT(camera.requests(), 0U);
    EXPECT_TRUE(isOnlyHeartbeats(camera));
}

TEST(Find, EndsWithin5SecondsOnASilentPort) {
    Camera camera;
    camera.addFault("silent");
    const auto start = Clock::now();
    const Ending ending = find(camera);
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_EQ(ending.code, noAnswer);
    EXPECT_TRUE(camerasIn(ending).isEmpty());
    EXPECT_EQ(schemaComplaints(ending.out), "");
}

TEST(Find, TriesAllAddressesWithinAMinute) {
    const Camera camera(settingsAt(460800, 0xFE));
    const auto start = Clock::now();
    const Ending ending = find(camera, "--rates 460800 --addresses all");
    EXPECT_LT(Clock::now() - start, 60s);
    ASSERT_EQ(camerasIn(ending).size(), 1) << ending.out;
    EXPECT_EQ(camerasIn(ending).at(0)["address"].toInt(), 0xFE);
}

TEST(Find, FindsACameraThatAnswersAfter150Ms) {
    emulator::CameraSettings settings = settingsAt(460800, 1);
    settings.answerDelay = 150ms;
    const Camera camera(settings);
    const Ending ending = find(camera);
    ASSERT_EQ(camerasIn(ending).size(), 1) << ending.out;
    EXPECT_EQ(camerasIn(ending).at(0)["address"].toInt(), 1);
}

TEST(Find, EndsAtTheFirstCamera) {
    const Camera camera;
    EXPECT_EQ(camerasIn(find(camera, "--first")).size(), 1);
    EXPECT_EQ(camerasIn(find(camera)).size(), 4) << "a camera that takes every rate";
}

TEST(Find, TellsAPortThatVanishes) {
    Camera camera;
    camera.addFault("hang-up@heartbeat");
    const Ending ending = find(camera);
    EXPECT_EQ(ending.code, noPort);
    EXPECT_EQ(schemaComplaints(ending.out), "");
}

// --- check -------------------------------------------------------------------------------------------------

QJsonObject checkOf(Camera& camera) {
    const Ending ending = run(joined({"--json"}, camera.with("check")));
    EXPECT_EQ(schemaComplaints(ending.out), "");
    return objectsOf(ending.out).at(0);
}

TEST(Check, GoodCameraGetsAGoodVerdict) {
    Camera camera;
    const QJsonObject check = checkOf(camera);
    EXPECT_EQ(check["verdict"].toString().toStdString(), "good");
    EXPECT_EQ(check["line"]["requests"].toInt(), check["line"]["answers"].toInt());
    EXPECT_EQ(check["readings"]["pictures"]["value"].toArray().size(), 1);
}

TEST(Check, WrongCheckCodeCountsAsBroken) {
    Camera camera;
    camera.addFault("bad-check@getSn");
    const QJsonObject check = checkOf(camera);
    EXPECT_EQ(check["line"]["broken"].toInt(), 1);
    EXPECT_EQ(check["verdict"].toString().toStdString(), "odd");
    EXPECT_EQ(check["code"].toInt(), done);
}

TEST(Check, StrayBytesAreCounted) {
    Camera camera;
    camera.addFault("before=333435@getSn");
    const QJsonObject check = checkOf(camera);
    EXPECT_EQ(check["line"]["strayBytes"].toInt(), 3);
}

TEST(Check, FailedReadingFailsTheCheckUp) {
    Camera camera;
    camera.addFault("result=1@getSn");
    const QJsonObject check = checkOf(camera);
    EXPECT_EQ(check["verdict"].toString().toStdString(), "failed");
    EXPECT_EQ(check["code"].toInt(), refused);
    EXPECT_EQ(check["readings"]["serialNumber"]["verdict"].toString().toStdString(), "failed");
    EXPECT_EQ(check["readings"]["model"]["verdict"].toString().toStdString(), "good");
}

TEST(Check, SilentCameraEndsWithCode4) {
    Camera camera;
    camera.addFault("silent");
    EXPECT_EQ(checkOf(camera)["code"].toInt(), noAnswer);
}

TEST(Check, SilentJsonCameraEndsWithCode4) {
    Camera camera(emulator::CameraType::quenta);
    camera.addFault("silent");
    EXPECT_EQ(checkOf(camera)["code"].toInt(), noAnswer);
}

class CheckOfType : public testing::TestWithParam<emulator::CameraType> {};

TEST_P(CheckOfType, GoodCameraGetsAGoodVerdict) {
    Camera camera(GetParam());
    const QJsonObject check = checkOf(camera);
    EXPECT_EQ(check["type"].toInt(), static_cast<int>(GetParam()));
    EXPECT_EQ(check["verdict"].toString().toStdString(), "good");
    EXPECT_EQ(check["code"].toInt(), done);
}

INSTANTIATE_TEST_SUITE_P(All, CheckOfType,
                         testing::Values(emulator::CameraType::dorvel, emulator::CameraType::salesStatic,
                                         emulator::CameraType::quenta, emulator::CameraType::salesDynamic),
                         [](const auto& type) {
                             return "Type" + std::to_string(static_cast<unsigned>(type.param));
                         });

// --- several ports -----------------------------------------------------------------------------------------

TEST(SeveralPorts, EndWithTheHighestCode) {
    const Camera good;
    Camera silent;
    silent.addFault("silent");
    const Ending ending = run(joined({"--json", "-p", silent.port(), "-p", "missing"}, good.with("sn")));
    EXPECT_EQ(ending.code, noAnswer);
    const std::vector<QJsonObject> objects = objectsOf(ending.out);
    ASSERT_EQ(objects.size(), 3U) << ending.out;
    for (const QJsonObject& object : objects) {
        const std::string port = object["port"].toString().toStdString();
        EXPECT_EQ(object["code"].toInt(), port == good.port() ? done : port == "missing" ? noPort : noAnswer);
    }
    EXPECT_EQ(schemaComplaints(ending.out), "");
}

TEST(SeveralPorts, AreNamedInFrontOfEachLine) {
    const Camera one;
    const Camera two;
    const Ending ending = run(joined({"-p", two.port()}, one.with("sn")));
    EXPECT_EQ(ending.code, done);
    for (const Camera* const camera : {&one, &two})
        EXPECT_THAT(ending.out, HasSubstr(camera->port() + ": Serial number: SHELF000001\n"));
}

TEST(SeveralPorts, WorkAtTheSameTime) {
    const Camera one;
    const Camera two;
    const auto start = Clock::now();
    EXPECT_EQ(run(joined({"-p", two.port()}, one.with("sn A1"))).code, done);
    EXPECT_LT(Clock::now() - start, 11s) << "each stores for 6 s";
}

// --- conform -----------------------------------------------------------------------------------------------

TEST(Conform, WritesAProfileThatTheVirtualCameraTakes) {
    Camera camera(emulator::CameraType::quenta);
    camera.addFault("bad-check@jsonProperty");
    const Ending ending = run(joined({"--json"}, camera.with("conform --repeats 1 -o camera.profile")));
    EXPECT_EQ(ending.code, done) << ending.err;
    EXPECT_EQ(schemaComplaints(ending.out), "");
    EXPECT_EQ(emulator::loadCameraProfile("camera.profile").faults.size(), 1U);
}

TEST(Conform, PrintsSentencesWithTheirBytes) {
    const Camera camera(emulator::CameraType::quenta);
    const Ending ending = camera.run("conform --repeats 1");
    EXPECT_EQ(ending.code, done) << ending.err;
    EXPECT_THAT(ending.out,
                HasSubstr("  good  The heartbeat's answer is 01\n    > AA 5A 03 01 01 00 00 00 00 BD 9A\n"
                          "    < AA 5A 03 01 01 00 00 00 01 "));
    EXPECT_THAT(ending.out, HasSubstr("  not seen  The heater duty is one byte, 0 to 100\n"));
    EXPECT_THAT(ending.out, HasSubstr(" 0 different, "));
}

TEST(Conform, SilentCameraEndsWithCode4) {
    Camera camera(emulator::CameraType::quenta);
    camera.addFault("silent");
    const Ending ending = camera.run("conform --repeats 1 -o camera.profile");
    EXPECT_EQ(ending.code, noAnswer);
    EXPECT_FALSE(std::filesystem::exists("camera.profile"));
}

} // namespace
} // namespace clitest
