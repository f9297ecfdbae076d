// A request on the line and its answer, read by docs/protocol.md alone.
#pragma once

#include "link/protocol/bytes.h"

#include <array>
#include <cstdint>
#include <string>

namespace simulation {

inline constexpr std::array<std::uint8_t, 2> frameStart{0xAA, 0x5A};
inline constexpr std::array<std::uint8_t, 2> jsonStart{0x01, 0x17};

/// Rule of acceptance for frames; the check code is not looked at.
[[nodiscard]] bool isWholeFrame(const protocol::Bytes& answer);
/// Drops what cannot be the start of an answer; returns the number of bytes. A single byte stays.
std::size_t dropGarbage(protocol::Bytes& answer, const std::array<std::uint8_t, 2>& start);

inline constexpr std::size_t headerSize = 8; ///< of a frame

[[nodiscard]] std::uint64_t littleEndian(protocol::ByteView bytes, std::size_t at, std::size_t size);
/// FF where there is none.
[[nodiscard]] std::uint8_t byteAt(const protocol::Bytes& bytes, std::size_t at);
[[nodiscard]] std::string textOf(protocol::ByteView bytes);
/// Of the first sixteen bytes of a request, or all of it.
[[nodiscard]] bool isFrameHead(const protocol::Bytes& head);
[[nodiscard]] bool isJsonHead(const protocol::Bytes& head);
[[nodiscard]] bool isRequestFrame(const protocol::Bytes& bytes);
[[nodiscard]] bool isRequestJson(const protocol::Bytes& bytes);
/// The check code is computed here, apart from the client's.
[[nodiscard]] bool hasRightCheck(const protocol::Bytes& request, bool json);
[[nodiscard]] bool isPropertyCommand(std::uint8_t commandCode);

/// A request and the bytes read after it.
class SeenExchange {
public:
    SeenExchange() = default;
    SeenExchange(std::string port, protocol::Bytes request);

    /// A picture command that was sent with an offset.
    void shift(std::uint8_t offset);
    void received(const protocol::Bytes& bytes);
    void failed() { m_failed = true; }

    [[nodiscard]] const std::string& port() const { return m_port; }
    [[nodiscard]] bool hasFailed() const { return m_failed; }
    /// It may be another command, or a picture command with its offset.
    [[nodiscard]] bool isAmbiguous() const { return m_ambiguous; }
    [[nodiscard]] bool isJson() const;
    [[nodiscard]] bool isUpload() const;
    [[nodiscard]] std::uint8_t address() const;
    [[nodiscard]] std::uint8_t code() const;
    [[nodiscard]] protocol::ByteView payload() const;
    /// As read, garbage included.
    [[nodiscard]] const protocol::Bytes& bytes() const { return m_bytes; }
    /// Without garbage.
    [[nodiscard]] const protocol::Bytes& answer() const { return m_answer; }
    /// Bytes after the announcement's answer.
    [[nodiscard]] const protocol::Bytes& verdict() const { return m_verdict; }
    /// Bytes before answer and verdict.
    [[nodiscard]] std::size_t garbage() const { return m_garbage; }
    [[nodiscard]] bool answered() const;
    /// A whole answer that tells success.
    [[nodiscard]] bool granted() const;
    [[nodiscard]] bool refused() const { return answered() && !granted(); }
    /// The answer is about the property that was asked for.
    [[nodiscard]] bool sameProperty() const;
    /// The value of a property's answer.
    [[nodiscard]] std::string value() const;
    /// Of a picture's transfer: the size asked for, bytes.
    [[nodiscard]] std::uint32_t pictureSize() const;
    [[nodiscard]] bool isPictureTransfer() const;
    [[nodiscard]] bool isHeartbeatAnswer() const;

private:
    std::string m_port;
    protocol::Bytes m_request;
    protocol::Bytes m_bytes;
    protocol::Bytes m_answer;
    protocol::Bytes m_verdict;
    std::size_t m_garbage = 0;
    std::uint8_t m_offset = 0;
    bool m_failed = false;
    bool m_ambiguous = false;
};

} // namespace simulation
