// A recording of an open line.
#pragma once

#include "service/sideobserver.h"
#include "trace/recorder.h"

#include <memory>
#include <string>

namespace service {

/// Writes what passes into a new file, in the format that virtual-camera replays. Any thread.
class LineRecording final : public SideObserver {
public:
    /// The path is UTF-8. Throws std::runtime_error with a text for people when the file is there already or
    /// cannot be made.
    LineRecording(const std::string& path, const trace::RecordingHead& head);
    ~LineRecording() override;

    /// Writes what is held back. Nothing is recorded from then on.
    void finish();
    /// Why the recording is not complete; empty if it is.
    [[nodiscard]] std::string failure() const;

private:
    void pass(trace::Side from, protocol::ByteView bytes, trace::Time at) override;
    /// With the lock held; an exception becomes the failure.
    template <typename Work>
    void write(Work work);

    std::unique_ptr<trace::Recorder> m_recorder;
    std::string m_failure;
};

} // namespace service
