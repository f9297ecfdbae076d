// Serves a virtual camera on a serial line in real time.
#pragma once

#include "emulator/camera/virtualcamera.h"
#include "emulator/line/lineio.h"
#include "emulator/line/pace.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace emulator {

/// Owns the camera and the thread that carries its bytes. The camera is touched under a mutex only:
/// use withCamera from any thread. Event handlers run on the front's thread, or on the one inside withCamera,
/// with the mutex held; they must not call the front.
class CameraFront {
public:
    CameraFront(const CameraFront&) = delete;
    CameraFront& operator=(const CameraFront&) = delete;
    virtual ~CameraFront();

    /// Runs the function with the camera and returns what it returns. Short: the camera stands still
    /// meanwhile. Not to be nested.
    template <typename Function>
    decltype(auto) withCamera(Function&& function) {
        const WakeOnExit wake{*this}; // after the lock is gone
        const std::lock_guard lock(m_mutex);
        return std::forward<Function>(function)(m_camera);
    }

    /// Bytes per second in each direction; 0 does not hold anything back.
    void setPace(std::uint32_t bytesPerSecond);
    /// Time since this front was made: the time of the camera's records.
    [[nodiscard]] Time now() const;
    /// False when the line is gone (vanished, hung up by a fault, or failed).
    [[nodiscard]] bool lineOpen() const { return m_lineOpen; }

protected:
    explicit CameraFront(VirtualCamera camera);
    /// Starts serving. The line must not block; it is used by the front's thread only.
    void start(LineIo::Line line);
    /// Every derived class calls it first thing in its destructor.
    void stop();
    /// Runs the task on the front's thread between two of its steps and waits for it.
    void runOnThread(const std::function<void()>& task);
    /// On the front's thread: the line served from now on, or LineIo::none.
    void setLine(LineIo::Line line);
    /// On the front's thread: the line failed or a fault hangs up; it is to be closed.
    virtual void closeLine() = 0;
    /// Rate at which the far end runs the line; nothing when it cannot be told.
    [[nodiscard]] virtual std::optional<std::uint32_t> lineSpeed() const = 0;

private:
    struct WakeOnExit {
        CameraFront& front;
        ~WakeOnExit() { front.m_io.wake(); }
    };

    void run();
    void runTasks();
    /// Lets the camera work and returns how long to wait at most, in ms (-1: for ever).
    int stepCamera();
    void readLine();
    void writeLine();
    void lose();

    std::mutex m_mutex; // guards m_camera and the paces
    VirtualCamera m_camera;
    Pace m_readPace;
    Pace m_writePace;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();

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
