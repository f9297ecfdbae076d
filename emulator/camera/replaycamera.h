// A camera that answers from a recording.
#pragma once

#include "emulator/camera/answerqueue.h"
#include "emulator/camera/camerarecord.h"
#include "emulator/camera/linecamera.h"
#include "trace/recording.h"

namespace emulator {

/// Searches each request in the recording behind the last match, then from the beginning, and answers with
/// the camera's bytes between that request and the next one, with the same delays. A request that the
/// recording does not have gets no answer, and an event says so. Bytes before the first recorded request are
/// not played.
class ReplayCamera final : public LineCamera {
public:
    /// atOnce: answers come without their delays.
    explicit ReplayCamera(const trace::Recording& recording, bool atOnce = false);

    void receive(ByteView bytes, Time now) override;
    [[nodiscard]] std::optional<Time> nextDue() const override { return m_queue.nextDue(); }
    [[nodiscard]] Bytes takeDue(Time now) override;

    [[nodiscard]] std::size_t requests() const { return m_exchanges.size(); }
    /// Requests so far that the recording does not have.
    [[nodiscard]] std::size_t unknownRequests() const { return m_unknown; }
    /// The handler gets every line for people, in the caller's thread.
    void onEvent(std::function<void(const Event&)> handler) { m_onEvent = std::move(handler); }

private:
    struct Piece {
        Time delay{0}; ///< from the end of the request
        Bytes bytes;
    };
    struct Exchange {
        trace::LineItem request;
        Bytes compared; ///< bytes that a matching request has
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
    std::size_t m_next = 0; ///< start of the search
    std::size_t m_unknown = 0;
    trace::LineFollower m_follower; ///< of the line with the replay
    AnswerQueue m_queue;
    std::function<void(const Event&)> m_onEvent;
};

} // namespace emulator
