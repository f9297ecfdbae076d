// The open serial port: the calls of the serial library that the link uses, and nothing else.
#pragma once

#include "link/lineobserver.h"
#include "link/protocol/bytes.h"

#include <serial/serial.h>

#include <atomic>
#include <string>

/// Owns the library's port object. One call at a time: the library guards its single reads and writes, but
/// not its time-out record; the turn on the line keeps callers apart. Every call may throw the library's
/// exceptions.
class SerialPort {
public:
    /// Opens the port: 8 data bits, no parity, one stop bit, no flow control. An empty name opens nothing;
    /// every later call then fails. Throws the library's serial::IOException, with the error number where the
    /// system tells one.
    SerialPort(const std::string& name, std::uint32_t baudRate, std::uint32_t timeoutMs, const Clock& clock);

    SerialPort(const SerialPort&) = delete;
    SerialPort& operator=(const SerialPort&) = delete;

    /// Read and write time-out constants in ms; no inter-byte limit, no multipliers.
    void setTimeouts(std::uint32_t readMs, std::uint32_t writeMs);
    /// Throws away what has been received and not read.
    void discardInput();
    /// Pushes out what has not been transmitted; received bytes stay.
    void flush();
    /// Returns the count written.
    std::size_t write(protocol::ByteView bytes);
    /// Appends up to count bytes; returns the number read when all came or the read time-out expired.
    std::size_t read(protocol::Bytes& buffer, std::size_t count);

    /// Null: none. Any thread.
    void setObserver(LineObserver* observer) { m_observer = observer; }

    /// Whether the last call failed in the device: an adapter that is gone fails every call. Any thread.
    [[nodiscard]] bool hasFailed() const { return m_failed; }

private:
    /// Makes one library call and remembers whether it failed.
    template <typename Call>
    auto guard(Call call) {
        m_failed = false;
        try {
            return call();
        } catch (const serial::PortNotOpenedException&) {
            throw; // no port was chosen: nothing that could have failed
        } catch (...) {
            m_failed = true;
            throw;
        }
    }
    /// Reads what is there and drops it.
    void readAway();

    const Clock& m_clock;
    std::atomic<LineObserver*> m_observer{nullptr};
    std::atomic<bool> m_failed{false};
    serial::Serial m_serial;
};
