// Stands between the tool and a camera: passes every byte through and has it recorded.
#pragma once

#include "emulator/line/byteline.h"
#include "trace/recorder.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace emulator {

/// Runs from its making until stop or its destruction, with a thread for each direction. A chunk is recorded
/// just before it is passed on, so that no byte reaches the other side unrecorded.
class LineTap {
public:
    /// The lines are borrowed and outlive the tap. The recorder is used on the tap's threads, one at a time.
    LineTap(ByteLine& tool, ByteLine& camera, trace::Recorder recorder);
    ~LineTap() { stop(); }
    LineTap(const LineTap&) = delete;
    LineTap& operator=(const LineTap&) = delete;

    /// Ends passing and writes what was held back. Not from two threads at once.
    void stop();
    /// False when a line is gone or the recording could not be written.
    [[nodiscard]] bool running() const { return !m_ending; }
    /// Why the tap ended by itself, in a sentence; empty when it did not.
    [[nodiscard]] std::string failure() const;

private:
    void carry(trace::Side from, ByteLine& source, ByteLine& target);
    void carryChunk(trace::Side from, Bytes& bytes, ByteLine& source, ByteLine& target);
    void pass(trace::Side from, ByteView bytes, ByteLine& target);
    void passTime(trace::Side from);
    void fail(const std::string& sentence);
    void noteRate();
    [[nodiscard]] Time now() const;

    ByteLine& m_toolLine;
    ByteLine& m_cameraLine;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();

    mutable std::mutex m_mutex; // guards the three below
    trace::Recorder m_recorder;
    std::string m_failure;
    std::optional<std::uint32_t> m_toolRate;

    std::atomic<bool> m_ending{false};
    std::thread m_fromTool;
    std::thread m_fromCamera;
    bool m_stopped = false; ///< owner's thread only
};

} // namespace emulator
