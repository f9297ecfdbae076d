#include "language/language.h"

#include <QString>

namespace language {

namespace {

/// The first language that the environment names.
QString environmentLanguage() {
    for (const char* const name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty())
            return value.section(QLatin1Char(':'), 0, 0);
    }
    return {};
}

} // namespace

bool speaksChinese() {
    return environmentLanguage().startsWith(QLatin1String("zh"));
}

} // namespace language
