// From a reply to bytes on the line: where the faults strike.
#include "emulator/camera/commandrow.h"
#include "link/protocol/crc16.h"
#include "link/protocol/frame.h"
#include "trace/hextext.h"
#include "trace/jsonlayout.h"

#include <algorithm>

namespace emulator {

namespace {

namespace json_layout = trace::json_layout;

using protocol::Field;
using std::chrono::milliseconds;

/// No fault makes more bytes than this.
constexpr std::int64_t mostBytes = 1 << 20;
/// The far end reads what came before the line goes away.
constexpr Time hangUpPause = milliseconds(50);

std::size_t limited(std::int64_t number) {
    return static_cast<std::size_t>(std::clamp<std::int64_t>(number, 0, mostBytes));
}

std::uint8_t lowByte(const Fault& fault) {
    return static_cast<std::uint8_t>(fault.number & 0xFF);
}

void damageFrame(Bytes& frame, const FaultSet& faults) {
    using namespace protocol::frame_layout;
    const Field<std::uint16_t> check{frame.size() - checkCodeSize};
    if (const Fault* fault = faults.find(FaultKind::address))
        put(frame, address, lowByte(*fault));
    if (const Fault* fault = faults.find(FaultKind::command))
        put(frame, command, lowByte(*fault));
    if (const Fault* fault = faults.find(FaultKind::length)) {
        const std::int64_t base = fault->relative ? ByteView(frame).get(payloadLength) : 0;
        put(frame, payloadLength, static_cast<std::uint32_t>(base + fault->number));
    }
    const ByteView covered = ByteView(frame).range(0, check.offset);
    put(frame, check, protocol::crc16Xmodem(covered));
}

void damageEnvelope(Bytes& envelope, const FaultSet& faults) {
    if (const Fault* fault = faults.find(FaultKind::length)) {
        const std::int64_t base =
            fault->relative ? json_layout::swapped(ByteView(envelope).get(json_layout::answerCount)) : 0;
        put(envelope, json_layout::answerCount,
            json_layout::swapped(static_cast<std::uint16_t>(base + fault->number)));
    }
}

void damageCheckCode(Bytes& bytes, const FaultSet& faults) {
    if (bytes.size() < protocol::frame_layout::checkCodeSize)
        return;
    const Field<std::uint16_t> check{bytes.size() - protocol::frame_layout::checkCodeSize};
    if (faults.has(FaultKind::badCheck))
        put(bytes, check, static_cast<std::uint16_t>(~ByteView(bytes).get(check) & 0xFFFFU));
    if (faults.has(FaultKind::zeroCheck))
        put(bytes, check, std::uint16_t{0});
}

/// [01 17][count][magic][kind][length][body][check code]
Bytes buildJsonAnswer(ByteView body) {
    using namespace json_layout;
    Bytes answer;
    put(answer, answerStart1, start1);
    put(answer, answerStart2, start2);
    put(answer, answerCount, swapped(static_cast<std::uint16_t>(body.size() + countExtra)));
    put(answer, answerMagic, magic);
    put(answer, answerKind, kind);
    put(answer, answerBodyLength, static_cast<std::uint16_t>(body.size()));
    protocol::append(answer, body);
    put(answer, Field<std::uint16_t>{answer.size()}, protocol::crc16Modbus(answer));
    return answer;
}

/// So short that the body is missing wholly or in part, with a count that fits.
Bytes shortJsonAnswer(Bytes answer, std::size_t size) {
    constexpr std::size_t uncounted = 6;
    answer.resize(size, 0);
    if (size > uncounted)
        put(answer, json_layout::answerCount,
            json_layout::swapped(static_cast<std::uint16_t>(size - uncounted)));
    return answer;
}

} // namespace

VirtualCamera::Reply VirtualCamera::startReply(const Request& request) const {
    const auto own = m_settings.commandDelays.find(request.lineCode);
    Reply reply;
    reply.at = request.at + (own != m_settings.commandDelays.end() && request.key.code != trace::jsonCode
                                 ? own->second
                                 : m_settings.answerDelay);
    if (const Fault* delay = request.faults.find(FaultKind::delay))
        reply.at += milliseconds(delay->number);
    return reply;
}

void VirtualCamera::applyPayloadFaults(const Request& request, Reply& reply) const {
    const FaultSet& faults = request.faults;
    Bytes& payload = reply.payload;
    if (faults.has(FaultKind::refuse)) {
        payload = {1};
        reply.resultAt = 0;
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
        bytes = buildJsonAnswer(reply.payload);
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
