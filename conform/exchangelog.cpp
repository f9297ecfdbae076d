#include "conform/exchangelog.h"

#include <utility>

namespace conform {

Bytes Exchange::answer() const {
    Bytes all;
    for (const Piece& piece : pieces)
        protocol::append(all, piece.bytes);
    return all;
}

void ExchangeLog::expect(std::string name, Clock::Time now) {
    m_exchanges.push_back({std::move(name), {}, now, {}});
}

void ExchangeLog::sending(ByteView bytes, Clock::Time now) {
    if (m_exchanges.empty() || !m_exchanges.back().request.empty())
        expect(m_exchanges.empty() ? std::string() : m_exchanges.back().name, now);
    m_exchanges.back().request = bytes.toBytes();
    m_exchanges.back().sentAt = now;
}

void ExchangeLog::received(ByteView bytes, Clock::Time /*earliest*/, Clock::Time now) {
    if (m_exchanges.empty())
        expect({}, now);
    std::vector<Piece>& pieces = m_exchanges.back().pieces;
    if (pieces.empty() || now - pieces.back().last > longestGap)
        pieces.push_back({{}, now, now});
    protocol::append(pieces.back().bytes, bytes);
    pieces.back().last = now;
}

} // namespace conform
