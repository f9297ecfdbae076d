#include "emulator/camera/replaycamera.h"

#include "link/protocol/commands.h"
#include "link/protocol/door.h"
#include "link/protocol/frame.h"
#include "trace/framewords.h"
#include "trace/serials.h"

#include <algorithm>

namespace emulator {

namespace {

/// The time in a door request differs in every session.
constexpr auto doorTime = inFrame(protocol::door_layout::secondsSinceEpoch);

bool isDoor(const trace::LineItem& item) {
    return item.kind == trace::LineItem::Kind::frame &&
           ByteView(item.bytes).get(protocol::frame_layout::command) ==
               protocol::code(protocol::Command::door);
}

} // namespace

ReplayCamera::ReplayCamera(const trace::Recording& recording, bool atOnce)
    : m_head(recording.head), m_atOnce(atOnce) {
    trace::LineFollower follower;
    for (const trace::RecordingEntry& entry : recording.entries) {
        learn(follower.receive(entry.from, entry.bytes, entry.at));
        if (entry.from == trace::Side::tool || m_exchanges.empty())
            continue;
        Exchange& last = m_exchanges.back();
        last.answer.push_back({entry.at - last.request.lastAt, entry.bytes});
    }
    learn(follower.finish());
}

void ReplayCamera::learn(const std::vector<trace::LineItem>& items) {
    for (const trace::LineItem& item : items) {
        if (item.from == trace::Side::tool)
            m_exchanges.push_back({item, comparable(item), {}});
    }
}

Bytes ReplayCamera::comparable(const trace::LineItem& request) const {
    Bytes bytes = m_head.serialsBlanked ? trace::withoutSerials(request) : request.bytes;
    if (!isDoor(request) || bytes.size() < doorTime.end() + protocol::frame_layout::checkCodeSize)
        return bytes;
    bytes.resize(bytes.size() - protocol::frame_layout::checkCodeSize);
    bytes.erase(bytes.begin() + doorTime.offset, bytes.begin() + doorTime.end());
    return bytes;
}

void ReplayCamera::receive(ByteView bytes, Time now) {
    for (const trace::LineItem& item : m_follower.receive(trace::Side::tool, bytes, now)) {
        note(now, Event::Kind::received, trace::wordsOf(item, m_head.pictureOffset));
        answer(item, now);
    }
}

Bytes ReplayCamera::takeDue(Time now) {
    Bytes due = m_queue.take(now);
    if (due.empty())
        return due;
    for (const trace::LineItem& item : m_follower.receive(trace::Side::camera, due, now))
        note(now, Event::Kind::answered, trace::wordsOf(item, m_head.pictureOffset));
    return due;
}

/// Searches behind the last match, then from the beginning.
const ReplayCamera::Exchange* ReplayCamera::find(const trace::LineItem& request) const {
    const Bytes wanted = comparable(request);
    const auto same = [&](const Exchange& exchange) {
        return exchange.request.kind == request.kind && exchange.compared == wanted;
    };
    const auto next = m_exchanges.begin() + static_cast<std::ptrdiff_t>(m_next);
    if (const auto later = std::find_if(next, m_exchanges.end(), same); later != m_exchanges.end())
        return &*later;
    const auto earlier = std::find_if(m_exchanges.begin(), next, same);
    return earlier == next ? nullptr : &*earlier;
}

void ReplayCamera::answer(const trace::LineItem& request, Time now) {
    const Exchange* exchange = find(request);
    if (exchange == nullptr) {
        ++m_unknown;
        note(now, Event::Kind::noted, "not in the recording; no answer");
        return;
    }
    const auto index = static_cast<std::size_t>(exchange - m_exchanges.data());
    if (index != m_next)
        note(now, Event::Kind::noted,
             "goes on at request " + std::to_string(index + 1) + " of " + std::to_string(m_exchanges.size()) +
                 " in the recording");
    m_next = index + 1;
    if (exchange->answer.empty())
        note(now, Event::Kind::noted, "the camera did not answer this");
    for (const Piece& piece : exchange->answer)
        m_queue.add(now + (m_atOnce ? Time::zero() : piece.delay), piece.bytes);
}

void ReplayCamera::note(Time at, Event::Kind kind, std::string text) const {
    if (m_onEvent)
        m_onEvent({at, kind, std::move(text)});
}

} // namespace emulator
