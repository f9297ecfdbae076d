#include "app/keepawake.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace {

void keepSystemAwake([[maybe_unused]] bool awake) {
#ifdef _WIN32
    SetThreadExecutionState(awake ? ES_CONTINUOUS | ES_SYSTEM_REQUIRED : ES_CONTINUOUS);
#endif
}

} // namespace

KeepAwake::KeepAwake() {
    keepSystemAwake(true);
}

KeepAwake::~KeepAwake() {
    keepSystemAwake(false);
}
