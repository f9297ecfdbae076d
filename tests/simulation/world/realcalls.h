// The system's own calls, beneath those that systemcalls.cpp replaces.
#pragma once

#include <atomic>
#include <chrono>
#include <poll.h>
#include <pthread.h>

namespace world::real {

long futex(std::atomic<int>* word, int operation, int value);
int poll(pollfd* descriptors, unsigned long count, int timeoutMs);

} // namespace world::real
