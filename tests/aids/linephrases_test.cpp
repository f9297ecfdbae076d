// The Chinese of the line's frames against the sources.
#include "aids/linephrases.h"
#include "link/protocol/requests.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>

namespace {

std::string sourceOf(const char* path) {
    std::ifstream file(std::string(CAMERA_SOURCE_DIR) + '/' + path);
    std::ostringstream text;
    text << file.rdbuf();
    return std::regex_replace(text.str(), std::regex(R"re('"')re"), "");
}

/// String literals with a letter, without those of includes.
std::vector<std::string> phrasesIn(const std::string& source) {
    static const std::regex literal(R"re((#include )?"((?:[^"\\]|\\.)*)")re");
    std::vector<std::string> found;
    for (auto match = std::sregex_iterator(source.begin(), source.end(), literal);
         match != std::sregex_iterator(); ++match) {
        const std::string text = std::regex_replace((*match)[2].str(), std::regex(R"re(\\")re"), "\"");
        if (!(*match)[1].matched && std::regex_search(text, std::regex("[a-z]")))
            found.push_back(text);
    }
    return found;
}

bool isTranslated(const std::string& phrase) {
    return chinesePhrase(phrase) != phrase;
}

} // namespace

TEST(LinePhrases, EveryRequestHasChinese) {
    for (const protocol::RequestName& name : protocol::requestNames())
        EXPECT_TRUE(isTranslated(std::string(name.words))) << name.words;
}

TEST(LinePhrases, EveryPhraseOfFramesHasChinese) {
    const std::vector<std::string> phrases = phrasesIn(sourceOf("trace/framewords.cpp"));
    EXPECT_GT(phrases.size(), 40U);
    for (const std::string& phrase : phrases)
        EXPECT_TRUE(isTranslated(phrase)) << phrase;
}

TEST(LinePhrases, EveryPhraseOfRowsHasChinese) {
    const std::vector<std::string> phrases = phrasesIn(sourceOf("service/linerows.cpp"));
    EXPECT_EQ(phrases.size(), 3U);
    for (const std::string& phrase : phrases)
        EXPECT_TRUE(isTranslated(phrase)) << phrase;
}

TEST(LinePhrases, UnknownPhraseStays) {
    EXPECT_EQ(chinesePhrase("something else"), "something else");
}
