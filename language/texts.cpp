#include "language/texts.h"

#include <algorithm>
#include <string_view>

namespace language {

const char* translationIn(std::span<const Text> table, const char* source) {
    const auto row = std::find_if(table.begin(), table.end(), [source](const Text& text) {
        return std::string_view(text.source) == source;
    });
    return row == table.end() ? nullptr : row->translation;
}

QString Texts::translate(const char*, const char* source, const char*, int) const {
    return QString::fromUtf8(translationIn(m_table, source));
}

} // namespace language
