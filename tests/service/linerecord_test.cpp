// The ring of a line's bytes.
#include "service/linerecord.h"
#include "tests/trace/linebytes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using namespace linetest;
using namespace std::chrono_literals;
using service::LineRecord;
using trace::Side;

constexpr std::size_t smallCapacity = 16 << 10;

struct Content {
    std::vector<LineRecord::Chunk> chunks;
    std::vector<Bytes> bytes;
};

Content contentOf(const LineRecord& record) {
    Content content;
    LineRecord::Batch batch;
    for (LineRecord::Position at = 0;; at = batch.next) {
        record.read(at, batch);
        if (batch.chunks.empty())
            return content;
        for (const LineRecord::Chunk& chunk : batch.chunks) {
            content.chunks.push_back(chunk);
            content.bytes.push_back(batch.bytesOf(chunk).toBytes());
        }
    }
}

TEST(LineRecord, KeepsBytesSidesAndTimes) {
    LineRecord record(Clock::Time{5s});
    record.sending(hex("01 02"), Clock::Time{5s + 3ms});
    record.received(hex("03"), Clock::Time{5s + 4ms}, Clock::Time{5s + 7ms});
    const Content content = contentOf(record);
    ASSERT_EQ(content.chunks.size(), 2U);
    EXPECT_EQ(content.bytes[0], hex("01 02"));
    EXPECT_EQ(content.bytes[1], hex("03"));
    EXPECT_EQ(content.chunks[0].from, Side::tool);
    EXPECT_EQ(content.chunks[1].from, Side::camera);
    EXPECT_EQ(content.chunks[0].at, 3ms);
    EXPECT_EQ(content.chunks[1].at, 7ms);
    EXPECT_EQ(content.chunks[1].slack, 3ms);
}

TEST(LineRecord, OldestChunksMakeRoom) {
    LineRecord record(Clock::Time{0s}, smallCapacity);
    const Bytes chunk = countingBytes(1000);
    for (int i = 0; i < 100; ++i)
        record.add(i % 2 == 0 ? Side::tool : Side::camera, chunk, trace::Time(i));
    const Content content = contentOf(record);
    EXPECT_EQ(content.chunks.size(), smallCapacity / LineRecord::roomOf(chunk));
    EXPECT_EQ(content.chunks.back().at, trace::Time(99));
    for (std::size_t i = 0; i < content.chunks.size(); ++i) {
        EXPECT_EQ(content.bytes[i], chunk);
        EXPECT_EQ(content.chunks[i].at, content.chunks[0].at + trace::Time(i));
    }
}

TEST(LineRecord, TellsThatChunksAreGone) {
    LineRecord record(Clock::Time{0s}, smallCapacity);
    LineRecord::Batch batch;
    record.add(Side::tool, hex("01"), trace::Time{0});
    record.read(0, batch);
    EXPECT_FALSE(batch.lost);
    for (int i = 0; i < 100; ++i)
        record.add(Side::tool, countingBytes(1000), trace::Time{0});
    record.read(0, batch);
    EXPECT_TRUE(batch.lost);
    ASSERT_FALSE(batch.chunks.empty());
    EXPECT_EQ(batch.chunks.front().position, record.begin());
}

TEST(LineRecord, LongChunkBecomesSeveral) {
    LineRecord record(Clock::Time{0s});
    const Bytes chunk = countingBytes(100000);
    record.add(Side::camera, chunk, trace::Time{1});
    Bytes joined;
    for (const Bytes& bytes : contentOf(record).bytes)
        protocol::append(joined, bytes);
    EXPECT_EQ(joined, chunk);
}

TEST(LineRecord, ReadsWhileAnotherThreadAdds) {
    LineRecord record(Clock::Time{0s}, smallCapacity);
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (int i = 0; i < 20000; ++i)
            record.add(Side::tool, Bytes(static_cast<std::size_t>(i % 700), static_cast<std::uint8_t>(i)),
                       trace::Time(i));
        done = true;
    });
    LineRecord::Batch batch;
    LineRecord::Position next = 0;
    trace::Time last{-1};
    bool ended = false;
    do {
        ended = done;
        record.read(next, batch);
        for (const LineRecord::Chunk& chunk : batch.chunks) {
            EXPECT_GT(chunk.at, last);
            last = chunk.at;
            const auto value = static_cast<std::uint8_t>(chunk.at.count());
            EXPECT_EQ(batch.bytesOf(chunk).toBytes(), Bytes(chunk.size, value));
        }
        next = batch.next;
    } while (!ended || !batch.chunks.empty());
    writer.join();
    EXPECT_EQ(last, trace::Time(19999));
}

} // namespace
