// The library is part of the program.
#include "late/load.h"

namespace late {

const Entries& loadEntries() {
    return *cameraLateEntries();
}

} // namespace late
