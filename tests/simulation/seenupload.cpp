#include "tests/simulation/seenupload.h"

#include "link/protocol/commands.h"

using protocol::Bytes;
using protocol::ByteView;
using protocol::Command;

namespace simulation {

SeenUpload::SeenUpload(const SeenExchange& announcement, const File& file)
    : m_port(announcement.port()), m_code(announcement.code()), m_address(announcement.address()),
      m_last(announcement) {
    const ByteView payload = announcement.payload();
    const std::size_t at = announcement.code() == protocol::code(Command::appAnnounce) ||
                                   announcement.code() == protocol::code(Command::firewareAnnounce)
                               ? 0
                               : 1;
    m_size = static_cast<std::uint32_t>(littleEndian(payload, at, 4));
    m_content = file(payload.range(at + 4, at + 20).toBytes());
}

/// Layout and address of the announcement; the address of everything that follows.
std::string SeenUpload::wrongRequest(const SeenExchange& exchange) const {
    if (exchange.address() != m_address)
        return "the address changes inside an upload";
    if (exchange.code() != m_code)
        return {};
    const bool named = m_code == protocol::code(Command::modelAnnounce) || isSecondProtocol();
    const bool rightType = !named || exchange.payload().begin()[0] == 1;
    return m_content && m_content->size() == m_size && rightType ? std::string()
                                                                 : "an announcement of no chosen file";
}

bool SeenUpload::isSecondProtocol() const {
    return m_code == protocol::code(Command::appV1Announce);
}

bool SeenUpload::goesOn(const SeenExchange& exchange) {
    if (!isSecondProtocol() || exchange.port() != m_port)
        return false;
    if (exchange.code() == protocol::code(Command::appV1Announce))
        ++m_announcements;
    else if (exchange.code() == protocol::code(Command::appV1Packet))
        ++m_packets;
    else
        return false;
    if (m_packets == 1)
        m_ready = m_last.granted() && m_last.answer().size() >= 14 && // all that it must hold
                  littleEndian(m_last.answer(), 10, 4) == m_size;
    m_last = exchange;
    return true;
}

std::uint64_t SeenUpload::resumeOffset() const {
    return littleEndian(m_last.answer(), m_code == protocol::code(Command::modelAnnounce) ? 10 : 9, 4);
}

void SeenUpload::answered(const SeenExchange& exchange) {
    if (exchange.code() != m_code &&
        !(isSecondProtocol() && exchange.code() == protocol::code(Command::appV1Packet)))
        return;
    m_last = exchange;
    if (exchange.code() == protocol::code(Command::appV1Packet) && exchange.answered())
        m_packetResult = byteAt(exchange.answer(), headerSize);
}

std::string SeenUpload::goesOnReading() const {
    if (isSecondProtocol() || !m_last.answered())
        return {};
    if (m_code == protocol::code(Command::modelAnnounce) && !m_last.granted())
        return "an upload goes on after it was refused";
    if (resumeOffset() >= 0x80000000U)
        return "an upload goes on after a negative offset";
    return {};
}

std::string SeenUpload::sent(const Bytes& data) {
    if (!m_last.answered())
        return "an upload sends without an answer";
    if (const std::string wrong = goesOnReading(); !wrong.empty())
        return wrong;
    if (!m_content)
        return {}; // the announcement was judged
    constexpr std::uint64_t sliceSize = 512;
    const std::uint64_t from = m_sent.value_or(resumeOffset());
    const Bytes slice = ByteView(*m_content).range(from, from + sliceSize).toBytes();
    m_sent = from + slice.size();
    return slice == data ? std::string() : "an upload sends another slice than the next";
}

bool SeenUpload::secondProtocolSucceeded() const {
    constexpr int wantedAnnouncements = 5;
    constexpr int wantedPackets = 11;
    return !m_portFailed && m_announcements == wantedAnnouncements && m_ready && m_packets == wantedPackets &&
           m_packetResult && *m_packetResult <= 1;
}

bool SeenUpload::succeeded() const {
    if (isSecondProtocol())
        return secondProtocolSucceeded();
    if (!m_last.answered() || !goesOnReading().empty() || m_sent.value_or(resumeOffset()) < m_size)
        return false;
    const Bytes& verdict = m_last.verdict();
    if (m_code == protocol::code(Command::appAnnounce))
        return m_back && isWholeFrame(verdict) && verdict[8] == 0;
    if (m_code == protocol::code(Command::modelAnnounce))
        return isWholeFrame(verdict) && verdict[9] == 0;
    return m_back;
}

} // namespace simulation
