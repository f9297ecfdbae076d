// The open serial port: the calls of the serial library that the link uses, and nothing else.
#pragma once

#include "link/protocol/bytes.h"

#include <serial/serial.h>

#include <mutex>
#include <string>

/// Owns the library's port object. One library call runs at a time: the library guards its single reads and
/// writes itself, but not its time-out record, which a second thread may set.
/// Every call may throw the library's exceptions.
class SerialPort {
public:
    /// Opens the port: 8 data bits, no parity, one stop bit, no flow control. An empty name opens nothing;
    /// every later call then fails.
    SerialPort(const std::string& name, std::uint32_t baudRate, std::uint32_t timeoutMs);

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

private:
    std::mutex m_mutex;
    serial::Serial m_serial;
};
