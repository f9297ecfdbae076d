// A serial line of the simulation: the stand-in of the serial library at one end, a virtual camera at the
// other.
#pragma once

#include "emulator/camera/virtualcamera.h"
#include "emulator/line/linemodel.h"
#include "tests/simulation/world/scheduler.h"

#include <deque>
#include <functional>
#include <string>

namespace world {

using protocol::Bytes;
using protocol::ByteView;

/// How a system queues the bytes of a writer.
struct WriteQueue {
    std::size_t size = 4096; ///< bytes
    /// The writer waits until fewer bytes are queued: always, or once the queue is full.
    std::size_t takesBelow = size;
    bool onceFull = false;
};

/// Carries bytes at a rate, each at its virtual time. One thread of the world at a time.
class SimulatedLine {
public:
    explicit SimulatedLine(emulator::VirtualCamera camera);

    /// The camera after everything up to now.
    [[nodiscard]] emulator::VirtualCamera& camera();
    /// Time of the camera's records: since the construction of the line.
    [[nodiscard]] emulator::Time lineTime() const;

    /// Bytes per second in each direction; 0: no limit.
    void setPace(std::uint32_t bytesPerSecond);
    void setQueue(const WriteQueue& queue) { m_queue = queue; }
    /// Damage and delays between the camera and the paced line.
    [[nodiscard]] emulator::LineModel& model() { return m_model; }

    /// The device is gone: open ports fail. Or there again, nothing on the line.
    void setPresent(bool present);
    [[nodiscard]] bool isPresent();

    // --- the tool's end, for the stand-in ------------------------------------------------------------------
    void setSpeed(std::uint32_t baudRate);
    /// Puts bytes on the line, as many as its queue takes now.
    [[nodiscard]] std::size_t send(ByteView bytes);
    /// When the queue takes more bytes, or has sent all; nothing when it does now.
    [[nodiscard]] std::optional<Time> roomAt();
    [[nodiscard]] std::optional<Time> emptyAt();
    [[nodiscard]] std::size_t available();
    /// Takes up to so many bytes that have arrived.
    [[nodiscard]] Bytes take(std::size_t most);
    /// When more bytes may arrive; nothing while the line is at rest.
    [[nodiscard]] std::optional<Time> nextArrival();
    void discardReceived();
    /// Bytes on their way to the tool are lost.
    void closeToolEnd();

private:
    /// Bytes that arrive whole.
    struct Piece {
        Time arrives{0};
        Bytes bytes;
    };
    using Way = std::deque<Piece>;

    void advance();
    void clear();
    /// The camera's next step, or the next piece that it gets.
    [[nodiscard]] std::optional<Time> nextEvent() const;
    void deliver(Time at);
    void collectAnswers(Time at);
    void put(Way& way, Time& freeAt, const Bytes& bytes, Time from) const;
    [[nodiscard]] Time toWorld(emulator::Time time) const { return m_start + time; }
    [[nodiscard]] emulator::Time toCamera(Time time) const;
    [[nodiscard]] std::size_t queued() const;
    [[nodiscard]] bool queueTakes() const;

    emulator::VirtualCamera m_camera;
    emulator::LineModel m_model{m_camera};
    const Time m_start = now();
    Time m_byteTime{0};
    bool m_present = true;
    WriteQueue m_queue;
    bool m_wasFull = false;
    Way m_toCamera;
    Way m_toTool;
    Time m_toCameraFree{0};
    Time m_toToolFree{0};
};

/// A port of the stand-in: what the system's list says of it and where it leads.
struct SimulatedPort {
    std::string description = "n/a";
    std::string hardwareId = "n/a";
    SimulatedLine* line = nullptr; ///< null: it opens, and nothing is there
    bool listed = true;
    bool busy = false;
};

/// By name. What is not here does not exist.
void addPort(const std::string& name, const SimulatedPort& port);
void removePort(const std::string& name);
[[nodiscard]] SimulatedPort* findPort(const std::string& name);
/// Number of ports that are open.
[[nodiscard]] int openPorts();
/// Of these, the ones that the process's first thread opened.
[[nodiscard]] int openPortsOfFirstThread();
/// Called with each call of the library, as fake_serial writes it.
void setCallObserver(std::function<void(const std::string& port, const std::string& call)> observer);
/// Called after a read that brought bytes.
void setReadObserver(std::function<void(const std::string& port)> observer);

} // namespace world
