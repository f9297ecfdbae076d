// Chinese for the words of the line's frames.
#pragma once

#include <string_view>

/// A phrase book for trace::wordsOf; a phrase that it does not hold stays English.
[[nodiscard]] std::string_view chinesePhrase(std::string_view english);
