// Writes the traffic of a line as the text of a recording.
#pragma once

#include "trace/recording.h"

#include <array>
#include <deque>
#include <functional>

namespace trace {

/// Writes the traffic at once: every call gives the sink a block of complete lines. With blanked serial
/// numbers, bytes that may belong to one are held until their frame is complete or abandoned. No clock, no
/// file, no threads.
class Recorder {
public:
    /// The sink may throw; its exceptions leave the calls below.
    using Sink = std::function<void(const std::string& lines)>;

    /// Writes the head at once.
    Recorder(RecordingHead head, Sink sink);

    void pass(Side from, ByteView bytes, Time now);
    /// Call it regularly while there is no traffic.
    void passTime(Time now);
    /// An event of the line itself.
    void note(Time now, const std::string& words);
    /// Ends the recording; writes the held lines.
    void finish();

    /// The handler gets every line for people; the recording does not change.
    void onEvent(std::function<void(const Event&)> handler) { m_onEvent = std::move(handler); }

private:
    /// A held line: bytes, or a remark without bytes.
    struct Held {
        RecordingEntry entry;
        std::uint64_t begin = 0; ///< offset of the first byte in all bytes of its side
        std::string remark;
    };
    struct Progress {
        std::uint64_t passed = 0; ///< bytes received
        std::uint64_t told = 0;   ///< bytes in items
    };

    void tell(const std::vector<LineItem>& items);
    void blank(const LineItem& item);
    [[nodiscard]] bool mayGo(const Held& held) const;
    void release(bool all);
    [[nodiscard]] Progress& progress(Side side) { return m_progress[static_cast<std::size_t>(side)]; }
    [[nodiscard]] const Progress& progress(Side side) const {
        return m_progress[static_cast<std::size_t>(side)];
    }

    RecordingHead m_head;
    Sink m_sink;
    std::function<void(const Event&)> m_onEvent;
    LineFollower m_follower;
    std::array<Progress, 2> m_progress;
    std::deque<Held> m_held;
};

} // namespace trace
