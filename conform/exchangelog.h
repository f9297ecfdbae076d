// The exchanges of a line: requests, and the answers' bytes with their times.
#pragma once

#include "link/lineobserver.h"

#include <string>
#include <vector>

namespace conform {

using protocol::Bytes;
using protocol::ByteView;

/// Bytes without a pause between them.
struct Piece {
    Bytes bytes;
    Clock::Time first; ///< of its first byte
    Clock::Time last;
};

/// What was sent and what came until the next request.
struct Exchange {
    std::string name; ///< as expect() gave it
    Bytes request;
    Clock::Time sentAt;
    std::vector<Piece> pieces;

    [[nodiscard]] Bytes answer() const;
    [[nodiscard]] bool isAnswered() const { return !pieces.empty(); }
};

/// Observes a line that one thread uses.
class ExchangeLog final : public LineObserver {
public:
    /// A longer pause begins another piece.
    static constexpr std::chrono::milliseconds longestGap{3};

    /// Name of the next requests. Begins an exchange without request: what comes belongs to it.
    void expect(std::string name, Clock::Time now);
    [[nodiscard]] std::vector<Exchange> take() { return std::move(m_exchanges); }

    void sending(ByteView bytes, Clock::Time now) override;
    void received(ByteView bytes, Clock::Time earliest, Clock::Time now) override;

private:
    std::vector<Exchange> m_exchanges;
};

} // namespace conform
