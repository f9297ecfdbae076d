// The library is part of the program.
#include "late/entries.h"

namespace late {

const Entries& loadEntries() {
    return *cameraLateEntries();
}

} // namespace late
