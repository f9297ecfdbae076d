// A serial line as a handle; for the sources of Windows.
#pragma once

#include "emulator/line/lineio.h"

#include <windows.h>

namespace emulator {

inline HANDLE handleOf(LineIo::Line line) {
    return reinterpret_cast<HANDLE>(line); // NOLINT(performance-no-int-to-ptr): a handle is a number
}

} // namespace emulator
