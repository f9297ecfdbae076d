// The documents among themselves: links, pictures, and the user guide against the texts of the windows.
#include "tests/support/markdown.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>

namespace fs = std::filesystem;

namespace {

constexpr const char* userGuide = "docs/user-guide.zh-CN.md";

bool endsWith(const fs::path& file, std::string_view ending) {
    const std::string name = file.string();
    return name.size() >= ending.size() && std::equal(ending.rbegin(), ending.rend(), name.rbegin());
}

std::vector<fs::path> filesIn(const fs::path& folder, std::string_view ending) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(markdown::sourceFolder() / folder)) {
        if (entry.is_regular_file() && endsWith(entry.path(), ending))
            files.push_back(entry.path());
    }
    return files;
}

/// README, CONTRIBUTING, docs/ and the README of every folder.
std::vector<fs::path> documents() {
    const fs::path root = markdown::sourceFolder();
    std::vector<fs::path> found{root / "README.md", root / "CONTRIBUTING.md"};
    for (const auto& entry : fs::directory_iterator(root)) {
        const std::string name = entry.path().filename().string();
        const bool madeByTools = name.rfind("build", 0) == 0 || name == "out" || name == "dist";
        if (!entry.is_directory() || name.front() == '.' || madeByTools)
            continue;
        const std::vector<fs::path> inside = filesIn(name, ".md");
        found.insert(found.end(), inside.begin(), inside.end());
    }
    return found;
}

/// Empty if the target of a link is there, else what is missing.
std::string missingBehind(const fs::path& document, const std::string& target) {
    if (target.find("://") != std::string::npos)
        return {};
    const std::size_t hash = std::min(target.find('#'), target.size());
    const fs::path file = hash == 0 ? document : document.parent_path() / target.substr(0, hash);
    if (!fs::exists(file))
        return target;
    if (hash == target.size())
        return {};
    const std::vector<std::string> anchors = markdown::anchors(markdown::contentOf(file));
    const bool found = std::find(anchors.begin(), anchors.end(), target.substr(hash + 1)) != anchors.end();
    return found ? std::string() : target;
}

/// Where the pictures and links of all documents point to, as files.
std::set<fs::path> linkedFiles() {
    std::set<fs::path> files;
    for (const fs::path& document : documents()) {
        for (const std::string& target : markdown::targets(markdown::contentOf(document)))
            files.insert((document.parent_path() / target.substr(0, target.find('#'))).lexically_normal());
    }
    return files;
}

/// The pieces of a text between its place holders (%1), which the guide shows with values in them, and its
/// mnemonic.
std::vector<std::string> fixedPieces(const std::string& text) {
    static const std::regex placeHolder(R"(%\d|\\n|\(&amp;[A-Z]\))");
    std::vector<std::string> pieces;
    for (std::sregex_token_iterator piece(text.begin(), text.end(), placeHolder, -1), end; piece != end;
         ++piece) {
        std::string words = *piece;
        while (!words.empty() && words.back() == ' ') // blanks before a value
            words.pop_back();
        if (!words.empty())
            pieces.push_back(words);
    }
    return pieces;
}

/// Every text that the sources of a folder show.
std::set<std::string> textsOf(const fs::path& folder) {
    static const std::regex inSource(R"re((?:\btr|translated)\("([^"]+)"\)|NOOP\("\w+", "([^"]+)"\))re");
    static const std::regex inForm(
        R"re(name="(?:text|title|placeholderText)">\s*<string>([^<]+)</string>)re");
    std::set<std::string> texts;
    const auto collect = [&texts](const fs::path& file, const std::regex& pattern) {
        const std::string content = markdown::contentOf(file);
        for (std::sregex_iterator match(content.begin(), content.end(), pattern), end; match != end; ++match)
            texts.insert((*match)[1].matched ? (*match)[1] : (*match)[match->size() - 1]);
    };
    for (const fs::path& file : filesIn(folder, ".cpp"))
        collect(file, inSource);
    for (const fs::path& file : filesIn(folder, ".ui"))
        collect(file, inForm);
    return texts;
}

} // namespace

