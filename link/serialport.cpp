#include "link/serialport.h"

#include <cerrno>
#include <chrono>
#include <string_view>

#ifdef _WIN32
#include <windows.h>
#else
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#endif

namespace {

#ifndef _WIN32

/// Whether a character device of this major number is a terminal; true when the system does not tell.
bool isTerminalMajor(unsigned int wanted) {
    std::ifstream drivers("/proc/tty/drivers");
    if (!drivers)
        return true;
    for (std::string row; std::getline(drivers, row);) {
        std::istringstream fields(row);
        std::string driver;
        std::string device;
        unsigned int major = 0;
        if (fields >> driver >> device >> major && major == wanted)
            return true;
    }
    return false;
}

/// The library loses a file descriptor for each path that it can open but not configure, so what is no
/// terminal is refused by its looks, with the library's own exception. The path is never opened here:
/// opening moves the modem lines.
const std::string& checkedName(const std::string& name) {
    struct stat status {};
    if (!name.empty() && ::stat(name.c_str(), &status) == 0 &&
        (!S_ISCHR(status.st_mode) || !isTerminalMajor(major(status.st_rdev))))
        throw serial::IOException(__FILE__, __LINE__, S_ISDIR(status.st_mode) ? EISDIR : ENOTTY);
    return name;
}

void throwReasonOfOpening(const std::string&, const serial::IOException&, std::chrono::nanoseconds) {
    // The library's exception has the error number.
}

#else

const std::string& checkedName(const std::string& name) {
    return name;
}

/// 0 for what the library's own text may tell better.
int errorNumberOf(DWORD systemError) {
    switch (systemError) {
    case ERROR_ACCESS_DENIED: // what a port that another program has open answers
    case ERROR_SHARING_VIOLATION:
    case ERROR_BUSY:
        return EBUSY;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_DEV_NOT_EXIST:
        return ENOENT;
    case ERROR_GEN_FAILURE: // an adapter that has just been pulled
    case ERROR_BAD_COMMAND:
    case ERROR_DEVICE_NOT_CONNECTED:
        return ENODEV;
    default:
        return 0;
    }
}

/// What the system answers to opening this port; 0: it opens, or that tells nothing.
DWORD answerToOpening(const std::string& name) {
    const std::string path = "\\\\.\\" + name;
    const HANDLE port =
        ::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (port == INVALID_HANDLE_VALUE)
        return ::GetLastError();
    ::CloseHandle(port);
    return 0;
}

constexpr auto slowOpening = std::chrono::milliseconds(500);

/// The library does not tell why a port did not open: its exception has no error number, and the number in
/// its text is an unrelated one. The system is asked once more, unless the first answer took long: the second
/// would take as long again.
void throwReasonOfOpening(const std::string& name, const serial::IOException& failure,
                          std::chrono::nanoseconds taken) {
    if (taken > slowOpening ||
        std::string_view(failure.what()).find("error opening") == std::string_view::npos)
        return;
    if (const int errorNumber = errorNumberOf(answerToOpening(name)); errorNumber != 0)
        throw serial::IOException(__FILE__, __LINE__, errorNumber);
}

#endif

serial::Timeout timeouts(std::uint32_t readMs, std::uint32_t writeMs) {
    return serial::Timeout(serial::Timeout::max(), readMs, 0, writeMs, 0);
}

serial::Serial openPort(const std::string& name, std::uint32_t baudRate, std::uint32_t timeoutMs) {
    const auto began = std::chrono::steady_clock::now();
    try {
        return serial::Serial(checkedName(name), baudRate, timeouts(timeoutMs, timeoutMs), serial::eightbits,
                              serial::parity_none, serial::stopbits_one, serial::flowcontrol_none);
    } catch (const serial::IOException& failure) {
        throwReasonOfOpening(name, failure, std::chrono::steady_clock::now() - began);
        throw;
    }
}

} // namespace

SerialPort::SerialPort(const std::string& name, std::uint32_t baudRate, std::uint32_t timeoutMs)
    : m_serial(openPort(name, baudRate, timeoutMs)) {}

void SerialPort::setTimeouts(std::uint32_t readMs, std::uint32_t writeMs) {
    guard([&] {
        serial::Timeout record = timeouts(readMs, writeMs); // the library takes it by a non-const reference
        m_serial.setTimeout(record);
    });
}

void SerialPort::discardInput() {
    guard([this] {
        try {
            m_serial.flushInput();
        } catch (const serial::IOException& error) {
            // Version 1.2.1 of the library cannot discard on Windows; reading what is there comes to the
            // same.
            if (std::string_view(error.what()).find("not supported") == std::string_view::npos)
                throw;
            readAway();
        }
    });
}

void SerialPort::readAway() {
    protocol::Bytes discarded;
    for (std::size_t waiting = m_serial.available(); waiting > 0; waiting = m_serial.available()) {
        if (m_serial.read(discarded, waiting) == 0)
            return;
    }
}

void SerialPort::flush() {
    guard([this] { m_serial.flush(); });
}

std::size_t SerialPort::write(protocol::ByteView bytes) {
    return guard([&] { return m_serial.write(bytes.begin(), bytes.size()); });
}

std::size_t SerialPort::read(protocol::Bytes& buffer, std::size_t count) {
    return guard([&] { return m_serial.read(buffer, count); });
}
