// A recording of an open line.
#pragma once

#include "link/lineobserver.h"
#include "trace/recorder.h"

#include <memory>
#include <mutex>
#include <string>

namespace service {

/// Writes what passes into a new file, in the format that virtual-camera replays. Any thread.
class LineRecording final : public LineObserver {
public:
    /// The path is UTF-8. Throws std::runtime_error with a text for people when the file is there already or
    /// cannot be made.
    LineRecording(const std::string& path, const trace::RecordingHead& head);
    ~LineRecording();

    void sending(protocol::ByteView bytes, Clock::Time now) override;
    void received(protocol::ByteView bytes, Clock::Time now) override;

    /// Writes what is held back. Nothing is recorded from then on.
    void finish();
    /// Why the recording is not complete; empty if it is.
    [[nodiscard]] std::string failure() const;

private:
    void pass(trace::Side from, protocol::ByteView bytes, Clock::Time now);
    /// With the lock held; an exception becomes the failure.
    template <typename Work>
    void write(Work work);

    mutable std::mutex m_mutex; // guards everything below
    std::unique_ptr<trace::Recorder> m_recorder;
    std::optional<Clock::Time> m_start;
    std::string m_failure;
};

} // namespace service
