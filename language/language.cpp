#include "language/language.h"

#include "language/texts.h"

#include <cerrno>

namespace language {

namespace {

bool chinese = false;

} // namespace

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
    const char* const translation = chinese ? translationIn(chineseTexts(), english) : nullptr;
    return filled(translation != nullptr ? translation : english, arguments);
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
