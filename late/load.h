// How the entries come into the program.
#pragma once

#include "late/entries.h"

namespace late {

/// The same at every call. Throws std::runtime_error if the library is missing.
[[nodiscard]] const Entries& loadEntries();

} // namespace late
