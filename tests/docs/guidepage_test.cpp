// The page that is made of the user guide for the packages.
#include "tests/support/markdown.h"
#include "tests/support/process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using testing::HasSubstr;

namespace {

namespace fs = std::filesystem;

int makePage(const fs::path& document, const std::string& page) {
    const fs::path program = markdown::sourceFolder() / "packaging/guide/makeguide.py";
    return Process(program.string(), {document.string(), page}, {}).wait();
}

std::size_t countOf(const std::string& text, const std::string& words) {
    std::size_t count = 0;
    for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1))
        ++count;
    return count;
}

TEST(GuidePage, HasEveryHeadingAndPicture) {
    const fs::path guide = markdown::sourceFolder() / "docs/user-guide.zh-CN.md";
    ASSERT_EQ(makePage(guide, "guide.html"), 0) << Process::text("err");
    const std::string source = markdown::contentOf(guide);
    const std::string page = markdown::contentOf("guide.html");
    for (const std::string& anchor : markdown::anchors(source))
        EXPECT_EQ(countOf(page, "id=\"" + anchor + "\""), 1U) << anchor;
    EXPECT_EQ(countOf(page, "src=\"data:image/png;base64,"), countOf(source, "](images/"));
    EXPECT_EQ(countOf(page, "<img "), countOf(page, "src=\"data:image/png;base64,"));
    EXPECT_EQ(countOf(page, "<table>"), countOf(source, "\n|---"));
}

TEST(GuidePage, JoinsChineseLinesWithoutABlank) {
    std::ofstream("lines.md") << "# 手册\n\n第一行\n第二行\n\n    第一行\n    第二行\n";
    ASSERT_EQ(makePage("lines.md", "lines.html"), 0) << Process::text("err");
    const std::string page = markdown::contentOf("lines.html");
    EXPECT_THAT(page, HasSubstr("<p>第一行第二行</p>"));
    EXPECT_THAT(page, HasSubstr("第一行\n第二行"));
}

TEST(GuidePage, LinkThatLeadsNowhereIsAnError) {
    std::ofstream("broken.md") << "# 手册\n\n[安装](#安装)和[别处](other.md)\n\n## 安装\n";
    EXPECT_EQ(makePage("broken.md", "broken.html"), 1);
    EXPECT_THAT(Process::text("err"), HasSubstr("other.md"));
    EXPECT_FALSE(fs::exists("broken.html"));
}

TEST(GuidePage, MissingPictureIsAnError) {
    std::ofstream("picture.md") << "# 手册\n\n![窗口](images/none.png)\n";
    EXPECT_NE(makePage("picture.md", "picture.html"), 0);
    EXPECT_FALSE(fs::exists("picture.html"));
}

} // namespace
