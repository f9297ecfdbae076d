// The ring of a line's bytes allocates nothing. A sanitizer replaces the operators as well: not for its
// builds.
#include "service/linerecord.h"
#include "tests/trace/linebytes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocations = 0;

} // namespace

// Counts the allocations of each thread.
void* operator new(std::size_t size) {
    ++allocations;
    if (void* const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using namespace linetest;
using namespace std::chrono_literals;
using service::LineRecord;
using trace::Side;

constexpr std::size_t smallCapacity = 16 << 10;

TEST(LineRecord, AddingAllocatesNothing) {
    LineRecord record(Clock::Time{0s}, smallCapacity);
    const Bytes chunk = countingBytes(512);
    const std::size_t before = allocations;
    for (int i = 0; i < 1000; ++i)
        record.sending(chunk, Clock::Time{1s});
    EXPECT_EQ(allocations, before);
}

TEST(LineRecord, ReadingAgainAllocatesNothing) {
    LineRecord record(Clock::Time{0s}, smallCapacity);
    LineRecord::Batch batch;
    for (int i = 0; i < 100; ++i)
        record.add(Side::tool, countingBytes(512), trace::Time{0});
    record.read(0, batch);
    const std::size_t before = allocations;
    record.read(0, batch);
    EXPECT_EQ(allocations, before);
}

} // namespace
