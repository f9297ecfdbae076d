// The traffic of a line in memory.
#pragma once

#include "link/lineobserver.h"
#include "trace/linefollower.h"

#include <memory>
#include <mutex>
#include <vector>

namespace service {

/// Keeps the newest bytes of both sides, as they were read and written, in one ring. Allocates at
/// construction only; the system gives the memory as it fills. Any thread.
class LineRecord final : public LineObserver {
public:
    static constexpr std::size_t usualCapacity = 16 << 20; ///< bytes, each chunk's head among them

    /// Place of a chunk; grows with every chunk and never comes again.
    using Position = std::uint64_t;

    /// `start` is the time 0 of the chunks.
    explicit LineRecord(Clock::Time start, std::size_t capacity = usualCapacity);

    void sending(protocol::ByteView bytes, Clock::Time now) override;
    void received(protocol::ByteView bytes, Clock::Time earliest, Clock::Time now) override;
    /// The last byte came between `at - slack` and `at`.
    void add(trace::Side from, protocol::ByteView bytes, trace::Time at, trace::Time slack = {});

    /// Capacity that these bytes take, added at once.
    [[nodiscard]] static std::size_t roomOf(protocol::ByteView bytes);
    [[nodiscard]] trace::Time timeOf(Clock::Time now) const;
    /// Of the oldest chunk.
    [[nodiscard]] Position begin() const;

    struct Chunk {
        Position position = 0;
        trace::Side from = trace::Side::tool;
        trace::Time at{0};
        trace::Time slack{0};
        std::size_t first = 0; ///< of its bytes in the batch's
        std::size_t size = 0;
    };
    /// Copies of consecutive chunks. Used again, it allocates nothing.
    struct Batch {
        std::vector<Chunk> chunks;
        protocol::Bytes bytes;
        Position next = 0; ///< of the chunk behind the last
        bool lost = false; ///< the chunk asked for is no longer there: the batch begins at the oldest

        [[nodiscard]] protocol::ByteView bytesOf(const Chunk& chunk) const {
            return protocol::ByteView(bytes).range(chunk.first, chunk.first + chunk.size);
        }
    };
    /// Copies chunks from the position on until their bytes reach a limit that keeps writers waiting for some
    /// microseconds only; an empty batch at the end.
    void read(Position from, Batch& batch) const;

private:
    struct Head {
        trace::Time at;
        trace::Time slack;
        std::uint32_t size;
        trace::Side from;
    };

    void addPiece(const Head& head, const std::uint8_t* bytes);
    void copyIn(const void* from, std::size_t count);
    void copyOut(Position from, void* to, std::size_t count) const;
    [[nodiscard]] Head headAt(Position position) const;

    const Clock::Time m_start;
    const std::size_t m_capacity;
    const std::unique_ptr<std::uint8_t[]> m_ring;

    mutable std::mutex m_mutex; // guards the ring's bytes and the following
    Position m_begin = 0;
    Position m_end = 0;
};

} // namespace service
