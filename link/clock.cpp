#include "link/clock.h"

#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr auto shortestSleep = 1ms;
constexpr auto longestSpin = 50us; // on a busy machine a thread that yields returns after milliseconds

void poll(std::chrono::nanoseconds duration) {
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end) {
        if (duration > longestSpin)
            std::this_thread::yield();
    }
}

} // namespace

Clock& Clock::system() {
    static Clock clock;
    return clock;
}

Clock::Time Clock::now() const {
    return std::chrono::steady_clock::now();
}

bool Clock::wait(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                 std::chrono::nanoseconds duration) {
    return changed.wait_for(lock, duration) == std::cv_status::timeout;
}

bool Clock::pause(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                  std::chrono::nanoseconds duration) {
    if (duration >= shortestSleep)
        return wait(lock, changed, duration);
    lock.unlock();
    poll(duration);
    lock.lock();
    return true;
}

std::chrono::milliseconds Clock::timerInterval(std::chrono::milliseconds delay) const {
    return delay;
}
