// Serves a camera on a serial line in real time.
#pragma once

#include "emulator/camera/linecamera.h"
#include "emulator/line/lineclock.h"
#include "emulator/line/lineio.h"
#include "emulator/line/pace.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace emulator {

/// Owns the thread that carries a camera's bytes. A mutex guards the camera.
class LineFront {
public:
    LineFront(const LineFront&) = delete;
    LineFront& operator=(const LineFront&) = delete;
    virtual ~LineFront();

    /// Bytes per second in each direction; 0: unlimited.
    void setPace(std::uint32_t bytesPerSecond);
    /// Time since construction: the time of the camera's records.
    [[nodiscard]] Time now() const { return m_clock.now(); }
    /// False when the line is gone (vanished, hung up by a fault, or failed).
    [[nodiscard]] bool lineOpen() const { return m_lineOpen; }

protected:
    LineFront() = default;
    /// Starts serving the camera, which outlives stop(). The line must not block; only the front's thread
    /// uses it.
    void start(LineCamera& camera, LineIo::Line line);
    /// Every derived class calls it first in its destructor.
    void stop();
    /// Calls the function with the mutex held, then lets the thread look at the camera again.
    template <typename Function>
    decltype(auto) whileStopped(Function&& function) {
        const WakeOnExit wake{m_io}; // after the unlock
        const std::lock_guard lock(m_mutex);
        return std::forward<Function>(function)();
    }
    /// Runs the task on the front's thread between two of its steps and waits for it.
    void runOnThread(const std::function<void()>& task);
    /// On the front's thread: serves this line from now on, or none for LineIo::none.
    void setLine(LineIo::Line line);
    /// On the front's thread: closes the line after a failure or a fault.
    virtual void closeLine() = 0;
    /// Baud rate of the far end; nothing when the system cannot tell.
    [[nodiscard]] virtual std::optional<std::uint32_t> lineSpeed() const = 0;

private:
    struct WakeOnExit {
        LineIo& io;
        ~WakeOnExit() { io.wake(); }
    };

    void run();
    void runTasks();
    /// Lets the camera work; returns the longest wait in ms (-1: no limit).
    int stepCamera();
    void readLine();
    void writeLine();
    void lose();

    std::mutex m_mutex;             // guards *m_camera and the paces
    LineCamera* m_camera = nullptr; ///< set by start()
    Pace m_readPace;
    Pace m_writePace;
    LineClock m_clock;

    // The front's thread only.
    LineIo::Line m_line = LineIo::none;
    Bytes m_outgoing;
    LineIo::Readiness m_wanted;

    std::atomic<bool> m_lineOpen{false};
    std::atomic<bool> m_stopping{false};
    LineIo m_io;

    std::mutex m_taskMutex; // guards the two below
    const std::function<void()>* m_task = nullptr;
    std::condition_variable m_taskDone;
    std::thread m_thread;
};

} // namespace emulator
