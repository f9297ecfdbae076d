// From bytes that pass to the text of a recording.
#pragma once

#include "trace/recording.h"

#include <array>
#include <deque>
#include <functional>

namespace trace {

/// Writes what passes over a line, at once: a block of whole lines goes to the sink with every call. With
/// blanked serial numbers, bytes that may belong to one are held back until their frame is whole or has
/// broken off. No clock, no file, no threads.
class Recorder {
public:
    /// The sink may throw; so does the call that led to it then.
    using Sink = std::function<void(const std::string& lines)>;

    /// Writes the head at once.
    Recorder(RecordingHead head, Sink sink);

    void pass(Side from, ByteView bytes, Time now);
    /// To be called now and then while nothing passes.
    void passTime(Time now);
    /// Something that happened to the line.
    void note(Time now, const std::string& words);
    /// The recording ends; what was held back is written.
    void finish();

    /// Called for every line for people, beside the recording.
    void onEvent(std::function<void(const Event&)> handler) { m_onEvent = std::move(handler); }

private:
    /// A line that waits for its turn: bytes, or a remark when there are none.
    struct Held {
        RecordingEntry entry;
        std::uint64_t begin = 0; ///< place of the first byte in all bytes of its side
        std::string remark;
    };
    struct Progress {
        std::uint64_t passed = 0; ///< bytes
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
