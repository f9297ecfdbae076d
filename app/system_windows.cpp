#include "app/system.h"

#include <windows.h>

// Windows calls a program hung that has not looked at its messages for five seconds.
void tellSystemAlive() {
    MSG message;
    ::PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
}

void keepSystemAwake(bool awake) {
    ::SetThreadExecutionState(awake ? ES_CONTINUOUS | ES_SYSTEM_REQUIRED : ES_CONTINUOUS);
}
