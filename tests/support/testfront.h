// The virtual camera's end of the line in tests: a pseudo-terminal in real time, or a line in memory in
// virtual time (camera_test's VIRTUAL_TIME).
#pragma once

#ifdef CAMERA_VIRTUAL_TIME

#include "emulator/memory/memoryfront.h"

using TestFront = emulator::MemoryFront;

/// Whether the tool has the device open.
[[nodiscard]] inline bool isOpenByTool(const std::string& /*portName*/) {
    return emulator::openMemoryPorts() > 0;
}

#else

#include "emulator/line/ptyfront.h"

#include <filesystem>

using TestFront = emulator::PtyFront;

/// Whether the tool has the device open; the virtual camera has it open once.
[[nodiscard]] inline bool isOpenByTool(const std::string& portName) {
    int holders = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        holders += std::filesystem::read_symlink(entry, gone) == portName ? 1 : 0;
    }
    return holders > 1;
}

#endif
