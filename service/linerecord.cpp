#include "service/linerecord.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace service {

namespace {

/// Longer chunks become several.
constexpr std::size_t longestPiece = 4096;
/// A batch ends behind the chunk that reaches either.
constexpr std::size_t batchBytes = 64 << 10;
constexpr std::size_t batchChunks = 1024;
constexpr std::size_t leastCapacity = 4 * longestPiece;

} // namespace

std::size_t LineRecord::roomOf(protocol::ByteView bytes) {
    return bytes.size() + sizeof(Head) * ((bytes.size() + longestPiece - 1) / longestPiece);
}

LineRecord::LineRecord(Clock::Time start, std::size_t capacity)
    : m_start(start), m_capacity(std::max(capacity, leastCapacity)),
      m_ring(std::make_unique_for_overwrite<std::uint8_t[]>(m_capacity)) {
    static_assert(std::is_trivially_copyable_v<Head>);
}

void LineRecord::sending(protocol::ByteView bytes, Clock::Time now) {
    add(trace::Side::tool, bytes, timeOf(now));
}

void LineRecord::received(protocol::ByteView bytes, Clock::Time earliest, Clock::Time now) {
    add(trace::Side::camera, bytes, timeOf(now), timeOf(now) - timeOf(earliest));
}

trace::Time LineRecord::timeOf(Clock::Time now) const {
    return std::max(trace::Time{0}, std::chrono::duration_cast<trace::Time>(now - m_start));
}

void LineRecord::add(trace::Side from, protocol::ByteView bytes, trace::Time at, trace::Time slack) {
    const std::lock_guard lock(m_mutex);
    while (!bytes.empty()) {
        const std::size_t size = std::min(bytes.size(), longestPiece);
        addPiece({at, slack, static_cast<std::uint32_t>(size), from}, bytes.begin());
        bytes = bytes.range(size, bytes.size());
    }
}

void LineRecord::addPiece(const Head& head, const std::uint8_t* bytes) {
    const std::size_t room = sizeof head + head.size;
    while (m_end + room - m_begin > m_capacity)
        m_begin += sizeof head + headAt(m_begin).size;
    copyIn(&head, sizeof head);
    copyIn(bytes, head.size);
}

LineRecord::Position LineRecord::begin() const {
    const std::lock_guard lock(m_mutex);
    return m_begin;
}

void LineRecord::read(Position from, Batch& batch) const {
    batch.chunks.clear();
    batch.bytes.clear();
    const std::lock_guard lock(m_mutex);
    batch.lost = from < m_begin;
    Position at = std::max(from, m_begin);
    while (at < m_end && batch.bytes.size() < batchBytes && batch.chunks.size() < batchChunks) {
        const Head head = headAt(at);
        const std::size_t first = batch.bytes.size();
        batch.chunks.push_back({at, head.from, head.at, head.slack, first, head.size});
        batch.bytes.resize(first + head.size);
        copyOut(at + sizeof head, batch.bytes.data() + first, head.size);
        at += sizeof head + head.size;
    }
    batch.next = at;
}

void LineRecord::copyIn(const void* from, std::size_t count) {
    const std::size_t at = m_end % m_capacity;
    const std::size_t before = std::min(count, m_capacity - at);
    std::memcpy(m_ring.get() + at, from, before);
    std::memcpy(m_ring.get(), static_cast<const std::uint8_t*>(from) + before, count - before);
    m_end += count;
}

void LineRecord::copyOut(Position from, void* to, std::size_t count) const {
    const std::size_t at = from % m_capacity;
    const std::size_t before = std::min(count, m_capacity - at);
    std::memcpy(to, m_ring.get() + at, before);
    std::memcpy(static_cast<std::uint8_t*>(to) + before, m_ring.get(), count - before);
}

LineRecord::Head LineRecord::headAt(Position position) const {
    Head head{};
    copyOut(position, &head, sizeof head);
    return head;
}

} // namespace service
