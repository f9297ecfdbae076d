// The system's calls that wait, tell the time or start threads, in virtual time. The program's definitions go
// before those of the shared libraries: Qt and the C++ library wait here too.
#include "tests/simulation/world/realcalls.h"
#include "tests/simulation/world/scheduler.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <ctime>
#include <dlfcn.h>
#include <linux/futex.h>
#include <map>
#include <memory>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

using namespace std::chrono_literals;
using world::Time;

/// Clang's address sanitizer is a part of the program; it has to know each thread.
extern "C" [[gnu::weak]] int __interceptor_pthread_create(pthread_t* name, const pthread_attr_t* attributes,
                                                          void* (*function)(void*), // NOLINT: its name
                                                          void* argument);

namespace {

/// The next definition of a function that the program replaces. Threads that do not have their turn look for
/// it too; a guarded static object would let them wait for each other in virtual time.
template <typename Function>
class Next {
public:
    constexpr explicit Next(const char* name) : m_name(name) {}

    template <typename... Arguments>
    auto operator()(Arguments... arguments) {
        Function* function = m_function.load(std::memory_order_relaxed);
        if (function == nullptr) {
            function = reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, m_name));
            m_function.store(function, std::memory_order_relaxed);
        }
        return function(arguments...);
    }

private:
    const char* m_name;
    std::atomic<Function*> m_function{nullptr};
};

// --- clocks ------------------------------------------------------------------------------------------------

constexpr Time realTimeOffset = 1'700'000'000s; // time of day at virtual time zero

timespec toTimespec(Time time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    return {static_cast<time_t>(seconds.count()), static_cast<long>((time - seconds).count())};
}

Time toTime(const timespec& time) {
    return std::chrono::seconds(time.tv_sec) + Time(time.tv_nsec);
}

/// A point of one of the two clocks: the time of day is far above the monotonic time.
Time toVirtual(const timespec& time) {
    const Time point = toTime(time);
    return point >= realTimeOffset ? point - realTimeOffset : point;
}

std::optional<Time> deadlineAfter(const timespec* duration) {
    return duration == nullptr ? std::nullopt : std::optional(world::now() + toTime(*duration));
}

bool isVirtual(clockid_t clock) {
    switch (clock) {
    case CLOCK_MONOTONIC:
    case CLOCK_MONOTONIC_COARSE:
    case CLOCK_MONOTONIC_RAW:
    case CLOCK_BOOTTIME:
    case CLOCK_REALTIME:
    case CLOCK_REALTIME_COARSE:
        return true;
    default:
        return false;
    }
}

bool isTimeOfDay(clockid_t clock) {
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
}

// --- mutexes -----------------------------------------------------------------------------------------------

int lock(pthread_mutex_t* mutex) {
    while (true) {
        const int result = ::pthread_mutex_trylock(mutex);
        if (result != EBUSY)
            return result;
        world::waitFor(mutex, std::nullopt);
    }
}

int unlock(pthread_mutex_t* mutex) {
    static constinit Next<int(pthread_mutex_t*)> call("pthread_mutex_unlock");
    const int result = call(mutex);
    world::notifyAll(mutex);
    return result;
}

int waitForCondition(pthread_cond_t* condition, pthread_mutex_t* mutex, std::optional<Time> deadline) {
    unlock(mutex);
    const bool notified = world::waitFor(condition, deadline);
    lock(mutex);
    return notified ? 0 : ETIMEDOUT;
}

// --- threads -----------------------------------------------------------------------------------------------

struct Start {
    void* (*function)(void*);
    void* argument;
    world::Thread* thread;
};

/// Threads by the system's name, until they are joined or the system gives the name to another.
std::map<pthread_t, world::Thread*>& joinable() {
    static auto* const threads = new std::map<pthread_t, world::Thread*>;
    return *threads;
}

constexpr std::intptr_t destructorRounds = PTHREAD_DESTRUCTOR_ITERATIONS;

/// The key's destructor runs in every round, after the objects of the thread; the last round ends the thread.
pthread_key_t endKey() {
    static const pthread_key_t key = [] {
        pthread_key_t made{};
        ::pthread_key_create(&made, [](void* value) {
            const auto round = reinterpret_cast<std::intptr_t>(value);
            if (round < destructorRounds)
                ::pthread_setspecific(endKey(), reinterpret_cast<void*>(round + 1));
            else
                world::endThread();
        });
        return made;
    }();
    return key;
}

