// The open serial port: the calls of the serial library that the link uses.
#pragma once

#include "link/lineobservers.h"
#include "link/lowlatency.h"
#include "link/protocol/bytes.h"

#include <serial/serial.h>

#include <atomic>
#include <optional>
#include <string>

/// Owns the library's port object. One call at a time, which the turn on the line ensures: the library does
/// not protect its timeout record. Every call may throw the library's exceptions.
class SerialPort {
public:
    /// Opens the port: 8 data bits, no parity, one stop bit, no flow control. An empty name opens nothing;
    /// every later call then fails. Throws the library's serial::IOException, with an error number if
    /// the system gives one.
    SerialPort(const std::string& name, std::uint32_t baudRate, std::uint32_t timeoutMs, const Clock& clock);

    SerialPort(const SerialPort&) = delete;
    SerialPort& operator=(const SerialPort&) = delete;

    /// Read and write timeout constants in ms; no inter-byte limit, no multipliers.
    void setTimeouts(std::uint32_t readMs, std::uint32_t writeMs);
    /// Discards received bytes that were not read.
    void discardInput();
    /// Waits until all written bytes are sent. Received bytes stay.
    void flush();
    /// Shortens flushes behind some adapters until the port closes. The next answer may come 250 ms late.
    void beginLowLatency() { m_lowLatency.begin(m_descriptor); }
    /// Returns the number of bytes written.
    std::size_t write(protocol::ByteView bytes);
    /// Appends up to `count` bytes. Returns their number after all came or the read timeout expired.
    std::size_t read(protocol::Bytes& buffer, std::size_t count);

    [[nodiscard]] LineObservers& observers() { return m_observers; }

    /// True if the last call failed in the device. Any thread.
    [[nodiscard]] bool hasFailed() const { return m_failed; }

private:
    /// Makes one library call and remembers whether it failed.
    template <typename Call>
    auto guard(Call call) {
        m_failed = false;
        try {
            return call();
        } catch (const serial::PortNotOpenedException&) {
            throw; // no port was chosen: no device failed
        } catch (...) {
            m_failed = true;
            throw;
        }
    }
    /// Reads and drops received bytes.
    void readAway();

    const Clock& m_clock;
    LineObservers m_observers;
    std::atomic<bool> m_failed{false};
    std::optional<serial::Serial> m_serial; ///< empty only inside the constructor
    int m_descriptor = -1;                  ///< the library's; -1: unknown
    LowLatency m_lowLatency;                ///< ends before the port closes
};
