// The serial ports of a process whose serial library is memoryports.cpp.
#pragma once

#include "emulator/memory/memoryline.h"

#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace emulator {

/// A port: what the system's list says of it and where it leads.
struct MemoryPort {
    std::string description = "n/a";
    std::string hardwareId = "n/a";
    MemoryLine* line = nullptr; ///< null: it opens, and nothing is there
    bool listed = true;
    bool busy = false;
    bool failsOnce = false; ///< the next call that reads, writes, flushes or discards throws
};

/// By name; other ports do not exist. The functions that change ports need a MemoryLock where several threads
/// run at once; the library's own calls take it.
void addMemoryPort(const std::string& name, const MemoryPort& port);
void removeMemoryPort(const std::string& name);
/// Null if there is none.
[[nodiscard]] MemoryPort* findMemoryPort(const std::string& name);

// --- for tests ---------------------------------------------------------------------------------------------

/// Number of ports that are open: of all, or of those that this thread opened.
[[nodiscard]] int openMemoryPorts();
[[nodiscard]] int openMemoryPorts(std::thread::id opener);
/// Called before each call of the library with its name and values, as the recording stand-in writes it.
void setCallObserver(std::function<void(const std::string& port, const std::string& call)> observer);
using ByteObserver = std::function<void(const std::string& port, const std::vector<std::uint8_t>& bytes)>;
/// Called after the call observer with all bytes that a write is given.
void setWriteObserver(ByteObserver observer);
/// Called after a read that brought bytes.
void setReadObserver(ByteObserver observer);
/// Called when a call of an open port throws.
void setFailureObserver(std::function<void(const std::string& port)> observer);

} // namespace emulator
