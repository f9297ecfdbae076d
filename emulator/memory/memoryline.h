// A serial line without a device: the tool's calls of the serial library at one end, a virtual camera at the
// other.
#pragma once

#include "emulator/camera/virtualcamera.h"
#include "emulator/line/linemodel.h"

#include <deque>

namespace emulator {

/// How a system queues the bytes of a writer.
struct WriteQueue {
    std::size_t size = 4096; ///< bytes
    /// The writer waits until fewer bytes are queued: always, or once the queue is full.
    std::size_t takesBelow = size;
    bool onceFull = false;
};

/// Carries bytes at a rate, each at its time. It has no thread: each call first lets happen what was due
/// since the last one. Calls of several threads need a MemoryLock.
class MemoryLine {
public:
    using Clock = std::chrono::steady_clock;
    using Moment = Clock::time_point;

    explicit MemoryLine(VirtualCamera camera);

    /// The camera after everything up to now.
    [[nodiscard]] VirtualCamera& camera();
    /// Time of the camera's records: since the construction of the line.
    [[nodiscard]] Time lineTime() const;

    /// Bytes per second in each direction; 0: no limit.
    void setPace(std::uint32_t bytesPerSecond);
    /// From the next opening on bytes take the time of the rate at which the tool opens the port.
    void followRate() { m_followsRate = true; }
    void setQueue(const WriteQueue& queue) { m_queue = queue; }
    /// Damage and delays between the camera and the paced line.
    [[nodiscard]] LineModel& model() { return m_model; }

    /// The device is gone: open ports fail. Or there again, nothing on the line.
    void setPresent(bool present);
    [[nodiscard]] bool isPresent();

    // --- the tool's end, for the library's calls -----------------------------------------------------------
    void setSpeed(std::uint32_t baudRate);
    /// Puts bytes on the line, as many as its queue takes now.
    [[nodiscard]] std::size_t send(ByteView bytes);
    /// When the queue may take more bytes; nothing when the camera does not read.
    [[nodiscard]] std::optional<Moment> roomAt();
    /// When all bytes are sent; nothing when they are.
    [[nodiscard]] std::optional<Moment> emptyAt();
    [[nodiscard]] std::size_t available();
    /// Takes up to so many bytes that have arrived.
    [[nodiscard]] Bytes take(std::size_t most);
    /// When bytes that were not taken arrive, or may do; nothing while the line is at rest.
    [[nodiscard]] std::optional<Moment> nextArrival();
    void discardReceived();
    /// Bytes on their way to the tool are lost.
    void closeToolEnd();

private:
    /// Bytes that arrive whole.
    struct Piece {
        Moment arrives;
        Bytes bytes;
    };
    using Way = std::deque<Piece>;

    void advance();
    void clear();
    /// The camera's next step, or the next piece that it gets.
    [[nodiscard]] std::optional<Moment> nextEvent() const;
    void deliver(Moment at);
    void collectAnswers(Moment at);
    void put(Way& way, Moment& freeAt, const Bytes& bytes, Moment from) const;
    [[nodiscard]] Moment momentOf(Time time) const;
    [[nodiscard]] Time timeOf(Moment moment) const;
    [[nodiscard]] std::size_t queued() const;
    [[nodiscard]] bool queueTakes() const;

    VirtualCamera m_camera;
    LineModel m_model{m_camera};
    const Moment m_start = Clock::now();
    Clock::duration m_byteTime{0};
    bool m_followsRate = false;
    bool m_present = true;
    WriteQueue m_queue;
    bool m_wasFull = false;
    Way m_toCamera;
    Way m_toTool;
    Moment m_toCameraFree;
    Moment m_toToolFree;
};

} // namespace emulator
