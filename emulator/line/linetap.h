// A tap between the tool and a camera: passes every byte on and records it.
#pragma once

#include "emulator/line/byteline.h"
#include "emulator/line/lineclock.h"
#include "trace/recorder.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace emulator {

/// Runs from construction until stop or destruction, with one thread for each direction. It records a chunk
/// before it passes the chunk on: no byte reaches the other side unrecorded.
class LineTap {
public:
    /// The lines are borrowed and outlive the tap. One of the tap's threads at a time uses the recorder.
    LineTap(ByteLine& tool, ByteLine& camera, trace::Recorder recorder);
    ~LineTap() { stop(); }
    LineTap(const LineTap&) = delete;
    LineTap& operator=(const LineTap&) = delete;

    /// Stops the threads and ends the recording. Not from two threads at once.
    void stop();
    /// False when a line is gone or the recording could not be written.
    [[nodiscard]] bool running() const { return !m_stopping; }
    /// The reason, in a sentence, if the tap ended by itself; else empty.
    [[nodiscard]] std::string failure() const;

private:
    void carry(trace::Side from, ByteLine& source, ByteLine& target);
    void carryChunk(trace::Side from, Bytes& bytes, ByteLine& source, ByteLine& target);
    void pass(trace::Side from, ByteView bytes, ByteLine& target);
    void passTime(trace::Side from);
    void fail(const std::string& sentence, const std::string& note);
    void failGone(const ByteLine& line);
    void noteRate();
    [[nodiscard]] Time now() const { return m_clock.now(); }

    ByteLine& m_toolLine;
    ByteLine& m_cameraLine;
    LineClock m_clock;

    mutable std::mutex m_mutex; // guards the four below
    trace::Recorder m_recorder;
    std::string m_failure; ///< in the chosen language
    std::string m_note;    ///< the same in English, for the recording
    std::optional<std::uint32_t> m_toolRate;

    std::atomic<bool> m_stopping{false};
    std::thread m_fromTool;
    std::thread m_fromCamera;
    bool m_stopped = false; ///< owner's thread only
};

} // namespace emulator
