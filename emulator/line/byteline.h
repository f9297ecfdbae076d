// One end of a serial line.
#pragma once

#include "emulator/camera/camerasettings.h"
#include "emulator/line/lineio.h"

#include <memory>

namespace emulator {

/// Derived classes own the line. One thread may read while another one writes; all other calls belong to the
/// owner.
class ByteLine {
public:
    ByteLine() = default;
    virtual ~ByteLine() = default;
    ByteLine(const ByteLine&) = delete;
    ByteLine& operator=(const ByteLine&) = delete;

    /// Appends received bytes; waits up to the timeout for the first one. False when the line is gone.
    [[nodiscard]] bool read(Bytes& bytes, std::chrono::milliseconds timeout);
    /// Writes as much as the line takes; waits up to the timeout until it takes a byte. Returns the number of
    /// written bytes; nothing when the line is gone.
    [[nodiscard]] std::optional<std::size_t> write(ByteView bytes, std::chrono::milliseconds timeout);

    /// The same during the whole life.
    [[nodiscard]] virtual LineIo::Line line() const = 0;
    /// Baud rate of the line, as its far end has set it; nothing when the system cannot tell.
    [[nodiscard]] virtual std::optional<std::uint32_t> rate() const = 0;
    /// Port name for the far end; of a device, its own name.
    [[nodiscard]] virtual std::string name() const = 0;

private:
    LineIo m_reading; // one for each thread that may wait
    LineIo m_writing;
};

/// A serial device, or a COM port, at the rate. Throws std::exception with a text for people.
[[nodiscard]] std::unique_ptr<ByteLine> openDeviceLine(const std::string& device, std::uint32_t baudRate);

} // namespace emulator
