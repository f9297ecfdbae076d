// The programs that have a manual page and a completion.
#pragma once

#include "manual/completion.h"
#include "manual/manualpage.h"

#include <functional>
#include <memory>
#include <string_view>

namespace manual {

struct Program {
    std::shared_ptr<const CLI::App> app; ///< keeps what its options refer to
    ManualText text;                     ///< without date and version
    ValueCompletions values;
    /// Throws for a command line that the program refuses; words without the program's name.
    std::function<void(const std::vector<std::string>& words)> check;
};

[[nodiscard]] Program shelfCamera();
[[nodiscard]] Program virtualCamera();
[[nodiscard]] Program demo();
[[nodiscard]] Program practice();
[[nodiscard]] Program tool();

/// All of them.
[[nodiscard]] std::vector<Program> programs();
/// The example that its program refuses, and why; empty for none.
[[nodiscard]] std::string badExample(const Program& program);

/// Words of a completion, with blanks between them.
void addWord(std::string& words, std::string_view word);
/// Those of the camera types, of the lines of virtual cameras, and of the lessons.
[[nodiscard]] std::string typeNames();
[[nodiscard]] std::string lineNames();
[[nodiscard]] std::string lessonNumbers();

} // namespace manual
