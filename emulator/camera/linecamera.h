// A camera as its line sees it.
#pragma once

#include "emulator/camera/camerasettings.h"

namespace emulator {

/// Bytes in, timed bytes out: no clock, no line, no threads. The caller gives the time, which never
/// decreases.
class LineCamera {
public:
    virtual ~LineCamera() = default;

    virtual void receive(ByteView bytes, Time now) = 0;
    /// Time of the next call of takeDue and hangUpDue; nothing while the camera waits for bytes.
    [[nodiscard]] virtual std::optional<Time> nextDue() const = 0;
    /// Bytes to send now.
    [[nodiscard]] virtual Bytes takeDue(Time now) = 0;

    /// True once when the camera closes the line. The caller sends bytes that are due first.
    [[nodiscard]] virtual bool hangUpDue(Time) { return false; }
    /// The camera reads nothing before this time.
    [[nodiscard]] virtual Time readingPausedUntil() const { return Time::zero(); }
    [[nodiscard]] bool readingPaused(Time now) const { return now < readingPausedUntil(); }
    /// Baud rate of the far end; nothing when it is not known.
    virtual void setLineSpeed(std::optional<std::uint32_t>) {}
};

} // namespace emulator
