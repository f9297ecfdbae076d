#include "late/entries.h"

#include <dlfcn.h>
#include <stdexcept>

namespace late {

const Entries& loadEntries() {
    // It stays loaded: Qt may keep what it registers.
    void* const library = ::dlopen(CAMERA_LATE_LIBRARY, RTLD_NOW);
    void* const entries = library == nullptr ? nullptr : ::dlsym(library, entriesName);
    if (entries == nullptr)
        throw std::runtime_error(::dlerror());
    return *reinterpret_cast<decltype(&cameraLateEntries)>(entries)();
}

} // namespace late
