// One end of a serial line, for the tap and the replay.
#pragma once

#include "emulator/camera/camerasettings.h"

#include <memory>

namespace emulator {

/// One thread may read while another one writes; the rest belongs to whoever owns the line.
class ByteLine {
public:
    ByteLine() = default;
    virtual ~ByteLine() = default;
    ByteLine(const ByteLine&) = delete;
    ByteLine& operator=(const ByteLine&) = delete;

    /// Appends what has come; waits at most so long for the first byte and returns as soon as there is one.
    /// False when the line is gone.
    [[nodiscard]] virtual bool read(Bytes& bytes, std::chrono::milliseconds patience) = 0;
    /// Writes as much as the line takes and waits at most so long until it takes something. Returns the count
    /// written; nothing when the line is gone.
    [[nodiscard]] virtual std::optional<std::size_t> write(ByteView bytes,
                                                           std::chrono::milliseconds patience) = 0;
    /// The rate at which the line runs, as its far end has set it; nothing when it cannot be told.
    [[nodiscard]] virtual std::optional<std::uint32_t> rate() const { return std::nullopt; }
    /// Under which name the far end, or for a device this end, is opened.
    [[nodiscard]] virtual std::string name() const = 0;
};

/// A serial device, or a COM port, at the rate. Throws std::exception with a text for people.
[[nodiscard]] std::unique_ptr<ByteLine> openDeviceLine(const std::string& device, std::uint32_t baudRate);

} // namespace emulator
