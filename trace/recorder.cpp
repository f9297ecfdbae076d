#include "trace/recorder.h"

#include "trace/framewords.h"
#include "trace/serials.h"

#include <algorithm>

namespace trace {

Recorder::Recorder(RecordingHead head, Sink sink) : m_head(std::move(head)), m_sink(std::move(sink)) {
    m_sink(headText(m_head));
}

void Recorder::pass(Side from, ByteView bytes, Time now) {
    if (bytes.empty())
        return;
    m_held.push_back({{now, from, bytes.toBytes()}, progress(from).passed, {}});
    progress(from).passed += bytes.size();
    tell(m_follower.receive(from, bytes, now));
    release(false);
}

void Recorder::passTime(Time now) {
    tell(m_follower.passTime(now));
    release(false);
}

void Recorder::note(Time now, const std::string& words) {
    m_held.push_back({{now, Side::tool, {}}, 0, words});
    if (m_onEvent)
        m_onEvent({now, Event::Kind::noted, words});
    release(false);
}

void Recorder::finish() {
    tell(m_follower.finish());
    release(true);
}

void Recorder::tell(const std::vector<LineItem>& items) {
    for (LineItem item : items) {
        if (m_head.serialsBlanked) {
            item.bytes = withoutSerials(item);
            blank(item);
        }
        progress(item.from).told += item.bytes.size();
        const std::string words = wordsOf(item, m_head.pictureOffset);
        m_held.push_back(
            {{item.lastAt, item.from, {}}, 0, (item.from == Side::tool ? "tool: " : "camera: ") + words});
        if (m_onEvent)
            m_onEvent({item.lastAt, item.from == Side::tool ? Event::Kind::received : Event::Kind::answered,
                       words});
    }
}

/// Overwrites the item's bytes in the held lines.
void Recorder::blank(const LineItem& item) {
    const std::uint64_t first = progress(item.from).told;
    const std::uint64_t last = first + item.bytes.size();
    for (Held& held : m_held) {
        if (held.entry.from != item.from)
            continue;
        Bytes& bytes = held.entry.bytes;
        const std::uint64_t from = std::max(first, held.begin);
        const std::uint64_t to = std::min(last, held.begin + bytes.size());
        if (from < to)
            std::copy(item.bytes.begin() + static_cast<std::ptrdiff_t>(from - first),
                      item.bytes.begin() + static_cast<std::ptrdiff_t>(to - first),
                      bytes.begin() + static_cast<std::ptrdiff_t>(from - held.begin));
    }
}

bool Recorder::mayGo(const Held& held) const {
    const Side from = held.entry.from;
    const bool whole = held.begin + held.entry.bytes.size() <= progress(from).told;
    return !m_head.serialsBlanked || whole || !mayCarrySerial(from, m_follower.waiting(from));
}

void Recorder::release(bool all) {
    std::string lines;
    while (!m_held.empty() && (all || mayGo(m_held.front()))) {
        const Held& next = m_held.front();
        lines += next.entry.bytes.empty() ? remarkText(next.remark) : entryText(next.entry);
        m_held.pop_front();
    }
    if (!lines.empty())
        m_sink(lines);
}

} // namespace trace
