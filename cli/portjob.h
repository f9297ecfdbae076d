// One port's work on a thread of its own.
#pragma once

#include "cli/commands.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

namespace service {
class LineRecording;
}

namespace cli {

/// Opens a port and works on it until done or stopped. Made, asked and destroyed on the main thread.
class PortJob {
public:
    /// The work of the thread, with this job to open links by.
    using Work = std::function<void(PortJob& job)>;

    PortJob(std::string port, Work work);
    ~PortJob();
    PortJob(const PortJob&) = delete;
    PortJob& operator=(const PortJob&) = delete;

    [[nodiscard]] const std::string& port() const { return m_port; }
    [[nodiscard]] bool isDone() const { return m_done; }
    void stop();
    /// Text of the progress line: the current step, or the numbers of a transfer.
    [[nodiscard]] QString progress();
    /// Ends a download of which no byte came for ten seconds.
    void watchDownload();

    // On the job's thread:
    /// Opens the port with these options, runs their command and closes the port.
    [[nodiscard]] Result run(const Options& options, Output& output, bool severalPorts);
    /// The same with the caller's work on the open link.
    [[nodiscard]] Result
    use(const Options& options,
        const std::function<Result(CameraSp& camera, service::LineQuality& quality)>& work);
    [[nodiscard]] const std::atomic<bool>& stopped() const { return m_stopped; }
    void tell(const QString& text);

private:
    class OpenLink;

    /// The failure of a download that the job ended itself.
    void describeStandstill(Result& result);

    const std::string m_port;
    std::atomic<bool> m_stopped{false};
    std::atomic<bool> m_done{false};

    std::mutex m_mutex; // guards the following
    CameraSp* m_camera = nullptr;
    QString m_text;
    std::optional<Clock::Time> m_sendingSince;
    std::uint64_t m_lastDone = 0;
    std::optional<Clock::Time> m_lastByte;
    bool m_stoodStill = false; ///< a download was ended for want of bytes

    std::thread m_thread; // last: starts when everything else is there
};

/// Starts the recording that the options ask for; null without one. Throws std::runtime_error with a text for
/// people.
[[nodiscard]] std::unique_ptr<service::LineRecording> startRecording(const Options& options,
                                                                     const std::string& port);
/// Ends the recording, which may be null. An incomplete one fails a command that succeeded.
void endRecording(service::LineRecording* recording, Result& result);

/// An opening that failed: the same advice by cause as the window gives. To be called in a handler.
[[nodiscard]] Result openingFailure();

} // namespace cli
