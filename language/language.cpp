#include "language/language.h"

#include "language/texts.h"

#include <QLocale>

#include <algorithm>
#include <cerrno>
#include <string_view>

namespace language {

namespace {

bool chinese = false;

#ifndef Q_OS_WIN
/// The first language that the environment names.
QString environmentLanguage() {
    for (const char* const name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty())
            return value.section(QLatin1Char(':'), 0, 0);
    }
    return {};
}
#endif

} // namespace

bool speaksChinese() {
#ifdef Q_OS_WIN
    return QLocale::system().language() == QLocale::Chinese;
#else
    return environmentLanguage().startsWith(QLatin1String("zh"));
#endif
}

void chooseChinese() {
    chinese = true;
}

/// Replaces from left to right: a mark inside an argument stays.
std::string filled(std::string text, std::initializer_list<std::string> arguments) {
    for (std::size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at)) {
        const std::size_t index = at + 1 < text.size() ? static_cast<std::size_t>(text[at + 1] - '1') : 9;
        if (index >= arguments.size()) {
            ++at;
            continue;
        }
        const std::string& argument = arguments.begin()[index];
        text.replace(at, 2, argument);
        at += argument.size();
    }
    return text;
}

std::string sentence(const char* english, std::initializer_list<std::string> arguments) {
    const auto table = chineseTexts();
    const auto row = std::find_if(table.begin(), table.end(), [english](const Text& text) {
        return std::string_view(text.source) == english;
    });
    return filled(chinese && row != table.end() ? row->translation : english, arguments);
}

std::string reasonOf(int error) {
    switch (error) {
    case ENOENT:
        return sentence("it does not exist");
    case EACCES:
    case EPERM:
        return sentence("no permission");
    case EISDIR:
        return sentence("it is a folder");
    case ENOTDIR:
        return sentence("a part of the path is no folder");
    case EBUSY:
        return sentence("another program uses it");
    case ENOSPC:
        return sentence("the disk is full");
    case EROFS:
        return sentence("the disk is read-only");
    default:
        return sentence("the system's error %1", {std::to_string(error)});
    }
}

} // namespace language
