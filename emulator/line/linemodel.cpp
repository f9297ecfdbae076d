#include "emulator/line/linemodel.h"

#include <algorithm>
#include <utility>

namespace emulator {

using Receiver = LineDamage::Receiver;

LineModel::LineModel(LineCamera& camera)
    : m_camera(camera), m_toolDamage(Receiver::tool, {}, 0), m_cameraDamage(Receiver::camera, {}, 0) {}

void LineModel::setTraits(const LineTraits& traits, std::uint64_t seed) {
    m_traits = traits;
    m_toolDamage = LineDamage(Receiver::tool, traits, seed);
    m_cameraDamage = LineDamage(Receiver::camera, traits, seed);
    m_random.seed(seed);
}

void LineModel::clear() {
    m_toCamera.queue.clear();
    m_toTool.queue.clear();
    m_packet.clear();
}

void LineModel::receive(ByteView bytes, Time now) {
    advance(now);
    if (m_traits.echoes)
        sendToTool(bytes, now);
    put(m_toCamera, m_cameraDamage.pass(bytes), now);
    advance(now);
}

std::optional<Time> LineModel::nextDue() const {
    std::optional<Time> next = m_camera.nextDue();
    const auto consider = [&next](std::optional<Time> candidate) {
        if (candidate && (!next || *candidate < *next))
            next = candidate;
    };
    consider(nextDelivery());
    consider(m_toTool.queue.nextDue());
    if (!m_packet.empty())
        consider(m_packetDue);
    return next;
}

Bytes LineModel::takeDue(Time now) {
    advance(now);
    return m_toTool.queue.take(now);
}

/// When the camera takes the next bytes; nothing while none are on their way, or it never reads again.
std::optional<Time> LineModel::nextDelivery() const {
    const std::optional<Time> arrival = m_toCamera.queue.nextDue();
    const Time paused = m_camera.readingPausedUntil();
    if (!arrival || paused == Time::max())
        return std::nullopt;
    return std::max(*arrival, paused);
}

void LineModel::advance(Time now) {
    for (auto at = nextDelivery(); at && *at <= now; at = nextDelivery()) {
        sendToTool(m_camera.takeDue(*at), *at);
        m_camera.receive(m_toCamera.queue.take(*at), *at);
    }
    sendToTool(m_camera.takeDue(now), now);
    if (!m_packet.empty() && m_packetDue <= now)
        closePacket(m_packetDue);
}

void LineModel::sendToTool(ByteView bytes, Time now) {
    Bytes arriving = m_toolDamage.pass(bytes);
    if (m_traits.packetTimer > Time::zero())
        pack(arriving, now);
    else
        put(m_toTool, std::move(arriving), now);
}

/// A full packet goes at once; the timer starts with the first byte of another.
void LineModel::pack(const Bytes& bytes, Time now) {
    if (!m_packet.empty() && m_packetDue <= now)
        closePacket(m_packetDue);
    for (const std::uint8_t byte : bytes) {
        if (m_packet.empty())
            m_packetDue = now + m_traits.packetTimer;
        m_packet.push_back(byte);
        if (m_packet.size() == LineTraits::packetBytes)
            closePacket(now);
    }
}

void LineModel::closePacket(Time now) {
    put(m_toTool, std::exchange(m_packet, {}), now);
}

void LineModel::put(Way& way, Bytes bytes, Time now) {
    if (bytes.empty())
        return;
    Time arrival = now + m_traits.latency;
    if (m_traits.jitter > Time::zero())
        arrival += Time(m_random() % static_cast<std::uint64_t>(m_traits.jitter.count() + 1));
    way.last = std::max(way.last, arrival);
    way.queue.add(way.last, std::move(bytes));
}

} // namespace emulator
