#include "emulator/camera/virtualcamera.h"

#include "emulator/camera/commandrow.h"
#include "link/protocol/commands.h"
#include "link/protocol/jsonenvelope.h"
#include "trace/hextext.h"
#include "trace/jsontext.h"

#include <algorithm>

namespace emulator {

namespace {

using protocol::code;
using protocol::Command;

std::string address(std::uint8_t value) {
    return "0x" + protocol::paddedHexText(Bytes{value});
}

} // namespace

VirtualCamera::VirtualCamera(CameraType type) : VirtualCamera(settingsForType(type)) {}

VirtualCamera::VirtualCamera(CameraSettings settings) : m_settings(std::move(settings)) {}

void VirtualCamera::receive(ByteView bytes, Time now) {
    advance(now);
    if (bytes.empty())
        return;
    m_record.byteCount += bytes.size();
    m_record.chunks.push_back({now, bytes.toBytes()});
    if (m_settings.mindsBaudRate && m_lineSpeed && *m_lineSpeed != m_settings.baudRate) {
        m_record.garbageBytes += bytes.size();
        note(now, Event::Kind::noted,
             "heard noise: the line runs at " + std::to_string(*m_lineSpeed) + " instead of " +
                 std::to_string(m_settings.baudRate));
        return;
    }
    if (!m_scanner.empty() && now - m_lastByteAt > FrameScanner::longestSilence)
        noteBadFrame({FrameScanner::Item::Kind::badFrame, m_scanner.takeRest()}, now);
    m_lastByteAt = now;
    if (m_upload) {
        receiveRaw(bytes, now);
        return;
    }
    m_scanner.add(bytes);
    readItems(now);
}

void VirtualCamera::readItems(Time now) {
    while (!m_upload) {
        const auto item = m_scanner.next();
        if (!item)
            return;
        readItem(*item, now);
    }
    // The last request was an announcement; its data follow.
    if (!m_scanner.empty())
        receiveRaw(m_scanner.takeRest(), now);
}

void VirtualCamera::readItem(const FrameScanner::Item& item, Time now) {
    switch (item.kind) {
    case FrameScanner::Item::Kind::frame:
        receiveFrame(item.bytes, now);
        break;
    case FrameScanner::Item::Kind::json:
        receiveJson(item.bytes, now);
        break;
    case FrameScanner::Item::Kind::badFrame:
        if (m_settings.takesWrongCheckCodes && item.bytes.size() >= protocol::frameOverhead) {
            receiveFrame(item.bytes, now);
            break;
        }
        [[fallthrough]];
    case FrameScanner::Item::Kind::badJson:
        noteBadFrame(item, now);
        break;
    case FrameScanner::Item::Kind::garbage:
        m_record.garbageBytes += item.bytes.size();
        note(now, Event::Kind::received, "bytes outside any frame: " + trace::hexText(item.bytes));
        break;
    }
}

void VirtualCamera::noteBadFrame(const FrameScanner::Item& item, Time now) {
    ++m_record.badFrames;
    ReceivedFrame frame;
    frame.at = now;
    frame.bytes = item.bytes;
    frame.json = item.kind == FrameScanner::Item::Kind::badJson;
    frame.wellFormed = false;
    note(now, Event::Kind::received, "damaged frame, ignored: " + trace::hexText(frame.bytes));
    m_record.frames.push_back(std::move(frame));
}

void VirtualCamera::receiveFrame(Bytes bytes, Time now) {
    const ByteView view(bytes);
    Request request;
    request.address = view.get(protocol::frame_layout::address);
    request.lineCode = view.get(protocol::frame_layout::command);
    request.payload = protocol::payloadOf(view).toBytes();
    request.at = now;
    request.key = classify(request.lineCode, request.payload);

    const bool wakes = wakesForHeartbeat(request.key, now);
    ReceivedFrame frame{now, std::move(bytes), false, request.address, request.lineCode, request.payload};
    frame.addressRight = m_settings.answersAllAddresses || request.address == m_settings.address;
    frame.heard = wakes || !booting(now);
    const bool mine = frame.addressRight && frame.heard;
    m_record.foreignFrames += frame.addressRight ? 0 : 1;
    std::string text = describe(request.key) + " (" + protocol::paddedHexText(Bytes{request.lineCode}) +
                       ", address " + address(request.address) + ")";
    if (!request.payload.empty())
        text += ": " + trace::hexText(request.payload);
    if (!frame.addressRight)
        text += "; for another camera, ignored";
    else if (!frame.heard)
        text += "; restarting, ignored";
    m_record.frames.push_back(std::move(frame));
    note(now, Event::Kind::received, std::move(text));
    if (mine)
        serve(std::move(request));
}

void VirtualCamera::receiveJson(Bytes bytes, Time now) {
    Request request;
    request.payload = protocol::jsonText(bytes).toBytes();
    request.at = now;
    request.address = m_settings.address; // the envelope has none
    request.key = trace::jsonRequestKey(request.payload);

    ReceivedFrame frame{now, std::move(bytes), true, 0, 0, request.payload};
    frame.heard = !booting(now);
    const bool heard = frame.heard;
    m_record.frames.push_back(std::move(frame));
    note(now, Event::Kind::received,
         describe(request.key) + ": " + ByteView(request.payload).toText() +
             (heard ? "" : "; restarting, ignored"));
    if (heard)
        serve(std::move(request));
}

bool VirtualCamera::canBeDeleted(std::uint8_t id) const {
    return id == protocol::originDeleteAll ||
           std::any_of(m_state.pictures.begin(), m_state.pictures.end(),
                       [id](const Picture& picture) { return picture.info.id == id; });
}

/// A picture-command offset may give picture commands the codes of other commands. The payload's form decides
/// where it can; a shifted delete of one picture needs a picture that the camera holds.
bool VirtualCamera::isPictureRequest(std::uint8_t base, std::uint8_t lineCode, ByteView payload) const {
    const bool shared = m_settings.pictureOffset != 0 && rowOf(lineCode) != nullptr;
    switch (static_cast<Command>(base)) {
    case Command::originCapture:
    case Command::originCatalogue:
        return payload.empty();
    case Command::originDelete:
        return payload.size() == protocol::origin_delete_request::size &&
               (!shared || canBeDeleted(payload.get(protocol::origin_delete_request::id)));
    case Command::originRead:
        return payload.size() == protocol::origin_read_request::size &&
               (!shared || payload.get(protocol::origin_read_request::startOffset) == 0);
    default:
        return false;
    }
}

RequestKey VirtualCamera::classify(std::uint8_t lineCode, ByteView payload) const {
    RequestKey key{lineCode, lineCode, std::nullopt};
    if (!payload.empty())
        key.detail = *payload.begin();
    const auto base = static_cast<std::uint8_t>(lineCode - m_settings.pictureOffset);
    if (m_settings.pictureOffset == 0)
        return key;
    if (protocol::isOriginPictureCode(base) && isPictureRequest(base, lineCode, payload))
        key.code = base;
    else if (protocol::isOriginPictureCode(lineCode))
        key.code = unknownCode;
    return key;
}

bool VirtualCamera::knows(const CommandRow& row) const {
    if (row.code == protocol::jsonCode || m_settings.answersEveryGeneration)
        return row.code != protocol::jsonCode || m_settings.type == CameraType::quenta ||
               m_settings.answersEveryGeneration;
    switch (row.generation) {
    case Generation::heartbeat:
        return m_settings.answersHeartbeat;
    case Generation::all:
        return true;
    case Generation::framesOnly:
        return m_settings.type != CameraType::quenta;
    case Generation::first:
        return m_settings.type != CameraType::quenta && m_settings.type != CameraType::salesDynamic;
    case Generation::firstUpload:
        return m_settings.type != CameraType::salesDynamic;
    case Generation::second:
        return m_settings.type == CameraType::salesDynamic;
    }
    return false;
}

/// Ends a restart that lasts until the n-th heartbeat.
bool VirtualCamera::wakesForHeartbeat(const RequestKey& key, Time now) {
    if (!booting(now) || !m_heartbeatsToWake || key.code != code(Command::heartbeat))
        return false;
    if (--*m_heartbeatsToWake > 0)
        return false;
    m_heartbeatsToWake.reset();
    m_state.bootingUntil = now;
    return true;
}

void VirtualCamera::serve(Request request) {
    const CommandRow* row = rowOf(request.key.code);
    if (request.at < m_restsUntil) {
        note(request.at, Event::Kind::noted, "rests; no answer");
        return;
    }
    request.faults = m_faults.strike(request.key);
    // Any next request releases an answer that was held back.
    m_queue.add(request.at + std::chrono::milliseconds(1), std::exchange(m_heldBack, {}));
    if (row == nullptr || !knows(*row)) {
        note(request.at, Event::Kind::noted, "this camera does not know that request; no answer");
        return;
    }
    Reply reply = startReply(request);
    if (m_settings.rest > Time::zero())
        m_restsUntil = reply.at + m_settings.rest;
    (this->*row->handler)(request, reply);
    applyPayloadFaults(request, reply);
    if (reply.onAnswer && !reply.silent)
        reply.onAnswer(reply.payload);
    sendReply(request, reply);
}

std::string VirtualCamera::describe(const RequestKey& key) const {
    const protocol::RequestName* name = protocol::nameOf(key);
    return name == nullptr ? "unknown request" : std::string(name->words);
}

void VirtualCamera::note(Time at, Event::Kind kind, std::string text) const {
    if (m_onEvent)
        m_onEvent({at, kind, std::move(text)});
}

void VirtualCamera::advance(Time now) {
    if (m_upload && now >= m_upload->deadline)
        breakOffTransfer(now);
    if (m_restartUnnoticed && !booting(now)) {
        m_restartUnnoticed = false;
        note(now, Event::Kind::noted, "the restart is over");
        m_queue.add(now, m_settings.bootBytes);
    }
}

std::optional<Time> VirtualCamera::nextDue() const {
    std::optional<Time> next = m_queue.nextDue();
    const auto consider = [&next](Time candidate) {
        if (candidate != Time::max() && (!next || candidate < *next))
            next = candidate;
    };
    if (m_upload)
        consider(m_upload->deadline);
    if (m_hangUpAt)
        consider(*m_hangUpAt);
    if (m_restartUnnoticed)
        consider(m_state.bootingUntil);
    return next;
}

Bytes VirtualCamera::takeDue(Time now) {
    advance(now);
    return m_queue.take(now);
}

bool VirtualCamera::hangUpDue(Time now) {
    if (!m_hangUpAt || now < *m_hangUpAt)
        return false;
    m_hangUpAt.reset();
    note(now, Event::Kind::noted, "the device disappears");
    return true;
}

void VirtualCamera::lineReopened(Time now) {
    if (m_upload)
        breakOffTransfer(now);
    static_cast<void>(m_scanner.takeRest());
    m_queue.clear();
    m_heldBack.clear();
    m_hangUpAt.reset();
    m_readingPausedUntil = Time::zero();
}

} // namespace emulator
