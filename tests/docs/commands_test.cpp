// Commands in the documents: those of the virtual camera are run, those of shelf-camera parsed; scripts,
// presets and options must exist.
#include "cli/options.h"
#include "emulator/line/pty.h"
#include "tests/emulator/program/program.h"
#include "tests/support/markdown.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <regex>
#include <thread>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using emulatortest::Program;

/// One command line.
struct Typed {
    std::string document;
    std::string line;
};

void PrintTo(const Typed& typed, std::ostream* out) {
    *out << typed.document << ": " << typed.line;
}

std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream words(line);
    return {std::istream_iterator<std::string>(words), {}};
}

/// Lines of code blocks that begin with a program of the project, a script of it, or a tool that builds it.
std::vector<Typed> typedLines() {
    static const std::regex command(
        R"(    ((?:sudo )?(?:build/\S+/)?(?:virtual-camera|shelf-camera(?:-tool|-demo)?|\w+_tests)(?: .*)?|)"
        R"((?:scripts|packaging)/\S+\.sh.*|cmake .*))");
    std::vector<Typed> all;
    std::vector<fs::path> documents = {"README.md", "CONTRIBUTING.md"};
    for (const auto& entry : fs::directory_iterator(markdown::sourceFolder() / "docs")) {
        if (entry.path().extension() == ".md")
            documents.push_back("docs" / entry.path().filename());
    }
    std::sort(documents.begin(), documents.end());
    for (const fs::path& document : documents) {
        std::istringstream lines(markdown::contentOf(markdown::sourceFolder() / document));
        std::smatch match;
        for (std::string line; std::getline(lines, line);) {
            if (std::regex_match(line, match, command))
                all.push_back(
                    {document.string(), std::regex_replace(match[1].str(), std::regex(" +#.*"), "")});
        }
    }
    return all;
}

std::vector<Typed> typedLines(const std::string& program) {
    std::vector<Typed> some = typedLines();
    std::erase_if(some, [&](const Typed& typed) { return typed.line.find(program) == std::string::npos; });
    return some;
}

bool comesTrue(const std::function<bool()>& condition) {
    for (const auto end = std::chrono::steady_clock::now() + 10s; !condition();) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

/// The arguments of a line of the virtual camera, with devices and files that are there put in the place of
/// the technician's.
std::vector<std::string> argumentsOf(const std::string& line, const std::string& device) {
    const fs::path recordings = markdown::sourceFolder() / "tests/emulator/recordings";
    std::vector<std::string> words = wordsOf(line.substr(line.find("virtual-camera")));
    words.erase(words.begin());
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string& option = words[i - 1];
        if (option == "--device" || option == "--tap")
            words[i] = device;
        else if (option == "--link" || option == "--record" || option == "--pictures")
            words[i] = fs::path(words[i]).filename();
        else if (option == "--profile")
            words[i] = markdown::sourceFolder() / words[i];
        else if (option == "--replay")
            words[i] = recordings / (fs::exists(recordings / fs::path(words[i]).filename())
                                         ? fs::path(words[i]).filename()
                                         : fs::path("ostra.rec"));
    }
    return words;
}

class VirtualCameraLine : public testing::TestWithParam<Typed> {};

} // namespace

TEST_P(VirtualCameraLine, StartsAndEndsWithoutError) {
    emulator::Pty device;
    device.open();
    fs::create_directory("photos");
    std::ofstream("photos/1.jpg", std::ios::binary) << "\xFF\xD8\xFF\xD9";
    const std::vector<std::string> arguments = argumentsOf(GetParam().line, device.portName());
    Program program(arguments);
    if (arguments == std::vector<std::string>{"--lesson"}) {
        EXPECT_EQ(program.wait(), 0); // prints the lessons
    } else {
        EXPECT_TRUE(comesTrue([] { return !Program::text("out").empty(); })) << Program::text("err");
        std::this_thread::sleep_for(100ms); // it is there to stay
        program.signal(SIGINT);
        EXPECT_EQ(program.wait(), 0);
    }
    EXPECT_NE(Program::text("out"), "");
    EXPECT_EQ(Program::text("err"), "");
}

INSTANTIATE_TEST_SUITE_P(Documents, VirtualCameraLine, testing::ValuesIn(typedLines("virtual-camera")),
                         [](const auto& test) { return std::to_string(test.index); });

TEST(DocumentedCommands, OfShelfCameraAreTaken) {
    const std::vector<Typed> lines = typedLines("shelf-camera ");
    EXPECT_GT(lines.size(), 4U);
    for (const Typed& typed : lines) {
        const std::string command = typed.line.substr(0, typed.line.find_first_of("|>"));
        std::vector<std::string> words = wordsOf(command);
        words.erase(words.begin());
        EXPECT_NO_THROW(std::ignore = cli::parseOptions(words)) << typed.document << ": " << typed.line;
    }
}

/// Lines of programs with windows.
std::vector<Typed> installedLines() {
    std::vector<Typed> some = typedLines();
    std::erase_if(some, [](const Typed& typed) {
        return typed.line != "shelf-camera-tool" && typed.line != "shelf-camera-demo";
    });
    return some;
}

TEST(DocumentedCommands, OfTechniciansAreInstalled) {
    const std::string packaging = markdown::contentOf(markdown::sourceFolder() / "packaging/CMakeLists.txt");
    EXPECT_EQ(installedLines().size(), 2U);
    for (const Typed& typed : installedLines())
        EXPECT_NE(packaging.find(' ' + typed.line), std::string::npos) << typed.line;
    for (const Typed& typed : typedLines()) {
        if (typed.document == "docs/user-guide.zh-CN.md") {
            EXPECT_EQ(typed.line.find("build/"), std::string::npos) << typed.line;
        }
    }
}

TEST(DocumentedCommands, UseExistingScriptsAndOptions) {
    const std::vector<Typed> lines = typedLines(".sh");
    EXPECT_GT(lines.size(), 10U);
    for (const Typed& typed : lines) {
        const std::vector<std::string> words = wordsOf(typed.line);
        const fs::path script = markdown::sourceFolder() / words.front();
        ASSERT_TRUE(fs::is_regular_file(script)) << typed.document << ": " << typed.line;
        EXPECT_NE(fs::status(script).permissions() & fs::perms::owner_exec, fs::perms::none) << script;
        const std::string text = markdown::contentOf(script);
        for (const std::string& word : words) {
            if (word.starts_with("--")) {
                EXPECT_NE(text.find(word), std::string::npos) << typed.document << ": " << typed.line;
            }
        }
    }
}

TEST(DocumentedCommands, UseExistingPresets) {
    const std::string presets = markdown::contentOf(markdown::sourceFolder() / "CMakePresets.json");
    const std::regex preset(R"(--preset (\w+))");
    int looked = 0;
    for (const Typed& typed : typedLines("cmake")) {
        for (std::sregex_iterator match(typed.line.begin(), typed.line.end(), preset), end; match != end;
             ++match) {
            EXPECT_NE(presets.find("\"name\": \"" + (*match)[1].str() + '"'), std::string::npos)
                << typed.line;
            ++looked;
        }
    }
    EXPECT_GT(looked, 4);
}

TEST(DocumentedCommands, AreAllOfATestedKind) {
    const std::vector<Typed> all = typedLines();
    const std::size_t tried = typedLines("virtual-camera").size() + typedLines("shelf-camera ").size() +
                              typedLines(".sh").size() + typedLines("cmake ").size() +
                              installedLines().size() + typedLines("build/dev/tests/").size();
    EXPECT_EQ(all.size(), tried);
}
