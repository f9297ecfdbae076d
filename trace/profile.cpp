#include "trace/profile.h"

#include "language/language.h"

#include <algorithm>

namespace trace {

namespace {

using language::sentence;

constexpr std::string_view profileTitle = "camera profile ";
constexpr std::string_view profileVersion = "1";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == std::string_view::npos ? ""
                                           : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// Removes the next line from the front of the text.
std::string_view takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return trimmed(line);
}

void checkTitle(std::string_view line) {
    if (!line.starts_with(profileTitle))
        throw profileError(1, sentence("the first line of a profile is \"%1\"",
                                       {std::string(profileTitle) + std::string(profileVersion)}));
    const std::string_view found = trimmed(line.substr(profileTitle.size()));
    if (found != profileVersion)
        throw profileError(1, sentence("this program reads version %1 of profiles, not \"%2\"",
                                       {std::string(profileVersion), std::string(found)}));
}

} // namespace

std::string profileText(const Profile& profile) {
    std::string text = std::string(profileTitle) + std::string(profileVersion) + '\n';
    for (const ProfileEntry& entry : profile.entries)
        text += entry.key + ' ' + entry.value + '\n';
    return text;
}

Profile readProfile(std::string_view text) {
    checkTitle(takeLine(text));
    Profile profile;
    for (std::size_t number = 2; !text.empty(); ++number) {
        const std::string_view line = takeLine(text);
        if (line.empty() || line.front() == '#')
            continue;
        const std::size_t blank = std::min(line.find_first_of(" \t"), line.size());
        const std::string_view value = trimmed(line.substr(blank));
        if (value.empty())
            throw profileError(number, sentence("\"%1\" has no value", {std::string(line)}));
        profile.entries.push_back({std::string(line.substr(0, blank)), std::string(value), number});
    }
    return profile;
}

ProfileError profileError(std::size_t line, const std::string& words) {
    return ProfileError(sentence("line %1: %2", {std::to_string(line), words}));
}

} // namespace trace
