// Threads and time of a process that lives in virtual time.
//
// One thread runs at a time. It hands over where it waits; who goes next is drawn from the seed. Time moves
// when every thread waits, to the next deadline; besides, each look at a clock takes a little.
// systemcalls.cpp puts this under every wait of the process.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

struct pollfd;

namespace world {

/// Virtual time since the start of the process.
using Time = std::chrono::nanoseconds;

/// Current time. Takes no time itself.
[[nodiscard]] Time now();
/// Makes time pass for a spectator too, so many times as fast; 0: not at all.
void setRealPace(double factor);
/// Waits in real time where threads wait for other programs, such as a display.
void waitForOthers(bool waits);

/// The time at which all sessions start. No other thread waits for a time.
void setSessionTime();
/// Starts a session: draws from this seed from now on and forgets the timeline.
void reseed(std::uint64_t seed);

/// A number below the limit, drawn from the seed: the only source of chance.
[[nodiscard]] std::uint64_t draw(std::uint64_t limit);

/// Probability in 1/1024 that a thread hands over where it need not wait: at a notification, an unlocked
/// mutex, a call of the serial library. 0 after reseed().
void setPreemption(unsigned int probability);

// --- waiting -----------------------------------------------------------------------------------------------

/// Waits until notify(object) or the deadline. False at the deadline.
bool waitFor(const void* object, std::optional<Time> deadline);
void sleepUntil(Time time);
/// Wakes waiting threads: all, or one drawn from the seed.
void notifyAll(const void* object);
void notifyOne(const void* object);
[[nodiscard]] bool anyoneWaitsFor(const void* object);
/// Waits until a descriptor is ready or the deadline; the result is that of poll().
int waitForDescriptors(pollfd* descriptors, unsigned long count, std::optional<Time> deadline);
/// Lets other threads go first.
void yield();
/// Perhaps lets others go first, by setPreemption.
void preempt();
/// A look at a clock.
[[nodiscard]] Time look();

// --- threads -----------------------------------------------------------------------------------------------

/// Number of the calling thread; the first is 0.
[[nodiscard]] unsigned int threadNumber();
[[nodiscard]] unsigned int threadCount();
/// Keeps the process on one of its processors, the present one if none is given: threads that run one at a
/// time wake each other soonest there. Without effect where the system does not let it.
void stayOnProcessor(std::optional<unsigned int> number = {});
/// Called with the time for which the first thread processed no events: from one wait for descriptors, where
/// its event loop rests, to the next.
void onStandstill(std::function<void(Time duration)> handler);

/// What happens when every thread waits without a deadline. The default writes the threads to standard error
/// and aborts.
void onDeadlock(std::function<void()> handler);
/// A line for each thread: number and what it waits for.
[[nodiscard]] std::string describeThreads();

// --- timeline ----------------------------------------------------------------------------------------------

/// Adds a line with time and thread. The text of a line is made only while the timeline is kept.
void note(const std::function<std::string()>& text);
/// Adds data to the hash alone.
void mix(const void* data, std::size_t size);
void keepTimeline(bool kept);
[[nodiscard]] std::string timeline();
/// Of everything that was noted, mixed or scheduled since reseed().
[[nodiscard]] std::uint64_t timelineHash();

// --- for systemcalls.cpp -----------------------------------------------------------------------------------

struct Thread;
[[nodiscard]] Thread* newThread();
void dropThread(Thread* thread);
/// First call of the new thread: returns when it is its turn.
void beginThread(Thread* thread);
/// Last call of a thread: hands over for good.
void endThread();
[[nodiscard]] bool hasEnded(const Thread* thread);

} // namespace world