TEST(Documents, HaveNoBrokenLink) {
    for (const fs::path& document : documents()) {
        for (const std::string& target : markdown::targets(markdown::contentOf(document)))
            EXPECT_EQ(missingBehind(document, target), "") << document;
    }
}

TEST(Documents, AreAllListedInTheReadme) {
    const fs::path root = markdown::sourceFolder();
    const std::vector<std::string> listed = markdown::targets(markdown::contentOf(root / "README.md"));
    for (const auto& entry : fs::directory_iterator(root / "docs")) {
        if (!entry.is_regular_file())
            continue;
        const std::string name = "docs/" + entry.path().filename().string();
        EXPECT_GE(std::count(listed.begin(), listed.end(), name), 1) << name;
    }
}

TEST(Documents, ShowEveryPictureThatIsKept) {
    const std::set<fs::path> linked = linkedFiles();
    const std::vector<fs::path> pictures = filesIn("docs/images", ".png");
    EXPECT_FALSE(pictures.empty());
    for (const fs::path& picture : pictures)
        EXPECT_EQ(linked.count(picture.lexically_normal()), 1U) << picture;
}

TEST(Documents, KeepThePicturesThatTheScriptsMake) {
    const std::string script = markdown::contentOf(markdown::sourceFolder() / "scripts/screenshots.sh") +
                               markdown::contentOf(markdown::sourceFolder() / "packaging/windows/test.sh");
    static const std::regex row(R"re(\n  "(\S+) \S+ \d+")re");
    std::set<std::string> made;
    for (std::sregex_iterator match(script.begin(), script.end(), row), end; match != end; ++match)
        made.insert((*match)[1]);
    std::set<std::string> kept;
    for (const fs::path& picture : filesIn("docs/images", ".png"))
        kept.insert(picture.stem().string());
    EXPECT_EQ(kept, made);
}

TEST(UserGuide, KnowsEveryTextOfTheWindows) {
    const std::string guide = markdown::contentOf(markdown::sourceFolder() / userGuide);
    std::size_t texts = 0;
    for (const char* const folder : {"aids", "app", "dialogs", "pictures", "practice"}) {
        for (const std::string& text : textsOf(folder)) {
            ++texts;
            for (const std::string& piece : fixedPieces(text))
                EXPECT_NE(guide.find(piece), std::string::npos) << folder << ": " << text;
        }
    }
    EXPECT_GT(texts, 100U); // fewer: the texts were not found in the sources
}

TEST(UserGuide, HasTheKeysOfEveryWindow) {
    const std::string guide = markdown::contentOf(markdown::sourceFolder() / userGuide);
    const std::size_t begin = guide.find("\n## 键盘\n");
    ASSERT_NE(begin, std::string::npos);
    const std::string chapter = guide.substr(begin, guide.find("\n## ", begin + 1) - begin);
    const std::string table = markdown::contentOf(markdown::sourceFolder() / "app/windowkeys.cpp");
    static const std::regex row(R"re(\{"\w+", "[\w ]+", "(\S+)"\})re");
    std::size_t keys = 0;
    for (std::sregex_iterator match(table.begin(), table.end(), row), end; match != end; ++match, ++keys)
        EXPECT_NE(chapter.find((*match)[1]), std::string::npos) << (*match)[1];
    EXPECT_GT(keys, 30U);
}

TEST(UserGuide, ShowsAPictureInEachChapterOfAWindow) {
    const std::string guide = markdown::contentOf(markdown::sourceFolder() / userGuide);
    const std::vector<std::string> targets = markdown::targets(guide);
    const auto pictures = std::count_if(targets.begin(), targets.end(),
                                        [](const std::string& target) { return endsWith(target, ".png"); });
    EXPECT_GE(pictures, 15);
}
