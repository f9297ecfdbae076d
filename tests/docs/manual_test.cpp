// The manual page and the completion that are made of options.
#include "cli/completion.h"
#include "cli/manualpage.h"
#include "cli/options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <fstream>

using testing::HasSubstr;

namespace {

cli::ManualText textWith(const std::string& description) {
    return {"2024-01-31", "1.2", description, {{"Do it", {"program --fast do"}}}, {"other"}};
}

std::string pageOf(CLI::App& app, const std::string& description = "Does things.") {
    return cli::manualPage(app, textWith(description));
}

/// What bash offers for these words of shelf-camera; the last one is completed.
std::string completionOf(const std::string& words) {
    CLI::App app;
    cli::Options options;
    cli::describeOptions(app, options);
    std::ofstream("completion.sh") << cli::bashCompletion(app, {{"TYPE", "ostra dorvel"}, {"FILE", "file"}})
                                   << "COMP_WORDS=(shelf-camera " << words << ")\n"
                                   << "COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_shelf_camera\n"
                                   << "echo \"${COMPREPLY[*]}\" >offered\n";
    EXPECT_EQ(std::system("bash completion.sh"), 0);
    std::string offered;
    std::ifstream file("offered");
    std::getline(file, offered);
    return offered;
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
