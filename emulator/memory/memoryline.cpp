#include "emulator/memory/memoryline.h"

#include "emulator/memory/memorylock.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace emulator {

namespace {

constexpr std::size_t pieceSize = 64; // arrives whole on a line with a rate
constexpr std::uint32_t bitsPerByte = 10;

} // namespace

MemoryLine::MemoryLine(VirtualCamera camera) : m_camera(std::move(camera)) {}

VirtualCamera& MemoryLine::camera() {
    advance();
    return m_camera;
}

Time MemoryLine::lineTime() const {
    return timeOf(Clock::now());
}

Time MemoryLine::timeOf(Moment moment) const {
    return std::chrono::floor<Time>(moment - m_start);
}

MemoryLine::Moment MemoryLine::momentOf(Time time) const {
    return m_start + time;
}

void MemoryLine::setPace(std::uint32_t bytesPerSecond) {
    advance();
    m_byteTime = bytesPerSecond == 0 ? 0ns : Clock::duration(1s) / bytesPerSecond;
}

void MemoryLine::setPresent(bool present) {
    advance();
    if (present && !m_present)
        m_camera.lineReopened(lineTime());
    m_present = present;
    clear();
}

void MemoryLine::clear() {
    m_model.clear();
    m_toCamera.clear();
    m_toTool.clear();
    MemoryLock::notifyAll();
}

bool MemoryLine::isPresent() {
    advance();
    return m_present;
}

// --- time --------------------------------------------------------------------------------------------------

/// Lets everything happen that is due, in the order of its times.
void MemoryLine::advance() {
    while (true) {
        const std::optional<Moment> next = nextEvent();
        if (!next || *next > Clock::now())
            return;
        deliver(*next);
        collectAnswers(*next);
    }
}

std::optional<MemoryLine::Moment> MemoryLine::nextEvent() const {
    std::optional<Moment> next;
    if (const auto due = m_model.nextDue())
        next = std::max(momentOf(*due), m_start);
    const bool readsAgain = m_model.readingPausedUntil() != Time::max();
    if (!m_toCamera.empty() && readsAgain) {
        const Moment arrives = std::max(m_toCamera.front().arrives, momentOf(m_model.readingPausedUntil()));
        next = std::min(next.value_or(arrives), arrives);
    }
    return next;
}

void MemoryLine::deliver(Moment at) {
    const Time time = timeOf(at);
    while (!m_toCamera.empty() && m_toCamera.front().arrives <= at && !m_model.readingPaused(time)) {
        const Bytes bytes = std::move(m_toCamera.front().bytes);
        m_toCamera.pop_front();
        m_model.receive(bytes, time);
    }
}

void MemoryLine::collectAnswers(Moment at) {
    const Time time = timeOf(at);
    const Bytes answer = m_model.takeDue(time);
    if (m_present)
        put(m_toTool, m_toToolFree, answer, at);
    if (m_model.hangUpDue(time)) {
        m_present = false;
        clear();
    }
}

void MemoryLine::put(Way& way, Moment& freeAt, const Bytes& bytes, Moment from) const {
    Moment start = std::max(from, freeAt);
    const std::size_t most = m_byteTime == 0ns ? bytes.size() : pieceSize;
    for (std::size_t first = 0; first < bytes.size(); first += most) {
        const std::size_t count = std::min(most, bytes.size() - first);
        start += m_byteTime * static_cast<std::int64_t>(count);
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(first);
        way.push_back({start, Bytes(begin, begin + static_cast<std::ptrdiff_t>(count))});
    }
    freeAt = start;
}

// --- the tool's end ----------------------------------------------------------------------------------------

void MemoryLine::setSpeed(std::uint32_t baudRate) {
    advance();
    m_camera.setLineSpeed(baudRate);
    if (m_followsRate)
        setPace(baudRate / bitsPerByte);
}

std::size_t MemoryLine::queued() const {
    std::size_t bytes = 0;
    for (const Piece& piece : m_toCamera)
        bytes += piece.bytes.size();
    return bytes;
}

bool MemoryLine::queueTakes() const {
    const bool waits = m_wasFull || !m_queue.onceFull;
    return queued() < (waits ? m_queue.takesBelow : m_queue.size);
}

std::size_t MemoryLine::send(ByteView bytes) {
    advance();
    if (!queueTakes())
        return 0;
    const std::size_t count = std::min(m_queue.size - queued(), bytes.size());
    m_wasFull = queued() + count == m_queue.size;
    put(m_toCamera, m_toCameraFree, bytes.range(0, count).toBytes(), Clock::now());
    advance();
    return count;
}

std::optional<MemoryLine::Moment> MemoryLine::roomAt() {
    advance();
    return queueTakes() ? Clock::now() : nextEvent();
}

std::optional<MemoryLine::Moment> MemoryLine::emptyAt() {
    advance();
    // Neither a camera that does not read nor a long way delays anybody: what has left the queue is sent.
    return m_toCameraFree <= Clock::now() ? std::nullopt : std::optional(m_toCameraFree);
}

std::size_t MemoryLine::available() {
    advance();
    std::size_t bytes = 0;
    for (const Piece& piece : m_toTool)
        bytes += piece.arrives <= Clock::now() ? piece.bytes.size() : 0;
    return bytes;
}

Bytes MemoryLine::take(std::size_t most) {
    advance();
    Bytes taken;
    while (!m_toTool.empty() && m_toTool.front().arrives <= Clock::now() && taken.size() < most) {
        Bytes& bytes = m_toTool.front().bytes;
        const auto count = static_cast<std::ptrdiff_t>(std::min(most - taken.size(), bytes.size()));
        taken.insert(taken.end(), bytes.begin(), bytes.begin() + count);
        bytes.erase(bytes.begin(), bytes.begin() + count);
        if (bytes.empty())
            m_toTool.pop_front();
    }
    return taken;
}

std::optional<MemoryLine::Moment> MemoryLine::nextArrival() {
    advance();
    const std::optional<Moment> next = nextEvent();
    if (m_toTool.empty())
        return next;
    const Moment arrives = m_toTool.front().arrives;
    return std::min(next.value_or(arrives), arrives);
}

void MemoryLine::discardReceived() {
    static_cast<void>(take(available()));
}

void MemoryLine::closeToolEnd() {
    advance();
    m_toTool.clear();
}

} // namespace emulator
