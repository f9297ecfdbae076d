// Holds the client's pauses, so that a test can act during a job.
#pragma once

#include "link/camerasp.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

/// From its making on, every pause of a client is recorded, and waits until release() when it is held.
/// Made before the job starts; a job may outlive it.
class HeldPause {
public:
    explicit HeldPause(bool held = true) {
        m_state->held = held;
        CameraSp::replaceSleep(
            [state = m_state](std::chrono::nanoseconds duration) { state->wait(duration); });
    }
    ~HeldPause() { release(); }
    HeldPause(const HeldPause&) = delete;
    HeldPause& operator=(const HeldPause&) = delete;

    void release() {
        const std::lock_guard lock(m_state->mutex);
        m_state->held = false;
        m_state->changed.notify_all();
    }
    /// A job has reached its first pause. False when none does within the time.
    bool waitForFirst() {
        std::unique_lock lock(m_state->mutex);
        return m_state->changed.wait_for(lock, std::chrono::seconds(5),
                                         [this] { return !m_state->durations.empty(); });
    }
    [[nodiscard]] std::vector<std::chrono::nanoseconds> durations() const {
        const std::lock_guard lock(m_state->mutex);
        return m_state->durations;
    }

private:
    struct State {
        void wait(std::chrono::nanoseconds duration) {
            std::unique_lock lock(mutex);
            durations.push_back(duration);
            changed.notify_all();
            changed.wait(lock, [this] { return !held; });
        }

        std::mutex mutex;
        std::condition_variable changed;
        bool held = false;
        std::vector<std::chrono::nanoseconds> durations;
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};
