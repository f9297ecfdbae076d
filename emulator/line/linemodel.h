// An imperfect line in front of a camera.
#pragma once

#include "emulator/camera/answerqueue.h"
#include "emulator/camera/linecamera.h"
#include "emulator/line/linedamage.h"

namespace emulator {

/// A camera as a front sees it through the line: bytes and times in, bytes and times out. Perfect until
/// setTraits. The camera outlives it.
class LineModel final : public LineCamera {
public:
    explicit LineModel(LineCamera& camera);
    LineModel(const LineModel&) = delete;
    LineModel& operator=(const LineModel&) = delete;

    /// From now on; bytes on their way keep their times. The same seed gives the same line.
    void setTraits(const LineTraits& traits, std::uint64_t seed);
    void setLatency(Time latency) { m_traits.latency = latency; }
    /// Damage of bytes to this receiver, beside that of the traits.
    void strike(LineDamage::Receiver receiver, const LineStrike& strike) { damageTo(receiver).add(strike); }
    /// Loses the bytes on their way.
    void clear();
    /// Since setTraits.
    [[nodiscard]] const LineDamageCounts& countsTo(LineDamage::Receiver receiver) const {
        return receiver == LineDamage::Receiver::tool ? m_toolDamage.counts() : m_cameraDamage.counts();
    }

    void receive(ByteView bytes, Time now) override;
    [[nodiscard]] std::optional<Time> nextDue() const override;
    [[nodiscard]] Bytes takeDue(Time now) override;
    [[nodiscard]] bool hangUpDue(Time now) override { return m_camera.hangUpDue(now); }
    [[nodiscard]] Time readingPausedUntil() const override { return m_camera.readingPausedUntil(); }
    void setLineSpeed(std::optional<std::uint32_t> baudRate) override { m_camera.setLineSpeed(baudRate); }

private:
    /// Bytes of one direction on their way, in order.
    struct Way {
        AnswerQueue queue;
        Time last{0}; ///< arrival of the newest
    };

    [[nodiscard]] LineDamage& damageTo(LineDamage::Receiver receiver) {
        return receiver == LineDamage::Receiver::tool ? m_toolDamage : m_cameraDamage;
    }
    void advance(Time now);
    void sendToTool(ByteView bytes, Time now);
    void pack(const Bytes& bytes, Time now);
    void closePacket(Time now);
    void put(Way& way, Bytes bytes, Time now);
    [[nodiscard]] std::optional<Time> nextDelivery() const;

    LineCamera& m_camera;
    LineTraits m_traits;
    LineDamage m_toolDamage;
    LineDamage m_cameraDamage;
    std::mt19937_64 m_random; ///< of the jitter
    Way m_toCamera;
    Way m_toTool;
    Bytes m_packet; ///< not full yet
    Time m_packetDue{0};
};

} // namespace emulator
