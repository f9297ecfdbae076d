// A camera that answers from a recording.
#pragma once

#include "emulator/camera/answerqueue.h"
#include "emulator/camera/camerarecord.h"
#include "trace/recording.h"

namespace emulator {

/// Bytes in, timed bytes out, as VirtualCamera: no clock, no line, no threads. A request is looked for in the
/// recording from where the last one was found, then from the beginning; it gets what the camera sent between
/// that request and the next one, with the same delays. A request that the recording does not have gets
/// nothing, and a line says so. What the camera sent before the first request is not played.
class ReplayCamera {
public:
    /// At once: every answer comes without its delay.
    explicit ReplayCamera(const trace::Recording& recording, bool atOnce = false);

    void receive(ByteView bytes, Time now);
    /// When takeDue is to be asked next; nothing while the camera only waits.
    [[nodiscard]] std::optional<Time> nextDue() const { return m_queue.nextDue(); }
    [[nodiscard]] Bytes takeDue(Time now);

    [[nodiscard]] std::size_t requests() const { return m_exchanges.size(); }
    /// Requests so far that the recording does not have.
    [[nodiscard]] std::size_t unknownRequests() const { return m_unknown; }
    /// Called for every line for people, in the caller's thread.
    void onEvent(std::function<void(const Event&)> handler) { m_onEvent = std::move(handler); }

private:
    struct Piece {
        Time delay{0}; ///< from the end of the request
        Bytes bytes;
    };
    struct Exchange {
        trace::LineItem request;
        Bytes compared; ///< what a request must have to be this one
        std::vector<Piece> answer;
    };

    void learn(const std::vector<trace::LineItem>& items);
    [[nodiscard]] Bytes comparable(const trace::LineItem& request) const;
    [[nodiscard]] const Exchange* find(const trace::LineItem& request) const;
    void answer(const trace::LineItem& request, Time now);
    void note(Time at, Event::Kind kind, std::string text) const;

    trace::RecordingHead m_head;
    bool m_atOnce;
    std::vector<Exchange> m_exchanges;
    std::size_t m_next = 0; ///< where the search begins
    std::size_t m_unknown = 0;
    trace::LineFollower m_follower; ///< of the line that is played on
    AnswerQueue m_queue;
    std::function<void(const Event&)> m_onEvent;
};

} // namespace emulator
