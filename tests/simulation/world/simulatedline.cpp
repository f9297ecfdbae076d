#include "tests/simulation/world/simulatedline.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace world {

namespace {

constexpr std::size_t pieceSize = 64; // arrives whole on a line with a rate

} // namespace

SimulatedLine::SimulatedLine(emulator::VirtualCamera camera) : m_camera(std::move(camera)) {}

emulator::VirtualCamera& SimulatedLine::camera() {
    advance();
    return m_camera;
}

emulator::Time SimulatedLine::lineTime() const {
    return toCamera(now());
}

emulator::Time SimulatedLine::toCamera(Time time) const {
    return std::chrono::floor<emulator::Time>(time - m_start);
}

void SimulatedLine::setPace(std::uint32_t bytesPerSecond) {
    advance();
    m_byteTime = bytesPerSecond == 0 ? 0ns : Time(1s) / bytesPerSecond;
}

void SimulatedLine::setPresent(bool present) {
    advance();
    if (present && !m_present)
        m_camera.lineReopened(lineTime());
    m_present = present;
    clear();
}

void SimulatedLine::clear() {
    m_model.clear();
    m_toCamera.clear();
    m_toTool.clear();
    notifyAll(this);
}

bool SimulatedLine::isPresent() {
    advance();
    return m_present;
}

// --- time --------------------------------------------------------------------------------------------------

/// Lets everything happen that is due, in the order of its times.
void SimulatedLine::advance() {
    while (true) {
        const std::optional<Time> next = nextEvent();
        if (!next || *next > now())
            return;
        deliver(*next);
        collectAnswers(*next);
    }
}

std::optional<Time> SimulatedLine::nextEvent() const {
    std::optional<Time> next;
    if (const auto due = m_model.nextDue())
        next = std::max(toWorld(*due), m_start);
    const bool readsAgain = m_model.readingPausedUntil() != emulator::Time::max();
    if (!m_toCamera.empty() && readsAgain) {
        const Time arrives = std::max(m_toCamera.front().arrives, toWorld(m_model.readingPausedUntil()));
        next = std::min(next.value_or(arrives), arrives);
    }
    return next;
}

void SimulatedLine::deliver(Time at) {
    const emulator::Time time = toCamera(at);
    while (!m_toCamera.empty() && m_toCamera.front().arrives <= at && !m_model.readingPaused(time)) {
        const Bytes bytes = std::move(m_toCamera.front().bytes);
        m_toCamera.pop_front();
        m_model.receive(bytes, time);
    }
}

void SimulatedLine::collectAnswers(Time at) {
    const emulator::Time time = toCamera(at);
    const Bytes answer = m_model.takeDue(time);
    if (m_present)
        put(m_toTool, m_toToolFree, answer, at);
    if (m_model.hangUpDue(time)) {
        m_present = false;
        clear();
    }
}

void SimulatedLine::put(Way& way, Time& freeAt, const Bytes& bytes, Time from) const {
    Time start = std::max(from, freeAt);
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

void SimulatedLine::setSpeed(std::uint32_t baudRate) {
    advance();
    m_camera.setLineSpeed(baudRate);
}

std::size_t SimulatedLine::queued() const {
    std::size_t bytes = 0;
    for (const Piece& piece : m_toCamera)
        bytes += piece.bytes.size();
    return bytes;
}

bool SimulatedLine::queueTakes() const {
    const bool waits = m_wasFull || !m_queue.onceFull;
    return queued() < (waits ? m_queue.takesBelow : m_queue.size);
}

std::size_t SimulatedLine::send(ByteView bytes) {
    advance();
    if (!queueTakes())
        return 0;
    const std::size_t count = std::min(m_queue.size - queued(), bytes.size());
    m_wasFull = queued() + count == m_queue.size;
    put(m_toCamera, m_toCameraFree, bytes.range(0, count).toBytes(), now());
    advance();
    return count;
}

std::optional<Time> SimulatedLine::roomAt() {
    advance();
    return queueTakes() || m_toCamera.empty() ? std::nullopt : nextEvent();
}

std::optional<Time> SimulatedLine::emptyAt() {
    advance();
    // Neither a camera that does not read nor a long way delays anybody: what has left the queue is sent.
    return m_toCameraFree <= now() ? std::nullopt : std::optional(m_toCameraFree);
}

std::size_t SimulatedLine::available() {
    advance();
    std::size_t bytes = 0;
    for (const Piece& piece : m_toTool)
        bytes += piece.arrives <= now() ? piece.bytes.size() : 0;
    return bytes;
}

Bytes SimulatedLine::take(std::size_t most) {
    advance();
    Bytes taken;
    while (!m_toTool.empty() && m_toTool.front().arrives <= now() && taken.size() < most) {
        Bytes& bytes = m_toTool.front().bytes;
        const auto count = static_cast<std::ptrdiff_t>(std::min(most - taken.size(), bytes.size()));
        taken.insert(taken.end(), bytes.begin(), bytes.begin() + count);
        bytes.erase(bytes.begin(), bytes.begin() + count);
        if (bytes.empty())
            m_toTool.pop_front();
    }
    return taken;
}

std::optional<Time> SimulatedLine::nextArrival() {
    advance();
    std::optional<Time> next = nextEvent();
    for (const Piece& piece : m_toTool) {
        if (piece.arrives > now())
            return std::min(next.value_or(piece.arrives), piece.arrives);
    }
    return next;
}

void SimulatedLine::discardReceived() {
    static_cast<void>(take(available()));
}

void SimulatedLine::closeToolEnd() {
    advance();
    m_toTool.clear();
}

} // namespace world
