#include "tests/simulation/world/scheduler.h"

#include "tests/simulation/world/realcalls.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <linux/futex.h>
#include <poll.h>
#include <sched.h>
#include <sys/syscall.h>
#include <utility>
#include <vector>

using namespace std::chrono_literals;

namespace world {

struct Thread {
    enum class State : std::uint8_t { ready, waiting, ended };

    unsigned int number = 0;
    State state = State::ready;
    bool notified = false;
    const void* object = nullptr;
    std::optional<Time> deadline;
    pollfd* descriptors = nullptr;
    unsigned long descriptorCount = 0;
    Time waitsSince{0};
    std::atomic<int> turn{0}; ///< the futex on which it sleeps in real time
};

namespace {

constexpr Time lookTime = 200ns;
constexpr Time yieldTime = 20us;
constexpr Time startTime = 1000s;      // of the process
constexpr Time sessionTime = 100'000s; // of each session: what was before it takes less
constexpr unsigned int fullProbability = 1024;

/// Only the running thread touches it.
struct World {
    std::vector<Thread*> threads;    ///< that have not ended
    std::vector<Thread*> candidates; ///< of the choice that is made; kept, since choices are many
    Time now = startTime;
    std::uint64_t random = 1;
    unsigned int preemption = 0;
    unsigned int nextNumber = 0;
    std::uint64_t hash = 0;
    bool keepsTimeline = false;
    std::string timeline;
    std::function<void()> deadlockHandler;
    Time eventsSince = startTime; ///< end of the first thread's last rest
    std::function<void(Time)> standstillHandler;
    double realPace = 0;
    bool waitsForOthers = false;
};

World& world() {
    static auto* const instance = new World; // outlives every thread and static object
    return *instance;
}

thread_local Thread* currentThread = nullptr;

Thread& self() {
    if (currentThread == nullptr)
        currentThread = newThread(); // the first thread
    return *currentThread;
}

// --- handing over ------------------------------------------------------------------------------------------

void sleepInRealTime(Thread& thread) {
    while (thread.turn.exchange(0) == 0)
        real::futex(&thread.turn, FUTEX_WAIT_PRIVATE, 0);
}

void wakeInRealTime(Thread& thread) {
    thread.turn = 1;
    real::futex(&thread.turn, FUTEX_WAKE_PRIVATE, 1);
}

bool descriptorsReady(const Thread& thread) {
    return thread.descriptorCount > 0 && real::poll(thread.descriptors, thread.descriptorCount, 0) > 0;
}

bool canGo(const Thread& thread) {
    return thread.state == Thread::State::ready || (thread.deadline && *thread.deadline <= world().now) ||
           descriptorsReady(thread);
}

std::optional<Time> nextDeadline() {
    std::optional<Time> next;
    for (const Thread* const thread : world().threads) {
        if (thread->deadline && (!next || *thread->deadline < *next))
            next = thread->deadline;
    }
    return next;
}

/// In real time, until a thread's descriptor is ready. False when the time is over; without one it never is.
bool awaitDescriptors(std::optional<std::chrono::milliseconds> longest) {
    std::vector<pollfd> all;
    for (const Thread* const thread : world().threads)
        all.insert(all.end(), thread->descriptors, thread->descriptors + thread->descriptorCount);
    if (all.empty() && !longest)
        return false;
    return real::poll(all.data(), all.size(), longest ? static_cast<int>(longest->count()) : -1) > 0;
}

/// Until the deadline, if there is one. False when it has come, or nothing can come.
bool awaitOthers(std::optional<Time> deadline) {
    const World& w = world();
    if (!w.waitsForOthers)
        return false;
    if (!deadline)
        return awaitDescriptors(std::nullopt);
    const Time rest =
        w.realPace > 0 ? std::chrono::duration_cast<Time>((*deadline - w.now) / w.realPace) : 0s;
    return awaitDescriptors(std::chrono::ceil<std::chrono::milliseconds>(rest) + 1ms);
}

void dieOfDeadlock() {
    std::fprintf(stderr, "every thread waits for ever:\n%s", describeThreads().c_str());
    std::abort();
}

Thread& chooseNext() {
    World& w = world();
    std::vector<Thread*>& candidates = w.candidates;
    while (true) {
        candidates.clear();
        std::copy_if(w.threads.begin(), w.threads.end(), std::back_inserter(candidates),
                     [](const Thread* thread) { return canGo(*thread); });
        if (!candidates.empty())
            break;
        const auto deadline = nextDeadline();
        if (awaitOthers(deadline))
            continue;
        if (deadline) {
            w.now = std::max(w.now, *deadline);
            continue;
        }
        if (w.deadlockHandler)
            w.deadlockHandler();
        dieOfDeadlock();
    }
    Thread& next = *candidates[candidates.size() == 1 ? 0 : draw(candidates.size())];
    const std::array<std::uint64_t, 2> event{next.number, static_cast<std::uint64_t>(w.now.count())};
    mix(event.data(), sizeof(event));
    return next;
}

void handOver(Thread& own) {
    Thread& next = chooseNext();
    if (&next != &own) {
        wakeInRealTime(next);
        sleepInRealTime(own);
    }
    own.state = Thread::State::ready;
    own.deadline.reset();
    own.object = nullptr;
}

void wait(Thread& own, const void* object, std::optional<Time> deadline) {
    own.state = Thread::State::waiting;
    own.notified = false;
    own.object = object;
    own.deadline = deadline;
    own.waitsSince = world().now;
    handOver(own);
}

void wake(Thread& thread) {
    thread.state = Thread::State::ready;
    thread.notified = true;
    thread.deadline.reset();
    thread.object = nullptr;
}

} // namespace

Time now() {
    return world().now;
}

Time look() {
    self();
    return world().now += lookTime;
}

void setRealPace(double factor) {
    world().realPace = factor;
}

void waitForOthers(bool waits) {
    world().waitsForOthers = waits;
}

void setSessionTime() {
    world().now = sessionTime;
}

void reseed(std::uint64_t seed) {
    World& w = world();
    w.random = seed * 0x9E3779B97F4A7C15U + 0x632BE59BD9B4E019U;
    w.preemption = 0;
    w.hash = 0xCBF29CE484222325U;
    w.timeline.clear();
    w.eventsSince = w.now;
}

std::uint64_t draw(std::uint64_t limit) {
    // splitmix64
    std::uint64_t z = (world().random += 0x9E3779B97F4A7C15U);
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return (z ^ (z >> 31U)) % limit;
}

void setPreemption(unsigned int probability) {
    world().preemption = probability;
}

// --- waiting -----------------------------------------------------------------------------------------------

bool waitFor(const void* object, std::optional<Time> deadline) {
    Thread& own = self();
    wait(own, object, deadline);
    return own.notified;
}

void sleepUntil(Time time) {
    wait(self(), nullptr, time);
}

void notifyAll(const void* object) {
    for (Thread* const thread : world().threads) {
        if (thread->object == object)
            wake(*thread);
    }
}

void notifyOne(const void* object) {
    std::vector<Thread*>& waiting = world().candidates;
    waiting.clear();
    std::copy_if(world().threads.begin(), world().threads.end(), std::back_inserter(waiting),
                 [object](const Thread* thread) { return thread->object == object; });
    if (!waiting.empty())
        wake(*waiting[waiting.size() == 1 ? 0 : draw(waiting.size())]);
}

bool anyoneWaitsFor(const void* object) {
    return std::any_of(world().threads.begin(), world().threads.end(),
                       [object](const Thread* thread) { return thread->object == object; });
}

int waitForDescriptors(pollfd* descriptors, unsigned long count, std::optional<Time> deadline) {
    Thread& own = self();
    const int ready = real::poll(descriptors, count, 0);
    if (ready != 0)
        return ready;
    World& w = world();
    const bool first = own.number == 0;
    if (first && w.standstillHandler)
        w.standstillHandler(w.now - w.eventsSince);
    own.descriptors = descriptors;
    own.descriptorCount = count;
    wait(own, descriptors, deadline);
    own.descriptorCount = 0;
    if (first)
        w.eventsSince = w.now;
    return real::poll(descriptors, count, 0);
}

void yield() {
    Thread& own = self();
    world().now += yieldTime;
    own.state = Thread::State::ready;
    handOver(own);
}

void preempt() {
    if (world().preemption > 0 && draw(fullProbability) < world().preemption)
        yield();
}

// --- threads -----------------------------------------------------------------------------------------------

unsigned int threadNumber() {
    return self().number;
}

unsigned int threadCount() {
    return static_cast<unsigned int>(world().threads.size());
}

void stayOnProcessor(std::optional<unsigned int> number) {
    cpu_set_t allowed;
    if (::sched_getaffinity(0, sizeof(allowed), &allowed) != 0)
        return;
    unsigned int place = number.value_or(static_cast<unsigned int>(std::max(0, ::sched_getcpu()))) %
                         static_cast<unsigned int>(CPU_COUNT(&allowed));
    for (std::size_t processor = 0; processor < CPU_SETSIZE; ++processor) {
        if (!CPU_ISSET(processor, &allowed) || place-- > 0)
            continue;
        cpu_set_t own;
        CPU_ZERO(&own);
        CPU_SET(processor, &own);
        ::sched_setaffinity(0, sizeof(own), &own);
        return;
    }
}

void onStandstill(std::function<void(Time)> handler) {
    world().standstillHandler = std::move(handler);
}

void onDeadlock(std::function<void()> handler) {
    world().deadlockHandler = std::move(handler);
}

std::string describeThreads() {
    std::string text;
    for (const Thread* const thread : world().threads) {
        text += "thread " + std::to_string(thread->number);
        if (thread->state == Thread::State::ready)
            text += " can go on\n";
        else
            text += " waits since " + std::to_string((thread->waitsSince - sessionTime) / 1ms) + " ms\n";
    }
    return text;
}

// --- timeline ----------------------------------------------------------------------------------------------

void note(const std::function<std::string()>& text) {
    World& w = world();
    const std::uint64_t time = static_cast<std::uint64_t>(w.now.count());
    mix(&time, sizeof(time));
    const std::string line = text();
    mix(line.data(), line.size());
    if (!w.keepsTimeline)
        return;
    std::array<char, 48> head{};
    std::snprintf(head.data(), head.size(), "%11.3f ms  [%u] ",
                  std::chrono::duration<double, std::milli>(w.now - sessionTime).count(), threadNumber());
    w.timeline += head.data() + line + '\n';
}

void mix(const void* data, std::size_t size) {
    // FNV-1a, eight bytes at a time
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::uint64_t& hash = world().hash;
    for (std::size_t i = 0; i < size; ++i)
        hash = (hash ^ bytes[i]) * 0x100000001B3U;
}

void keepTimeline(bool kept) {
    world().keepsTimeline = kept;
}

std::string timeline() {
    return world().timeline;
}

std::uint64_t timelineHash() {
    return world().hash;
}

// --- for systemcalls.cpp -----------------------------------------------------------------------------------

Thread* newThread() {
    auto* const thread = new Thread;
    thread->number = world().nextNumber++;
    world().threads.push_back(thread);
    return thread;
}

void dropThread(Thread* thread) {
    std::erase(world().threads, thread);
    delete thread;
}

void beginThread(Thread* thread) {
    currentThread = thread;
    sleepInRealTime(*thread);
}

void endThread() {
    Thread& own = self();
    own.state = Thread::State::ended;
    std::erase(world().threads, &own);
    notifyAll(&own);
    wakeInRealTime(chooseNext());
}

bool hasEnded(const Thread* thread) {
    return thread->state == Thread::State::ended;
}

} // namespace world
