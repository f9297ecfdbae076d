// Functions of the library that is loaded at the first use.
#pragma once

#include "late/late.h"

namespace late {

struct Entries {
    QString (*adapterText)();
    void (*printOnPaper)(QWidget* parent, const Paint& paint);
};

constexpr const char* entriesName = "cameraLateEntries";

/// The same at every call. Throws std::runtime_error if the library is missing.
[[nodiscard]] const Entries& loadEntries();

} // namespace late

/// The library's only name.
extern "C" const late::Entries* cameraLateEntries();
