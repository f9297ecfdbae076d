#include "language/texts.h"

#include <algorithm>
#include <string_view>

namespace language {

QString Texts::translate(const char*, const char* source, const char*, int) const {
    const auto row = std::find_if(m_table.begin(), m_table.end(), [source](const Text& text) {
        return std::string_view(text.source) == source;
    });
    return row == m_table.end() ? QString() : QString::fromUtf8(row->translation);
}

} // namespace language
