// Profiles of cameras: a text of keys and values, made from a camera, followed by the virtual one.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace trace {

/// "key value" in a line of its own.
struct ProfileEntry {
    std::string key;      ///< without blanks
    std::string value;    ///< without blanks around it, never empty
    std::size_t line = 0; ///< in the file, from 1
};

struct Profile {
    std::vector<ProfileEntry> entries;

    void add(std::string key, std::string value) { entries.push_back({std::move(key), std::move(value), 0}); }
    /// A line for people, which reading ignores.
    void remark(std::string words) { add("#", std::move(words)); }
};

/// Malformed profile; what() starts with the line number.
class ProfileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Whole lines, the title first.
[[nodiscard]] std::string profileText(const Profile& profile);

/// Knows the form, not the keys. Throws ProfileError.
[[nodiscard]] Profile readProfile(std::string_view text);

/// The error of a line.
[[nodiscard]] ProfileError profileError(std::size_t line, const std::string& words);

} // namespace trace
