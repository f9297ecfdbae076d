// The language of the programs of the terminal.
#pragma once

#include <initializer_list>
#include <string>

namespace language {

/// By LANGUAGE, LC_ALL, LC_MESSAGES and LANG on Unix, by the user's language on Windows: language_unix.cpp,
/// language_windows.cpp.
[[nodiscard]] bool speaksChinese();

/// Makes sentence() give Chinese. Call it before other threads start.
void chooseChinese();

/// The English text with the arguments in the places %1, %2, ...
[[nodiscard]] std::string filled(std::string text, std::initializer_list<std::string> arguments);
/// The same in the chosen language; English until another is chosen. Any thread.
[[nodiscard]] std::string sentence(const char* english, std::initializer_list<std::string> arguments = {});

/// Reason of a file's or device's failure, in the chosen language; a value of errno.
[[nodiscard]] std::string reasonOf(int error);

} // namespace language
