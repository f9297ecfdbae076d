// One thread at a time uses the lines in memory.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace emulator {

/// Holds all lines in memory and the list of their ports while it lives. Not to be nested.
class MemoryLock {
public:
    using Moment = std::chrono::steady_clock::time_point;

    MemoryLock();
    MemoryLock(const MemoryLock&) = delete;
    MemoryLock& operator=(const MemoryLock&) = delete;

    /// Lets other threads use the lines until one of them calls notifyAll(), the deadline, or earlier.
    void waitUntil(Moment deadline);
    /// A line has changed in a way that no waiting thread foresaw.
    static void notifyAll();

private:
    std::unique_lock<std::mutex> m_held;
};

} // namespace emulator
