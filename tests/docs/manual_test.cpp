// The manual page and the completion that are made of options.
#include "cli/options.h"
#include "demo/demooptions.h"
#include "emulator/program/options.h"
#include "manual/programs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <fstream>

using testing::HasSubstr;
using testing::Not;

namespace {

manual::ManualText textWith(const std::string& description) {
    return {"2024-01-31", "1.2", description, {{"Do it", {"program --fast do"}}}, {"other"}};
}

std::string pageOf(CLI::App& app, const std::string& description = "Does things.") {
    return manual::manualPage(app, textWith(description));
}

manual::ManualText datedText(const manual::Program& program) {
    manual::ManualText text = program.text;
    text.date = "2024-01-31";
    return text;
}

std::string pageOf(const manual::Program& program) {
    return manual::manualPage(*program.app, datedText(program));
}

/// The option's names as the page has them.
std::string inBold(std::string name) {
    for (std::size_t at = 0; (at = name.find('-', at)) != std::string::npos; at += 2)
        name.insert(at, "\\");
    return "\\fB" + name + "\\fR";
}

/// What bash offers for these words behind a program's name; the last one is completed.
std::string completionOf(const manual::Program& program, const std::string& words) {
    const std::string name = program.app->get_name();
    std::string function = "_" + name;
    std::replace(function.begin(), function.end(), '-', '_');
    std::ofstream("completion.sh") << manual::bashCompletion(*program.app, program.values) << "COMP_WORDS=("
                                   << name << ' ' << words << ")\n"
                                   << "COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
                                   << function << "\necho \"${COMPREPLY[*]}\" >offered\n";
    EXPECT_EQ(std::system("bash completion.sh"), 0);
    std::string offered;
    std::ifstream file("offered");
    std::getline(file, offered);
    return offered;
}

std::string completionOf(const std::string& words) {
    return completionOf(manual::shelfCamera(), words);
}

} // namespace

TEST(ManualPage, HasEveryOptionAndCommand) {
    CLI::App app("Does it", "do-it");
    bool fast = false;
    std::string name;
    app.add_flag("-f,--fast", fast, "Be quick");
    CLI::App* const command = app.add_subcommand("get", "Get one");
    command->add_option("-o,--output", name, "Its file")->type_name("FILE")->required();
    const std::string page = pageOf(app);
    EXPECT_THAT(page, HasSubstr(".TH DO\\-IT 1 \"2024-01-31\" \"1.2\""));
    EXPECT_THAT(page, HasSubstr("do\\-it \\- does it\n"));
    EXPECT_THAT(page, HasSubstr(".TP\n\\fB\\-f\\fR, \\fB\\-\\-fast\\fR\nBe quick\n"));
    EXPECT_THAT(page, HasSubstr(".TP\n\\fBget\\fR \\fB\\-o\\fR \\fIFILE\\fR\nGet one\n"));
    EXPECT_THAT(page, HasSubstr("    program \\-\\-fast do\n"));
    EXPECT_THAT(page, HasSubstr(".BR other (1)\n"));
}

TEST(ManualPage, MakesSectionsOfTheFooter) {
    CLI::App app("Does it", "do-it");
    app.footer("Exit codes: 0 done, 1 not done");
    EXPECT_THAT(pageOf(app), HasSubstr(".SH EXIT CODES\n.TP\n\\fB0\\fR\ndone\n.TP\n\\fB1\\fR\nnot done\n"));
}

TEST(ManualPage, PrintsDotsAndBackslashesAsTheyAre) {
    CLI::App app("Does it", "do-it");
    EXPECT_THAT(pageOf(app, ".TH is a\\b"), HasSubstr(".SH DESCRIPTION\n\\&.TH is a\\eb\n"));
}

TEST(BashCompletion, OffersCommands) {
    EXPECT_EQ(completionOf("che"), "check");
    EXPECT_EQ(completionOf("-p COM3 pictures get"), "get get-all");
}

TEST(BashCompletion, OffersOptionsOfTheCommand) {
    EXPECT_EQ(completionOf("--js"), "--json");
    EXPECT_EQ(completionOf("--json batch --k"), "--keep-going");
}

TEST(BashCompletion, OffersValues) {
    EXPECT_EQ(completionOf("-t do"), "dorvel");
    EXPECT_EQ(completionOf("--type = os"), "ostra");
    EXPECT_EQ(completionOf("door o"), "open");
    EXPECT_EQ(completionOf("gyro-state ''"), "on off");
}

TEST(BashCompletion, OffersFiles) {
    std::ofstream("app.bin") << "image";
    EXPECT_EQ(completionOf("upload app app"), "app.bin");
}

TEST(BashCompletion, OffersValuesOfTheVirtualCamera) {
    EXPECT_EQ(completionOf(manual::virtualCamera(), "--type sales-d"), "sales-dynamic");
    EXPECT_EQ(completionOf(manual::virtualCamera(), "--fault trunc"), "truncate");
    EXPECT_EQ(completionOf(manual::virtualCamera(), "--line long"), "long-cable");
}

TEST(BashCompletion, OffersOptionsOfTheDemo) {
    EXPECT_EQ(completionOf(manual::demo(), "--pic"), "--picture");
}

TEST(BashCompletion, OffersNothingForTheTool) {
    EXPECT_EQ(completionOf(manual::tool(), "''"), "");
}

TEST(ManualPage, LeavesOutEmptySections) {
    const std::string page = pageOf(manual::tool());
    EXPECT_THAT(page, HasSubstr(".SH DESCRIPTION\n"));
    for (const char* const title : {".SH OPTIONS", ".SH COMMANDS", ".SH EXAMPLES", "[ option ]"})
        EXPECT_THAT(page, Not(HasSubstr(title)));
}

TEST(Manual, HasEveryOptionOfTheVirtualCamera) {
    const std::string page = pageOf(manual::virtualCamera());
    std::istringstream help(emulator::helpText());
    int count = 0;
    for (std::string line; std::getline(help, line);) {
        if (!line.starts_with("  -"))
            continue;
        const std::string names = line.substr(2, line.find(' ', 2) - 2);
        const std::string name = names.substr(names.find("--"));
        EXPECT_THAT(page, HasSubstr(inBold(name)));
        ++count;
    }
    EXPECT_GE(count, 20);
}

TEST(Manual, HasEveryOptionOfTheDemo) {
    const std::string page = pageOf(manual::demo());
    for (const QCommandLineOption& option : DemoOptions().program.all())
        EXPECT_THAT(page, HasSubstr(inBold("--" + option.names().last().toStdString())));
}

TEST(Manual, HasAPageForEveryProgram) {
    std::vector<std::string> names;
    for (const manual::Program& program : manual::programs())
        names.push_back(program.app->get_name());
    EXPECT_THAT(names,
                testing::UnorderedElementsAre("shelf-camera", "shelf-camera-demo", "shelf-camera-practice",
                                              "shelf-camera-tool", "virtual-camera"));
}

TEST(Manual, ExamplesAreTakenByTheirPrograms) {
    for (const manual::Program& program : manual::programs())
        EXPECT_EQ(manual::badExample(program), "") << program.app->get_name();
}

TEST(Manual, NoticesABadExample) {
    manual::Program program = manual::demo();
    program.text.examples = {{"Go wrong", {"shelf-camera-demo --nonsense"}}};
    EXPECT_THAT(manual::badExample(program), HasSubstr("unknown option"));
}
