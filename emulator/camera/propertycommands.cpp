// Properties, information, status, power and door.
#include "emulator/camera/commandrow.h"
#include "link/protocol/commands.h"
#include "link/protocol/door.h"

#include <algorithm>

namespace emulator {

namespace {

using protocol::bytesOf;
using protocol::code;
using protocol::PropertyId;

} // namespace

void VirtualCamera::heartbeat(const Request&, Reply& reply) {
    reply.payload = {protocol::heartbeatAlive};
    reply.resultAt = protocol::status_answer::status.offset;
}

void VirtualCamera::getProperty(const Request& request, Reply& reply) {
    if (request.payload.empty()) {
        reply.silent = !m_settings.answersShortRequests;
        reply.setStatus(false);
        return;
    }
    const std::uint8_t id = request.payload.front();
    const std::optional<Bytes> value = propertyValue(id, request.at);
    reply.silent = !value && !m_settings.answersUnknownIds;
    reply.setProperty(id, value.has_value());
    reply.addValue(value.value_or(Bytes()));
}

std::optional<Bytes> VirtualCamera::propertyValue(std::uint8_t id, Time now) {
    switch (static_cast<PropertyId>(id)) {
    case PropertyId::appVersion:
        return bytesOf(m_state.appVersion);
    case PropertyId::systemVersion:
        return bytesOf(m_state.systemVersion);
    case PropertyId::serialNumber:
        return bytesOf(m_state.serialNumber);
    default:
        break;
    }
    if (id == property::orientation)
        return nextOrientation(now);
    const auto found = m_state.properties.find(id);
    return found == m_state.properties.end() ? std::nullopt : std::optional(found->second);
}

Bytes VirtualCamera::nextOrientation(Time now) {
    if (!m_lastOrientationRead || now - *m_lastOrientationRead > m_settings.orientationPause)
        m_nextOrientation = 0;
    m_lastOrientationRead = now;
    const OrientationItem& item = m_state.orientation[m_nextOrientation];
    m_nextOrientation = (m_nextOrientation + 1) % m_state.orientation.size();
    std::uint32_t quantity = item.value;
    if (item.answer == OrientationItem::Answer::sentinel)
        quantity = protocol::orientation_value::unknown << 8U;
    Bytes value;
    put(value, protocol::orientation_value::quantity, quantity);
    if (item.answer == OrientationItem::Answer::tooShort)
        value.pop_back();
    return value;
}

void VirtualCamera::setProperty(const Request& request, Reply& reply) {
    if (request.payload.empty()) {
        reply.silent = true;
        return;
    }
    const std::uint8_t id = request.payload.front();
    const ByteView value = ByteView(request.payload).range(1, request.payload.size());
    bool accepted = !m_settings.refusedProperties.contains(id);
    if (id == code(PropertyId::serialNumber)) {
        if (accepted)
            m_state.serialNumber = std::string(value.begin(), std::find(value.begin(), value.end(), 0));
    } else {
        const auto held = m_state.properties.find(id);
        accepted = accepted && held != m_state.properties.end() && id != property::readOnly && !value.empty();
        if (accepted)
            held->second = value.toBytes();
    }
    reply.setProperty(id, accepted);
}

void VirtualCamera::getInfo(const Request& request, Reply& reply) {
    if (request.payload.empty()) {
        reply.silent = true;
        return;
    }
    const std::uint8_t id = request.payload.front();
    const bool version = id == code(PropertyId::qvVersion);
    const bool known = version || id == code(PropertyId::modelInfo);
    reply.silent = !known && !m_settings.answersUnknownIds;
    reply.setProperty(id, known);
    reply.addValue(known ? bytesOf(version ? m_state.qvVersion : m_state.modelInfo) : Bytes());
}

/// The only answer without a frame.
void VirtualCamera::gyroTest(const Request&, Reply& reply) {
    reply.payload = bytesOf(m_state.gyroText);
    reply.framed = false;
}

void VirtualCamera::reboot(const Request& request, Reply& reply) {
    reply.setStatus(true);
    reply.onAnswer = [this, &request, at = reply.at](ByteView) {
        restart(at, m_settings.rebootTime, request.faults);
    };
}

void VirtualCamera::resetToFactory(const Request& request, Reply& reply) {
    reply.setStatus(true);
    reply.onAnswer = [this, &request, at = reply.at](ByteView) {
        // The firmware and its versions stay.
        const CameraState defaults;
        m_state.serialNumber = defaults.serialNumber;
        m_state.properties = defaults.properties;
        m_state.pictures.clear();
        m_nextOrientation = 0;
        restart(at, m_settings.factoryResetTime, request.faults);
    };
}

void VirtualCamera::restart(Time from, Time duration, const FaultSet& faults) {
    m_heartbeatsToWake.reset();
    m_state.bootingUntil = from + duration;
    m_restartUnnoticed = true;
    if (const Fault* fault = faults.find(FaultKind::backAt)) {
        m_state.bootingUntil = Time::max();
        m_heartbeatsToWake = static_cast<std::uint32_t>(std::max<std::int64_t>(fault->number, 1));
    }
    if (faults.has(FaultKind::stayDown))
        m_state.bootingUntil = Time::max();
    note(from, Event::Kind::noted, "restarting");
}

void VirtualCamera::door(const Request& request, Reply& reply) {
    reply.silent = !m_settings.answersDoor;
    reply.setStatus(true);
    const ByteView payload(request.payload);
    if (payload.size() != protocol::door_layout::size)
        return;
    DoorEvent event;
    event.at = request.at;
    event.open = payload.get(protocol::door_layout::open) != 0;
    event.time = payload.get(protocol::door_layout::secondsSinceEpoch);
    event.sequence = payload.get(protocol::door_layout::sequence);
    if (!m_state.doorLog.empty())
        event.sequenceRight =
            event.sequence == static_cast<std::uint8_t>(m_state.doorLog.back().sequence + 1);
    m_state.doorLog.push_back(event);
    note(request.at, Event::Kind::noted,
         std::string("the door ") + (event.open ? "opens" : "closes") + ", number " +
             std::to_string(event.sequence));
}

} // namespace emulator
