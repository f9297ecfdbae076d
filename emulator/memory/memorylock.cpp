#include "emulator/memory/memorylock.h"

namespace emulator {

namespace {

struct Shared {
    std::mutex mutex;
    std::condition_variable changed;
};

Shared& shared() {
    static auto* const instance = new Shared; // outlives every thread
    return *instance;
}

} // namespace

MemoryLock::MemoryLock() : m_held(shared().mutex) {}

void MemoryLock::waitUntil(Moment deadline) {
    shared().changed.wait_until(m_held, deadline);
}

void MemoryLock::notifyAll() {
    shared().changed.notify_all();
}

} // namespace emulator
