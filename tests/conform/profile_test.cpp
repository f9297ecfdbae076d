// Profiles: their form, the keys, those of the repository.
#include "tests/conform/examined.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace conformtest {
namespace {

using testing::HasSubstr;

namespace fs = std::filesystem;

std::string complaintOf(const std::string& text) {
    try {
        static_cast<void>(emulator::cameraProfileOf(trace::readProfile(text)));
    } catch (const trace::ProfileError& error) {
        return error.what();
    }
    return {};
}

struct BadProfile {
    const char* text;
    const char* complaint;
};

void PrintTo(const BadProfile& bad, std::ostream* out) {
    *out << bad.text;
}

class RefusedProfile : public testing::TestWithParam<BadProfile> {};

TEST_P(RefusedProfile, NamesLineAndKey) {
    EXPECT_THAT(complaintOf(GetParam().text), HasSubstr(GetParam().complaint));
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusedProfile,
    testing::Values(
        BadProfile{"", "line 1: the first line of a profile is \"camera profile 1\""},
        BadProfile{"type ostra\n", "line 1: the first line"},
        BadProfile{"camera profile 2\ntype ostra\n",
                   "line 1: this program reads version 1 of profiles, not \"2\""},
        BadProfile{"camera profile 1\n", "line 2: a profile begins with the key \"type\""},
        BadProfile{"camera profile 1\n\naddress 1\n", "line 3: a profile begins with the key \"type\""},
        BadProfile{"camera profile 1\ntype ostra\ncolour red\n",
                   "line 3: there is no key \"colour\"; known: type,"},
        BadProfile{"camera profile 1\ntype\n", "line 2: \"type\" has no value"},
        BadProfile{"camera profile 1\ntype x\n", "line 2: type: there is no type \"x\""},
        BadProfile{"camera profile 1\ntype 0\n# more\ntype 1\n", "line 4: \"type\" stands here again"},
        BadProfile{"camera profile 1\ntype 0\naddress 256\n",
                   "line 3: address: \"256\" is not a number from 0 to 255"},
        BadProfile{"camera profile 1\ntype 0\ndelay getSn 1 2\n", "line 3: delay: 4 words are needed"},
        BadProfile{"camera profile 1\ntype 0\ndelay getSn 3 2 4\n", "line 3: delay: the times of"},
        BadProfile{"camera profile 1\ntype 0\ndelay nobody 1 2 3\n",
                   "line 3: delay: \"nobody\" is no request"},
        BadProfile{"camera profile 1\ntype 0\nfault loud\n",
                   "line 3: fault: fault \"loud\": there is no kind"},
        BadProfile{"camera profile 1\ntype 0\nline wet\n", "line 3: line: --line: there is no line \"wet\""},
        BadProfile{"camera profile 1\ntype 0\nvalue getSn 4\n",
                   "line 3: value: \"4\" is no pairs of hexadecimal digits"},
        BadProfile{"camera profile 1\ntype 0\nvalue reboot 41\n",
                   "line 3: value: \"reboot\" has no value that can be set"},
        BadProfile{"camera profile 1\ntype 0\ntext getSn\n", "line 3: text: \"getSn\" needs a text"},
        BadProfile{"camera profile 1\ntype 0\norientation 1 2 3\n", "line 3: orientation: 4 words"},
        BadProfile{"camera profile 1\ntype 0\nnewest-first yes\n",
                   "line 3: newest-first: \"yes\" is neither on nor off"},
        BadProfile{"camera profile 1\ntype 0\nrest soon\n", "line 3: rest: \"soon\" is not a number"}));

TEST(ProfileKeys, AcceptTheirExamples) {
    for (const emulator::ProfileKey& key : emulator::profileKeys()) {
        std::string text = "camera profile 1\ntype ostra\n";
        if (key.name != "type")
            text += std::string(key.name) + ' ' + std::string(key.example) + '\n';
        EXPECT_EQ(complaintOf(text), "") << key.name;
        EXPECT_FALSE(key.description.empty()) << key.name;
    }
}

TEST(ProfileText, IsReadAsItIsWritten) {
    trace::Profile profile;
    profile.add("type", "ostra");
    profile.remark("by hand");
    profile.add("text", "getSn  two  blanks");
    const trace::Profile read = trace::readProfile(trace::profileText(profile));
    ASSERT_EQ(read.entries.size(), 2U);
    EXPECT_EQ(read.entries[1].value, "getSn  two  blanks");
    EXPECT_EQ(read.entries[1].line, 4U);
}

TEST(DelayRange, FillsItsTimesEvenly) {
    using namespace std::chrono_literals;
    const emulator::DelayRange range{{}, 10ms, 20ms, 60ms};
    std::vector<emulator::Time> times;
    for (std::uint32_t n = 0; n < 1000; ++n)
        times.push_back(range.at(n));
    EXPECT_EQ(times.front(), 20ms);
    std::sort(times.begin(), times.end());
    EXPECT_LE(times.front() - 10ms, 1ms);
    EXPECT_LE(std::chrono::abs(times[500] - 20ms), 1ms);
    EXPECT_LE(std::chrono::abs(times[950] - 60ms), 1ms);
}

// --- the repository's --------------------------------------------------------------------------------------

std::vector<fs::path> repositoryProfiles() {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(CAMERA_SOURCE_DIR "/profiles"))
        paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    return paths;
}

class RepositoryProfile : public testing::TestWithParam<fs::path> {};

TEST_P(RepositoryProfile, LetsTheToolReadEverything) {
    const Examined found = examined(cameraOf(emulator::loadCameraProfile(GetParam())));
    EXPECT_TRUE(found.good.contains("tool")) << found.table;
}

TEST_P(RepositoryProfile, ComesBackFromItsCamera) {
    const Examined found = examined(cameraOf(emulator::loadCameraProfile(GetParam())));
    const Examined again = examinedAfter(found.text);
    EXPECT_EQ(again.different, found.different) << again.table;
    EXPECT_EQ(quirksOf(again.profile), quirksOf(found.profile));
}

TEST_P(RepositoryProfile, SaysThatItIsAnAssumption) {
    std::ifstream file(GetParam());
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(text, HasSubstr("\n# An assumption"));
    EXPECT_THAT(GetParam().filename().string(), testing::StartsWith("assumed-"));
}

INSTANTIATE_TEST_SUITE_P(All, RepositoryProfile, testing::ValuesIn(repositoryProfiles()),
                         [](const auto& test) {
                             std::string name = test.param.stem().string();
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

} // namespace
} // namespace conformtest
