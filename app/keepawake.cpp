#include "app/keepawake.h"

#ifdef _WIN32
#include <windows.h>

KeepAwake::KeepAwake() {
    SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED);
}

KeepAwake::~KeepAwake() {
    SetThreadExecutionState(ES_CONTINUOUS);
}

#else

KeepAwake::KeepAwake() = default;
KeepAwake::~KeepAwake() = default;

#endif
