// Finds frames and JSON envelopes in received bytes.
#pragma once

#include "link/protocol/bytes.h"

#include <chrono>
#include <optional>
#include <utility>

namespace trace {

using protocol::Bytes;
using protocol::ByteView;

/// Stricter than the tool: a wrong length or check code makes a bad frame. Resynchronises byte by byte after
/// bytes that are no frame.
class FrameScanner {
public:
    struct Item {
        enum class Kind { frame, badFrame, json, badJson, garbage };

        Kind kind = Kind::garbage;
        Bytes bytes;
    };

    /// The sender of the bytes: the envelopes of requests and answers differ, and answers carry pictures.
    enum class Side { tool, camera };

    /// Longest payloads; a longer stated length is a bad frame.
    static constexpr std::uint32_t longestPayload = 65536;
    static constexpr std::uint32_t longestAnswerPayload = 64 << 20;

    /// A frame or envelope that gets no byte for this long is abandoned. The scanner has no clock: its users
    /// take the time.
    static constexpr std::chrono::seconds longestSilence{1};

    explicit FrameScanner(Side side = Side::tool) : m_side(side) {}

    void add(ByteView bytes) { protocol::append(m_buffer, bytes); }
    /// The next item, or nothing while more bytes are needed.
    [[nodiscard]] std::optional<Item> next();
    /// Bytes not yet taken; empties the scanner.
    [[nodiscard]] Bytes takeRest() { return std::exchange(m_buffer, {}); }
    /// Bytes not yet taken.
    [[nodiscard]] ByteView waiting() const { return m_buffer; }
    [[nodiscard]] bool empty() const { return m_buffer.empty(); }

private:
    [[nodiscard]] Item take(Item::Kind kind, std::size_t count);
    std::optional<Item> frameAtStart();
    std::optional<Item> jsonAtStart();
    std::optional<Item> jsonAnswerAtStart();

    Side m_side;
    Bytes m_buffer;
};

} // namespace trace