void* run(void* argument) {
    const std::unique_ptr<Start> start(static_cast<Start*>(argument));
    world::beginThread(start->thread);
    ::pthread_setspecific(endKey(), reinterpret_cast<void*>(std::intptr_t{1}));
    return start->function(start->argument);
}

// --- futexes -----------------------------------------------------------------------------------------------

long waitForFutex(const int* word, int value, std::optional<Time> deadline) {
    if (__atomic_load_n(word, __ATOMIC_SEQ_CST) != value) {
        errno = EAGAIN;
        return -1;
    }
    if (world::waitFor(word, deadline))
        return 0;
    errno = ETIMEDOUT;
    return -1;
}

long wakeFutex(const int* word, int count) {
    if (count == 1)
        world::notifyOne(word);
    else
        world::notifyAll(word);
    return 1;
}

/// FUTEX_WAKE_OP, as Qt's semaphores use it: changes the second word, wakes waiters of the first, and those
/// of the second if its old value compares true.
long changeAndWakeFutex(const int* word, int count, int* second, int secondCount, unsigned int operation) {
    const auto signExtended = [](unsigned int bits) { return static_cast<int>(bits << 20U) >> 20; };
    int argument = signExtended(operation >> 12U & 0xFFFU);
    if ((operation >> 28U & FUTEX_OP_OPARG_SHIFT) != 0)
        argument = 1 << argument;
    const int old = __atomic_load_n(second, __ATOMIC_SEQ_CST);
    const auto changed = [&] {
        switch (operation >> 28U & 7U) {
        case FUTEX_OP_ADD:
            return old + argument;
        case FUTEX_OP_OR:
            return old | argument;
        case FUTEX_OP_ANDN:
            return old & ~argument;
        case FUTEX_OP_XOR:
            return old ^ argument;
        default:
            return argument;
        }
    };
    __atomic_store_n(second, changed(), __ATOMIC_SEQ_CST);
    const int limit = signExtended(operation & 0xFFFU);
    const auto compares = [&] {
        switch (operation >> 24U & 15U) {
        case FUTEX_OP_CMP_EQ:
            return old == limit;
        case FUTEX_OP_CMP_NE:
            return old != limit;
        case FUTEX_OP_CMP_LT:
            return old < limit;
        case FUTEX_OP_CMP_LE:
            return old <= limit;
        case FUTEX_OP_CMP_GT:
            return old > limit;
        default:
            return old >= limit;
        }
    };
    long woken = wakeFutex(word, count);
    if (compares())
        woken += wakeFutex(second, secondCount);
    return woken;
}

// --- the end of the program --------------------------------------------------------------------------------

/// Set after main and after the objects that live as long as the program, before the search for leaks: it
/// yields until the system has stopped the other threads.
bool programEnds = false;

const struct End {
    ~End() { programEnds = true; }
} end;

using SystemCall = long(long, ...);

constinit Next<SystemCall> realSystemCall("syscall");

} // namespace

namespace world::real {

long futex(std::atomic<int>* word, int operation, int value) {
    return realSystemCall(SYS_futex, word, operation, value, nullptr, nullptr, 0);
}

int poll(pollfd* descriptors, unsigned long count, int timeoutMs) {
    static constinit Next<int(pollfd*, nfds_t, int)> call("poll");
    return call(descriptors, count, timeoutMs);
}

} // namespace world::real

// NOLINTBEGIN: names and signatures are the system's
extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (!isVirtual(clock)) {
        static constinit Next<int(clockid_t, timespec*)> call("clock_gettime");
        return call(clock, time);
    }
    *time = toTimespec(world::look() + (isTimeOfDay(clock) ? realTimeOffset : 0s));
    return 0;
}

int gettimeofday(timeval* time, void*) noexcept {
    const timespec now = toTimespec(world::look() + realTimeOffset);
    *time = {now.tv_sec, now.tv_nsec / 1000};
    return 0;
}

time_t time(time_t* result) noexcept {
    const time_t now = toTimespec(world::look() + realTimeOffset).tv_sec;
    if (result != nullptr)
        *result = now;
    return now;
}

int nanosleep(const timespec* duration, timespec*) {
    world::sleepUntil(world::now() + toTime(*duration));
    return 0;
}

int clock_nanosleep(clockid_t, int flags, const timespec* time, timespec*) {
    world::sleepUntil((flags & TIMER_ABSTIME) != 0 ? toVirtual(*time) : world::now() + toTime(*time));
    return 0;
}

