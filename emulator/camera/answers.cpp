// From a reply to bytes on the line, with the faults of the request.
#include "emulator/camera/commandrow.h"
#include "link/protocol/crc16.h"
#include "link/protocol/jsonenvelope.h"
#include "trace/hextext.h"

#include <algorithm>

namespace emulator {

namespace {

using protocol::checkCodeOf;
using protocol::swapped;
using std::chrono::milliseconds;

/// Gives the far end time to read the last bytes before the line closes.
constexpr Time hangUpPause = milliseconds(50);

std::uint8_t lowByte(const Fault& fault) {
    return static_cast<std::uint8_t>(fault.number & 0xFF);
}

void damageFrame(Bytes& frame, const FaultSet& faults) {
    using namespace protocol::frame_layout;
    if (const Fault* fault = faults.find(FaultKind::address))
        put(frame, address, lowByte(*fault));
    if (const Fault* fault = faults.find(FaultKind::command))
        put(frame, command, lowByte(*fault));
    if (const Fault* fault = faults.find(FaultKind::length)) {
        const std::int64_t base = fault->relative ? ByteView(frame).get(payloadLength) : 0;
        put(frame, payloadLength, static_cast<std::uint32_t>(base + fault->number));
    }
    put(frame, checkCodeOf(frame.size()), protocol::crc16Xmodem(protocol::withoutCheckCode(frame)));
}

void damageEnvelope(Bytes& envelope, const FaultSet& faults) {
    constexpr auto bigEndianCount = protocol::json_answer::head.bigEndianCount;
    if (const Fault* fault = faults.find(FaultKind::length)) {
        const std::int64_t base = fault->relative ? swapped(ByteView(envelope).get(bigEndianCount)) : 0;
        put(envelope, bigEndianCount, swapped(static_cast<std::uint16_t>(base + fault->number)));
    }
}

void damageCheckCode(Bytes& bytes, const FaultSet& faults) {
    if (bytes.size() < protocol::frame_layout::checkCodeSize)
        return;
    const auto check = checkCodeOf(bytes.size());
    if (faults.has(FaultKind::badCheck))
        put(bytes, check, static_cast<std::uint16_t>(~ByteView(bytes).get(check) & 0xFFFFU));
    if (faults.has(FaultKind::zeroCheck))
        put(bytes, check, std::uint16_t{0});
}

/// Too short for the whole body, with a count that fits the size.
Bytes shortJsonAnswer(Bytes answer, std::size_t size) {
    using namespace protocol::json_answer;
    answer.resize(size, 0);
    if (size > uncounted)
        put(answer, head.bigEndianCount, swapped(static_cast<std::uint16_t>(size - uncounted)));
    return answer;
}

} // namespace

void VirtualCamera::Reply::setStatus(bool success) {
    payload = {resultOf(success)};
    resultAt = protocol::status_answer::status.offset;
}

void VirtualCamera::Reply::setProperty(std::uint8_t id, bool success) {
    payload = {id, resultOf(success)};
    resultAt = protocol::property_answer::result.offset;
}

void VirtualCamera::Reply::addValue(ByteView value) {
    valueFrom = payload.size();
    append(payload, value);
}

Time VirtualCamera::delayOf(const Request& request) {
    const auto range =
        std::find_if(m_settings.delays.begin(), m_settings.delays.end(),
                     [&](const DelayRange& each) { return each.requests.matches(request.key); });
    if (range != m_settings.delays.end()) {
        m_delaysTaken.resize(m_settings.delays.size());
        return range->at(m_delaysTaken[static_cast<std::size_t>(range - m_settings.delays.begin())]++);
    }
    const auto own = m_settings.commandDelays.find(request.lineCode);
    return own != m_settings.commandDelays.end() && request.key.code != protocol::jsonCode
               ? own->second
               : m_settings.answerDelay;
}

VirtualCamera::Reply VirtualCamera::startReply(const Request& request) {
    Reply reply;
    reply.at = request.at + delayOf(request);
    if (const Fault* delay = request.faults.find(FaultKind::delay))
        reply.at += milliseconds(delay->number);
    return reply;
}

void VirtualCamera::applyPayloadFaults(const Request& request, Reply& reply) const {
    const FaultSet& faults = request.faults;
    Bytes& payload = reply.payload;
    if (faults.has(FaultKind::refuse)) {
        reply.setStatus(false);
    }
    if (const Fault* fault = faults.find(FaultKind::valueSize); fault != nullptr && reply.valueFrom > 0)
        payload.resize(reply.valueFrom + limited(fault->number), 'x');
    if (const Fault* fault = faults.find(FaultKind::zeroInside); fault != nullptr && reply.valueFrom > 0) {
        const std::size_t at = reply.valueFrom + limited(fault->number);
        if (at < payload.size())
            payload[at] = 0;
    }
    if (const Fault* fault = faults.find(FaultKind::result);
        fault != nullptr && reply.resultAt && *reply.resultAt < payload.size())
        payload[*reply.resultAt] = lowByte(*fault);
    if (const Fault* fault = faults.find(FaultKind::echo); fault != nullptr && !payload.empty())
        payload[0] = lowByte(*fault);
    if (const Fault* fault = faults.find(FaultKind::payload))
        payload.resize(limited(fault->number), 0);
    if (const Fault* fault = faults.find(FaultKind::raw)) {
        payload = fault->bytes;
        reply.framed = false;
    }
    if (faults.has(FaultKind::silent))
        reply.silent = true;
}

Bytes VirtualCamera::wrapped(const Request& request, const Reply& reply) const {
    if (!reply.framed)
        return reply.payload;
    Bytes bytes;
    if (reply.json) {
        bytes = protocol::buildJsonAnswer(reply.payload);
        damageEnvelope(bytes, request.faults);
        if (const Fault* fault = request.faults.find(FaultKind::shortJson))
            bytes = shortJsonAnswer(std::move(bytes), limited(fault->number));
    } else {
        bytes = protocol::buildFrame(request.lineCode, reply.payload, request.address);
        damageFrame(bytes, request.faults);
    }
    damageCheckCode(bytes, request.faults);
    return bytes;
}

void VirtualCamera::sendReply(const Request& request, const Reply& reply) {
    const FaultSet& faults = request.faults;
    const std::string struck = faults.empty() ? "" : " [" + faults.names() + "]";
    if (const Fault* fault = faults.find(FaultKind::stopReading))
        m_readingPausedUntil = fault->number == 0 ? Time::max() : request.at + milliseconds(fault->number);
    if (reply.silent) {
        note(request.at, Event::Kind::answered, "no answer" + struck);
        if (faults.has(FaultKind::hangUp))
            m_hangUpAt = request.at;
        return;
    }
    Bytes bytes = wrapped(request, reply);
    note(request.at, Event::Kind::answered,
         (reply.framed && !reply.json ? "payload " + trace::hexText(reply.payload) : trace::hexText(bytes)) +
             ", " + std::to_string(bytes.size()) + " bytes after " +
             std::to_string((reply.at - request.at) / milliseconds(1)) + " ms" + struck);
    sendPieces(request, reply, std::move(bytes));
}

void VirtualCamera::sendPieces(const Request& request, const Reply& reply, Bytes bytes) {
    const FaultSet& faults = request.faults;
    if (const Fault* fault = faults.find(FaultKind::truncate))
        bytes.resize(bytes.size() - std::min(bytes.size(), limited(fault->number)));
    if (faults.has(FaultKind::glue)) {
        const Bytes once = bytes;
        protocol::append(bytes, once);
    }
    if (const Fault* fault = faults.find(FaultKind::stray))
        bytes.resize(bytes.size() + limited(fault->number), 0xEE);
    if (const Fault* fault = faults.find(FaultKind::before))
        bytes.insert(bytes.begin(), fault->bytes.begin(), fault->bytes.end());
    if (faults.has(FaultKind::late)) {
        m_heldBack = std::move(bytes);
        return;
    }
    if (const Fault* fault = faults.find(FaultKind::hangUp)) {
        bytes.resize(std::min(bytes.size(), limited(fault->number)));
        m_hangUpAt = bytes.empty() ? request.at : reply.at + hangUpPause;
    }
    const Fault* split = faults.find(FaultKind::split);
    const std::size_t first =
        split == nullptr ? bytes.size() : std::min(bytes.size(), limited(split->number));
    const ByteView all(bytes);
    m_queue.add(reply.at, all.range(0, first).toBytes());
    if (split != nullptr)
        m_queue.add(reply.at + milliseconds(split->second), all.range(first, bytes.size()).toBytes());
}

} // namespace emulator
