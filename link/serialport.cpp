#include "link/serialport.h"

#include "link/portopening.h"

#include <chrono>
#include <string_view>

namespace {

serial::Timeout timeouts(std::uint32_t readMs, std::uint32_t writeMs) {
    return serial::Timeout(serial::Timeout::max(), readMs, 0, writeMs, 0);
}

} // namespace

SerialPort::SerialPort(const std::string& name, std::uint32_t baudRate, std::uint32_t timeoutMs,
                       const Clock& clock)
    : m_clock(clock) {
    const PortOpening opening(name);
    const Clock::Time began = clock.now();
    try {
        m_serial.emplace(name, baudRate, timeouts(timeoutMs, timeoutMs), serial::eightbits,
                         serial::parity_none, serial::stopbits_one, serial::flowcontrol_none);
    } catch (const serial::IOException& failure) {
        opening.undo(failure, clock.now() - began);
        throw;
    }
    m_descriptor = opening.descriptor();
}

void SerialPort::setTimeouts(std::uint32_t readMs, std::uint32_t writeMs) {
    guard([&] {
        serial::Timeout record = timeouts(readMs, writeMs); // the library takes it by a non-const reference
        m_serial->setTimeout(record);
    });
}

void SerialPort::discardInput() {
    guard([this] {
        try {
            m_serial->flushInput();
        } catch (const serial::IOException& error) {
            // Version 1.2.1 of the library cannot discard on Windows; reading has the same effect.
            if (std::string_view(error.what()).find("not supported") == std::string_view::npos)
                throw;
            readAway();
        }
    });
}

void SerialPort::readAway() {
    protocol::Bytes discarded;
    for (std::size_t waiting = m_serial->available(); waiting > 0; waiting = m_serial->available()) {
        if (m_serial->read(discarded, waiting) == 0)
            return;
    }
}

void SerialPort::flush() {
    guard([this] { m_serial->flush(); });
}

std::size_t SerialPort::write(protocol::ByteView bytes) {
    m_observers.sending(bytes, m_clock.now());
    return guard([&] { return m_serial->write(bytes.begin(), bytes.size()); });
}

std::size_t SerialPort::read(protocol::Bytes& buffer, std::size_t count) {
    const std::size_t before = buffer.size();
    const Clock::Time began = m_clock.now();
    const std::size_t read = guard([&] { return m_serial->read(buffer, count); });
    if (buffer.size() > before) {
        const Clock::Time ended = m_clock.now();
        m_observers.received(protocol::ByteView(buffer).range(before, buffer.size()),
                             read < count ? began : ended, ended);
    }
    return read;
}