int usleep(useconds_t duration) {
    world::sleepUntil(world::now() + std::chrono::microseconds(duration));
    return 0;
}

int sched_yield() noexcept {
    if (programEnds) {
        static constinit Next<int()> call("sched_yield");
        return call();
    }
    world::yield();
    return 0;
}

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    return lock(mutex);
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    return unlock(mutex);
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    return waitForCondition(condition, mutex, std::nullopt);
}

int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* time) {
    return waitForCondition(condition, mutex, toVirtual(*time));
}

int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t,
                           const timespec* time) {
    return waitForCondition(condition, mutex, toVirtual(*time));
}

int pthread_cond_signal(pthread_cond_t* condition) noexcept {
    world::notifyOne(condition);
    return 0;
}

int pthread_cond_broadcast(pthread_cond_t* condition) noexcept {
    world::notifyAll(condition);
    return 0;
}

int pthread_create(pthread_t* name, const pthread_attr_t* attributes, void* (*function)(void*),
                   void* argument) noexcept {
    using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static constinit Next<Create> systems("pthread_create");
    Create* const sanitizers = &__interceptor_pthread_create;
    static_cast<void>(world::threadNumber()); // the first thread comes before this one
    world::Thread* const thread = world::newThread();
    auto start = std::make_unique<Start>(Start{function, argument, thread});
    const int result = sanitizers != nullptr ? sanitizers(name, attributes, run, start.get())
                                             : systems(name, attributes, run, start.get());
    if (result != 0) {
        world::dropThread(thread);
        return result;
    }
    std::ignore = start.release();
    world::Thread*& named = joinable()[*name];
    if (named != nullptr)
        world::dropThread(named);
    named = thread;
    world::preempt();
    return 0;
}

int pthread_join(pthread_t name, void** value) {
    static constinit Next<int(pthread_t, void**)> call("pthread_join");
    const auto found = joinable().find(name);
    if (found == joinable().end())
        return call(name, value);
    world::Thread* const thread = found->second;
    joinable().erase(found);
    while (!world::hasEnded(thread))
        world::waitFor(thread, std::nullopt);
    const int result = call(name, value);
    world::dropThread(thread);
    return result;
}

int poll(pollfd* descriptors, nfds_t count, int timeoutMs) {
    if (timeoutMs == 0) {
        world::yield();
        return world::real::poll(descriptors, count, 0);
    }
    return world::waitForDescriptors(
        descriptors, count,
        timeoutMs < 0 ? std::nullopt : std::optional(world::now() + std::chrono::milliseconds(timeoutMs)));
}

int ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout, const sigset_t*) {
    if (timeout != nullptr && toTime(*timeout) == 0s) {
        world::yield();
        return world::real::poll(descriptors, count, 0);
    }
    return world::waitForDescriptors(descriptors, count, deadlineAfter(timeout));
}

// Other processes change files too: nobody is told.
int inotify_init1(int) noexcept {
    errno = ENOSYS;
    return -1;
}

int inotify_init() noexcept {
    return inotify_init1(0);
}

long syscall(long number, ...) noexcept {
    std::array<long, 6> arguments{};
    va_list list;
    va_start(list, number);
    for (long& argument : arguments)
        argument = va_arg(list, long);
    va_end(list);
    if (number == SYS_futex) {
        const auto* const word = reinterpret_cast<const int*>(arguments[0]);
        const auto* const time = reinterpret_cast<const timespec*>(arguments[3]);
        const int value = static_cast<int>(arguments[2]);
        switch (arguments[1] & FUTEX_CMD_MASK) {
        case FUTEX_WAIT:
            return waitForFutex(word, value, deadlineAfter(time));
        case FUTEX_WAIT_BITSET:
            return waitForFutex(word, value,
                                time == nullptr ? std::nullopt : std::optional(toVirtual(*time)));
        case FUTEX_WAKE:
        case FUTEX_WAKE_BITSET:
            return wakeFutex(word, value);
        case FUTEX_WAKE_OP:
            return changeAndWakeFutex(word, value, reinterpret_cast<int*>(arguments[4]),
                                      static_cast<int>(arguments[3]),
                                      static_cast<unsigned int>(arguments[5]));
        default:
            break;
        }
    }
    return realSystemCall(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4],
                          arguments[5]);
}

} // extern "C"
// NOLINTEND
