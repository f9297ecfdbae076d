// The tables of translations against the texts in the sources.
#include "cli/english.h"
#include "language/language.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>

namespace clitest {
namespace {

namespace fs = std::filesystem;

/// Reads the string literals of a source; adjacent ones are one.
class Literals {
public:
    explicit Literals(std::string source) : m_source(std::move(source)) {
        while (m_at < m_source.size())
            step();
        finish();
    }

    [[nodiscard]] const std::vector<std::string>& all() const { return m_all; }

private:
    [[nodiscard]] bool startsWith(const char* text) const {
        return m_source.compare(m_at, std::strlen(text), text) == 0;
    }

    void step() {
        if (startsWith("//")) {
            m_at = std::min(m_source.find('\n', m_at), m_source.size());
        } else if (startsWith("/*")) {
            m_at = std::min(m_source.find("*/", m_at), m_source.size() - 2) + 2;
        } else if (m_source[m_at] == '"') {
            m_current = m_current.value_or("") + quoted('"');
        } else if (m_source[m_at] == '\'' && (m_at == 0 || std::isxdigit(before()) == 0)) {
            quoted('\'');
        } else {
            if (std::isspace(static_cast<unsigned char>(m_source[m_at])) == 0)
                finish();
            ++m_at;
        }
    }

    [[nodiscard]] unsigned char before() const { return static_cast<unsigned char>(m_source[m_at - 1]); }

    std::string quoted(char mark) {
        std::string text;
        for (++m_at; m_at < m_source.size() && m_source[m_at] != mark; ++m_at) {
            if (m_source[m_at] != '\\') {
                text += m_source[m_at];
                continue;
            }
            ++m_at;
            text += m_source[m_at] == 'n' ? '\n' : m_source[m_at];
        }
        ++m_at;
        return text;
    }

    void finish() {
        if (m_current)
            m_all.push_back(*m_current);
        m_current.reset();
    }

    const std::string m_source;
    std::size_t m_at = 0;
    std::optional<std::string> m_current;
    std::vector<std::string> m_all;
};

/// Chinese signs and punctuation take three bytes, from U+2000 on.
bool isChinese(const std::string& text) {
    return std::any_of(text.begin(), text.end(),
                       [](char letter) { return static_cast<unsigned char>(letter) >= 0xE2; });
}

/// Chinese texts with a source of each.
const std::map<std::string, std::string>& chineseTexts() {
    static const std::map<std::string, std::string> all = [] {
        std::map<std::string, std::string> texts;
        for (const char* const folder : {"cli", "conform", "service"}) {
            for (const auto& entry : fs::directory_iterator(fs::path(CAMERA_SOURCE_DIR) / folder)) {
                if (entry.path().extension() != ".cpp" || entry.path().filename() == "english.cpp")
                    continue;
                std::ostringstream source;
                source << std::ifstream(entry.path()).rdbuf();
                const Literals literals(source.str());
                for (const std::string& text : literals.all()) {
                    if (isChinese(text))
                        texts[text] = entry.path().filename();
                }
            }
        }
        return texts;
    }();
    return all;
}

const std::map<std::string, std::string>& englishByChinese() {
    static const std::map<std::string, std::string> all = [] {
        std::map<std::string, std::string> texts;
        for (const language::Text& text : cli::englishTexts())
            texts[text.source] = text.translation;
        return texts;
    }();
    return all;
}

std::multiset<char> markersIn(const std::string& text) {
    std::multiset<char> markers;
    for (std::size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1)) {
        if (at + 1 < text.size() && text[at + 1] >= '1' && text[at + 1] <= '9')
            markers.insert(text[at + 1]);
    }
    return markers;
}

TEST(English, SourcesAreRead) {
    const Literals literals("f(\"a\" // \"x\"\n \"b\\n\", '\"', 1'000, \"c\"); /* \"y\" */");
    EXPECT_THAT(literals.all(), testing::ElementsAre("ab\n", "c"));
    EXPECT_GT(chineseTexts().size(), 100U);
}

TEST(English, HasEveryChineseText) {
    for (const auto& [text, source] : chineseTexts())
        EXPECT_TRUE(englishByChinese().contains(text)) << source << ": " << text;
}

TEST(English, HasNoTextThatNobodyUses) {
    for (const auto& [chinese, english] : englishByChinese())
        EXPECT_TRUE(chineseTexts().contains(chinese)) << chinese;
}

TEST(English, HasEachTextOnce) {
    EXPECT_EQ(englishByChinese().size(), cli::englishTexts().size());
}

TEST(English, HasTheSamePlaceMarkers) {
    for (const auto& [chinese, english] : englishByChinese())
        EXPECT_EQ(markersIn(english), markersIn(chinese)) << chinese;
}

TEST(English, IsNeitherEmptyNorChinese) {
    for (const auto& [chinese, english] : englishByChinese()) {
        EXPECT_FALSE(english.empty()) << chinese;
        EXPECT_FALSE(isChinese(english)) << english;
    }
}

// --- the sentences that are written in English
// ---------------------------------------------------------------

/// Of the sources that call sentence(), with a source of each.
const std::map<std::string, std::string>& englishLiterals() {
    static const std::map<std::string, std::string> all = [] {
        std::map<std::string, std::string> texts;
        for (const char* const folder : {"language", "trace", "emulator/line", "emulator/program"}) {
            for (const auto& entry : fs::directory_iterator(fs::path(CAMERA_SOURCE_DIR) / folder)) {
                if (entry.path().extension() != ".cpp" || entry.path().filename() == "chinese.cpp" ||
                    entry.path().filename() == "framewords.cpp") // has phrasebooks of its own
                    continue;
                std::ostringstream source;
                source << std::ifstream(entry.path()).rdbuf();
                const Literals literals(source.str());
                for (const std::string& text : literals.all())
                    texts[text] = entry.path().filename();
            }
        }
        return texts;
    }();
    return all;
}

TEST(Chinese, HasEverySentence) {
    for (const auto& [text, source] : englishLiterals()) {
        if (markersIn(text).empty() || text.find(' ') == std::string::npos)
            continue; // may be no sentence
        const auto table = language::chineseTexts();
        EXPECT_TRUE(std::any_of(table.begin(), table.end(),
                                [&wanted = text](const language::Text& row) { return row.source == wanted; }))
            << source << ": " << text;
    }
}

TEST(Chinese, HasNoTextThatNobodyUses) {
    for (const language::Text& text : language::chineseTexts())
        EXPECT_TRUE(englishLiterals().contains(text.source)) << text.source;
}

TEST(Chinese, HasEachTextOnce) {
    std::set<std::string> sources;
    for (const language::Text& text : language::chineseTexts())
        EXPECT_TRUE(sources.insert(text.source).second) << text.source;
}

TEST(Chinese, HasTheSamePlaceMarkers) {
    for (const language::Text& text : language::chineseTexts())
        EXPECT_EQ(markersIn(text.translation), markersIn(text.source)) << text.source;
}

TEST(Sentence, KeepsMarkersInsideArguments) {
    EXPECT_EQ(language::filled("%2 and %1, 100%", {"%2", "b"}), "b and %2, 100%");
}

} // namespace
} // namespace clitest
