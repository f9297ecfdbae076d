// Readings: values, verdicts and reasons of answers.
#include "service/readings.h"
#include "tests/link/linktest.h"
#include "tests/support/answers.h"

#include <QJsonArray>
#include <QJsonObject>

#include <set>

namespace {

using service::ReadValue;
using service::Verdict;

class Readings : public LinkTest {
protected:
    ReadValue read(const char* key, protocol::CameraType type = protocol::CameraType::ostra) {
        return service::readingOf(key)->read(camera, type);
    }
    static void answerProperty(std::uint8_t id, std::string_view value, std::uint8_t result = 0) {
        fake_serial::willRead(answers::property(0x02, id, value, result));
    }
};

TEST_F(Readings, KeysAreUnique) {
    std::set<std::string> keys;
    for (const service::Reading& reading : service::readings())
        keys.insert(reading.key);
    EXPECT_EQ(keys.size(), service::readings().size());
    EXPECT_EQ(service::readingOf("nothing"), nullptr);
}

TEST_F(Readings, PercentIsANumber) {
    answerProperty(15, "\x1E");
    const ReadValue value = read("heater");
    EXPECT_EQ(value.verdict, Verdict::good);
    EXPECT_EQ(value.value, QJsonValue(30));
    EXPECT_EQ(value.text.toStdString(), "30");
}

TEST_F(Readings, PercentAbove100IsOdd) {
    answerProperty(15, "\x65");
    const ReadValue value = read("heater");
    EXPECT_EQ(value.verdict, Verdict::odd);
    EXPECT_EQ(value.value, QJsonValue(101));
    EXPECT_EQ(value.reason.toStdString(), "不是 0 到 100 的百分比");
}

TEST_F(Readings, OneAngleIsTooShort) {
    answerProperty(10, "\x1E");
    const ReadValue value = read("angles");
    EXPECT_EQ(value.verdict, Verdict::failed);
    EXPECT_TRUE(value.value.isNull());
    EXPECT_EQ(value.end, CommandEnd::unusable);
}

TEST_F(Readings, AnglesAreTwoNumbers) {
    answerProperty(10, "\x1E\x3C");
    EXPECT_EQ(read("angles").value, QJsonValue(QJsonArray{30, 60}));
}

TEST_F(Readings, RefusalFails) {
    answerProperty(15, "", 1);
    const ReadValue value = read("heater");
    EXPECT_EQ(value.verdict, Verdict::failed);
    EXPECT_EQ(value.end, CommandEnd::refused);
    EXPECT_FALSE(value.reason.isEmpty());
}

TEST_F(Readings, SilenceFails) {
    const ReadValue value = read("heartbeat");
    EXPECT_EQ(value.verdict, Verdict::failed);
    EXPECT_EQ(value.end, CommandEnd::noAnswer);
}

TEST_F(Readings, GyroTestOfAnotherTextIsOdd) {
    answer("33 66 61 69 6C");
    const ReadValue value = read("gyroTest");
    EXPECT_EQ(value.verdict, Verdict::odd);
    EXPECT_EQ(value.value, QJsonValue(false));
    EXPECT_EQ(value.reason.toStdString(), "陀螺仪自检没有通过：3fail");
}

TEST_F(Readings, JsonCameraHasNoCatalogue) {
    EXPECT_EQ(read("pictures", protocol::CameraType::quenta).value, QJsonValue(QJsonArray()));
    EXPECT_TRUE(fake_serial::writes().empty());
}

TEST_F(Readings, JsonVersionIsThatOfTheAnswer) {
    fake_serial::willRead(answers::json(R"({"result":0,"version":"1.0.3"})"));
    EXPECT_EQ(read("appVersion", protocol::CameraType::quenta).value, QJsonValue("1.0.3"));
}

TEST_F(Readings, AnswerWithoutAJsonVersionIsOdd) {
    fake_serial::willRead(answers::json(R"({"result":0})"));
    EXPECT_EQ(read("appVersion", protocol::CameraType::quenta).verdict, Verdict::odd);
}

TEST_F(Readings, TextEndsAtItsFirstZero) {
    using namespace std::string_view_literals;
    EXPECT_EQ(service::cameraWords("2.3\0.1"sv).toStdString(), "2.3");
}

} // namespace
