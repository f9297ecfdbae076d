// Virtual cameras under examination: planted deviations, profiles made of them, what is sent.
#include "link/protocol/commands.h"
#include "tests/conform/planted.h"
#include "tests/support/workingdirectory.h"

#include <gmock/gmock.h>

#include <fstream>

namespace conformtest {
namespace {

using namespace std::chrono_literals;
using emulator::CameraType;
using protocol::Command;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSubsetOf;

constexpr auto delayTolerance = 5ms;

std::set<std::string> withoutTool(std::set<std::string> checks) {
    checks.erase("tool");
    return checks;
}

/// Of requests that change nothing.
const std::set<std::uint8_t>& readingCodes() {
    static const std::set<std::uint8_t> codes{code(Command::heartbeat),       code(Command::getProperty),
                                              code(Command::getInfo),         code(Command::gyroTest),
                                              code(Command::originCatalogue), code(Command::catalogueV1)};
    return codes;
}

// --- planted deviations ------------------------------------------------------------------------------------

class PlantedDeviation : public testing::TestWithParam<Planted> {};

TEST_P(PlantedDeviation, IsNamedAndRepeated) {
    const Examined found = examinedWith(GetParam());
    EXPECT_EQ(withoutTool(found.different), GetParam().checks) << found.table;
    EXPECT_THAT(found.text, HasSubstr('\n' + GetParam().line + '\n'));
    const Examined again = examinedAfter(found.text);
    EXPECT_EQ(again.different, found.different) << again.table;
    EXPECT_EQ(quirksOf(again.profile), quirksOf(found.profile));
}

TEST_P(PlantedDeviation, GetsReadingRequestsOnly) {
    const Examined found = examinedWith(GetParam());
    EXPECT_THAT(found.codes, IsSubsetOf(readingCodes()));
    EXPECT_EQ(found.uploads, 0U);
}

std::vector<Planted> someDeviations() {
    std::vector<Planted> some;
    const auto all = plantedDeviations();
    for (std::size_t i = 0; i < all.size(); i += CAMERA_NTH_DEVIATION)
        some.push_back(all[i]);
    return some;
}

INSTANTIATE_TEST_SUITE_P(All, PlantedDeviation, testing::ValuesIn(someDeviations()),
                         [](const auto& test) { return test.param.name; });

// --- good cameras ------------------------------------------------------------------------------------------

class GoodCamera : public testing::TestWithParam<CameraType> {};

TEST_P(GoodCamera, DiffersInNothing) {
    const Examined found = examined(cameraWithPictures(GetParam()));
    EXPECT_THAT(found.different, IsEmpty()) << found.table;
    EXPECT_GE(found.good.size(), GetParam() == CameraType::quenta ? 20U : 50U);
}

TEST_P(GoodCamera, GetsReadingRequestsOnly) {
    const Examined found = examined(cameraWithPictures(GetParam()), {1});
    EXPECT_THAT(found.codes, IsSubsetOf(readingCodes()));
    EXPECT_TRUE(found.codes.contains(code(Command::heartbeat)));
    EXPECT_EQ(found.uploads, 0U);
}

INSTANTIATE_TEST_SUITE_P(Every, GoodCamera,
                         testing::Values(CameraType::ostra, CameraType::dorvel, CameraType::salesStatic,
                                         CameraType::quenta, CameraType::salesDynamic));

// --- the table ---------------------------------------------------------------------------------------------

TEST(ConformTable, HasEachNameAndSentenceOnce) {
    std::set<std::string> names;
    std::set<std::string> sentences;
    for (const conform::Check& check : conform::checks()) {
        EXPECT_TRUE(names.insert(check.name).second) << check.name;
        EXPECT_TRUE(sentences.insert(check.sentence).second) << check.sentence;
    }
    EXPECT_GE(names.size(), 60U);
}

TEST(ConformTable, SeesNothingOfASilentCamera) {
    VirtualCamera camera(CameraType::ostra);
    camera.addFault("silent");
    const Examined found = examined(std::move(camera), {1});
    EXPECT_TRUE(found.different.contains("answered"));
    EXPECT_THAT(found.good, testing::Not(testing::Contains("check-code")));
    EXPECT_THAT(linesOf(found.profile, {"delay", "text", "value"}), IsEmpty());
}

TEST(ConformTable, NamesADeviationOfSomeAnswers) {
    VirtualCamera camera(CameraType::ostra);
    camera.addFault("bad-check@getSn#2");
    const Examined found = examined(std::move(camera));
    EXPECT_THAT(found.table, HasSubstr("check-code (getSn bad-check 1/4)"));
    EXPECT_THAT(linesOf(found.profile, {"fault"}), IsEmpty());
}

// --- delays ------------------------------------------------------------------------------------------------

TEST(ConformDelays, AreRepeatedWithin5Ms) {
    VirtualCamera camera = cameraOf(emulator::cameraProfileOf(
        trace::readProfile("camera profile 1\ntype dorvel\ndelay getSn 12 18 45\ndelay heartbeat 3 5 9\n"
                           "delay catalogue 20 60 140\ndelay any 10 25 40\n")));
    const Examined found = examined(std::move(camera), {20});
    const std::vector<std::chrono::microseconds> planted{20ms, 60ms, 140ms};
    const Examined again = examinedAfter(found.text, {20});
    ASSERT_EQ(again.delays.size(), found.delays.size());
    std::chrono::microseconds largest{0};
    for (const auto& [name, delays] : found.delays) {
        for (std::size_t i = 0; i < delays.size(); ++i)
            largest = std::max(largest, std::chrono::abs(again.delays.at(name)[i] - delays[i]));
    }
    EXPECT_LE(largest, delayTolerance);
    RecordProperty("microseconds", static_cast<int>(largest.count()));
    for (std::size_t i = 0; i < planted.size(); ++i)
        EXPECT_LE(std::chrono::abs(found.delays.at("catalogue")[i] - planted[i]), delayTolerance);
}

// --- more than reading -------------------------------------------------------------------------------------

TEST(ConformMore, TakesAPictureAndUploads) {
    std::ofstream("app.bin") << std::string(3000, 'x');
    VirtualCamera camera = cameraWithPictures(CameraType::ostra);
    camera.settings().updateRestartTime = 5s;
    const Examined found = examined(std::move(camera), {1, true, "app.bin"});
    EXPECT_THAT(found.different, IsEmpty()) << found.table;
    for (const char* const name :
         {"picture", "picture-jpeg", "picture-digest", "upload", "return", "power-on"})
        EXPECT_TRUE(found.good.contains(name)) << name;
    EXPECT_EQ(found.uploads, 1U);
}

TEST(ConformMore, HearsWhatTheCameraSaysAfterPowerOn) {
    std::ofstream("app.bin") << std::string(3000, 'x');
    VirtualCamera camera = cameraWithPictures(CameraType::ostra);
    camera.settings().bootBytes = {'o', 'k'};
    const Examined found = examined(std::move(camera), {1, false, "app.bin"});
    EXPECT_EQ(found.different, std::set<std::string>{"power-on"}) << found.table;
    EXPECT_THAT(found.text, HasSubstr("\nboot-bytes 6f6b\n"));
}

} // namespace
} // namespace conformtest
