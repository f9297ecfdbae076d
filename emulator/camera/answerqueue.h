// Unsent bytes, each piece with its send time.
#pragma once

#include "emulator/camera/camerasettings.h"

namespace emulator {

class AnswerQueue {
public:
    void add(Time due, Bytes bytes) {
        if (!bytes.empty())
            m_pieces.emplace(due, std::move(bytes));
    }
    void clear() { m_pieces.clear(); }
    [[nodiscard]] std::optional<Time> nextDue() const {
        return m_pieces.empty() ? std::nullopt : std::optional(m_pieces.begin()->first);
    }
    /// Pieces of the same time keep their order.
    [[nodiscard]] Bytes take(Time now) {
        Bytes taken;
        while (!m_pieces.empty() && m_pieces.begin()->first <= now) {
            protocol::append(taken, m_pieces.begin()->second);
            m_pieces.erase(m_pieces.begin());
        }
        return taken;
    }

private:
    std::multimap<Time, Bytes> m_pieces;
};

} // namespace emulator
