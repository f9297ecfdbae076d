// A serial line as Windows knows it; for the sources of that system.
#pragma once

#include "emulator/line/lineio.h"

#include <windows.h>

namespace emulator {

inline HANDLE handleOf(LineIo::Line line) {
    return reinterpret_cast<HANDLE>(line); // NOLINT(performance-no-int-to-ptr): a handle is a number
}

} // namespace emulator
