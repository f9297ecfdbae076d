#include "tests/simulation/seenexchange.h"

#include "link/protocol/commands.h"

#include <algorithm>

using protocol::Bytes;
using protocol::ByteView;
using protocol::Command;

namespace simulation {

namespace {

constexpr std::size_t frameOverhead = 10;
constexpr std::size_t leastAnswer = 9;
constexpr std::size_t jsonOverhead = 6;

bool startsWith(const Bytes& bytes, const std::array<std::uint8_t, 2>& start) {
    return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

bool isWholeJson(const Bytes& answer) {
    return answer.size() >= leastAnswer && startsWith(answer, jsonStart) &&
           (std::size_t{answer[2]} << 8U) + answer[3] + jsonOverhead == answer.size();
}

std::uint16_t xmodem(ByteView bytes) {
    std::uint16_t check = 0;
    for (const std::uint8_t byte : bytes) {
        check = static_cast<std::uint16_t>(check ^ (unsigned{byte} << 8U));
        for (int bit = 0; bit < 8; ++bit)
            check = static_cast<std::uint16_t>((check & 0x8000U) != 0 ? (unsigned{check} << 1U) ^ 0x1021U
                                                                      : unsigned{check} << 1U);
    }
    return check;
}

std::uint16_t modbus(ByteView bytes) {
    std::uint16_t check = 0xFFFF;
    for (const std::uint8_t byte : bytes) {
        check = static_cast<std::uint16_t>(check ^ byte);
        for (int bit = 0; bit < 8; ++bit)
            check = static_cast<std::uint16_t>((check & 1U) != 0 ? (unsigned{check} >> 1U) ^ 0xA001U
                                                                 : unsigned{check} >> 1U);
    }
    return check;
}

bool isPictureCommand(unsigned code) {
    return code >= 0x06 && code <= 0x09;
}

} // namespace

std::uint64_t littleEndian(ByteView bytes, std::size_t at, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size && at + i < bytes.size(); ++i)
        value |= std::uint64_t{bytes.begin()[at + i]} << (8 * i);
    return value;
}

std::uint8_t byteAt(const Bytes& bytes, std::size_t at) {
    return at < bytes.size() ? bytes[at] : std::uint8_t{0xFF};
}

bool isFrameHead(const Bytes& head) {
    return head.size() >= headerSize && startsWith(head, frameStart);
}

bool isJsonHead(const Bytes& head) {
    return head.size() >= 14 && startsWith(head, jsonStart) && head[12] == 0xFD && head[13] == 0xFC;
}

bool isRequestFrame(const Bytes& bytes) {
    return isFrameHead(bytes) && bytes.size() >= frameOverhead &&
           littleEndian(bytes, 4, 4) + frameOverhead == bytes.size();
}

bool isRequestJson(const Bytes& bytes) {
    return isJsonHead(bytes) && bytes.size() >= 22;
}

bool hasRightCheck(const Bytes& request, bool json) {
    const ByteView checked = ByteView(request).range(0, request.size() - 2);
    return littleEndian(request, request.size() - 2, 2) == (json ? modbus(checked) : xmodem(checked));
}

bool isPropertyCommand(std::uint8_t commandCode) {
    return commandCode == protocol::code(Command::getProperty) ||
           commandCode == protocol::code(Command::setProperty) ||
           commandCode == protocol::code(Command::getInfo);
}

std::string textOf(ByteView bytes) {
    return {bytes.begin(), bytes.end()};
}

bool isWholeFrame(const Bytes& answer) {
    return answer.size() >= leastAnswer && startsWith(answer, frameStart) &&
           littleEndian(answer, 4, 4) + frameOverhead == answer.size();
}

std::size_t dropGarbage(Bytes& answer, const std::array<std::uint8_t, 2>& start) {
    auto begin = std::search(answer.begin(), answer.end(), start.begin(), start.end());
    if (begin == answer.end() && !answer.empty())
        --begin; // may be the first byte of the start
    const auto dropped = static_cast<std::size_t>(begin - answer.begin());
    answer.erase(answer.begin(), begin);
    return dropped;
}

SeenExchange::SeenExchange(std::string port, Bytes request)
    : m_port(std::move(port)), m_request(std::move(request)) {}

bool SeenExchange::isJson() const {
    return isRequestJson(m_request);
}

std::uint8_t SeenExchange::address() const {
    return byteAt(m_request, 2);
}

std::uint8_t SeenExchange::code() const {
    return isJson() || m_request.size() < frameOverhead ? std::uint8_t{0}
                                                        : static_cast<std::uint8_t>(m_request[3] - m_offset);
}

ByteView SeenExchange::payload() const {
    const std::size_t from = isJson() ? 20 : headerSize;
    return m_request.size() < from + 2 ? ByteView() : ByteView(m_request).range(from, m_request.size() - 2);
}

bool SeenExchange::isUpload() const {
    return code() == protocol::code(Command::appAnnounce) ||
           code() == protocol::code(Command::firewareAnnounce) ||
           code() == protocol::code(Command::modelAnnounce);
}

bool SeenExchange::isPictureTransfer() const {
    return (code() == protocol::code(Command::originRead) && payload().size() == 9) ||
           (code() == protocol::code(Command::readV1) && payload().size() == 10);
}

/// With some offsets the code is that of another command; a transfer shows by its size.
void SeenExchange::shift(std::uint8_t offset) {
    static constexpr std::array<std::uint8_t, 18> plainCodes{0x01, 0x02, 0x03, 0x04, 0x05, 0x0B,
                                                             0x0F, 0x1B, 0x1D, 0x1E, 0xC2, 0xC6,
                                                             0xC7, 0xC8, 0xC9, 0xCB, 0xCD, 0x00};
    constexpr std::size_t deletionSize = 1; // captures and lists have no payload
    constexpr std::size_t transferSize = 9;
    const std::size_t size = payload().size();
    const bool ambiguous = std::find(plainCodes.begin(), plainCodes.end(), code()) != plainCodes.end();
    const unsigned plain = (code() - unsigned{offset}) & 0xFFU;
    const bool transfer = plain == protocol::code(Command::originRead) && size == transferSize &&
                          littleEndian(payload(), 1, 4) == 0;
    if (isPictureCommand(plain) && (!ambiguous || transfer))
        m_offset = offset;
    else
        m_ambiguous =
            isPictureCommand(plain) && offset != 0 && (size <= deletionSize || size == transferSize);
}

void SeenExchange::received(const Bytes& bytes) {
    if (isUpload() && answered()) {
        protocol::append(m_verdict, bytes);
        m_garbage += dropGarbage(m_verdict, frameStart);
        return;
    }
    protocol::append(m_bytes, bytes);
    protocol::append(m_answer, bytes);
    m_garbage += dropGarbage(m_answer, isJson() ? jsonStart : frameStart);
}

bool SeenExchange::answered() const {
    return isJson() ? isWholeJson(m_answer) : isWholeFrame(m_answer);
}

bool SeenExchange::granted() const {
    if (!answered())
        return false;
    const std::size_t at = headerSize;
    if (code() == protocol::code(Command::modelAnnounce))
        return byteAt(m_answer, at) == 1 && byteAt(m_answer, at + 1) == 0;
    const bool second = isPropertyCommand(code()) || code() == protocol::code(Command::appV1Announce);
    return byteAt(m_answer, second ? at + 1 : at) == 0;
}

bool SeenExchange::sameProperty() const {
    return !payload().empty() && byteAt(m_answer, headerSize) == payload().begin()[0];
}

std::string SeenExchange::value() const {
    return textOf(ByteView(m_answer).range(headerSize + 2, m_answer.size() - 2));
}

std::uint32_t SeenExchange::pictureSize() const {
    const ByteView request = payload();
    return request.size() < 4 ? 0 : static_cast<std::uint32_t>(littleEndian(request, request.size() - 4, 4));
}

bool SeenExchange::isHeartbeatAnswer() const {
    return m_bytes.size() == 11 && startsWith(m_bytes, frameStart) && m_bytes[3] == 1 &&
           littleEndian(m_bytes, 4, 4) == 1 && m_bytes[8] == 1;
}

} // namespace simulation
