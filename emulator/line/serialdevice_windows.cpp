#include "emulator/line/handle_windows.h"
#include "emulator/line/serialdevice.h"
#include "language/language.h"

#include <cerrno>
#include <stdexcept>

namespace emulator {

namespace {

std::string lastReason() {
    switch (const DWORD error = ::GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return language::reasonOf(ENOENT);
    case ERROR_ACCESS_DENIED: // a port that another program has opened
        return language::reasonOf(EBUSY);
    default:
        return language::sentence("the system's error %1", {std::to_string(error)});
    }
}

/// Raw, 8 data bits, no parity; a read returns at once with the received bytes, a write has a timeout.
bool prepare(HANDLE port, std::uint32_t baudRate) {
    constexpr DWORD writeTimeoutMs = 1000;
    DCB settings{};
    settings.DCBlength = sizeof settings;
    if (::GetCommState(port, &settings) == 0)
        return false;
    settings.BaudRate = baudRate;
    settings.ByteSize = 8;
    settings.Parity = NOPARITY;
    settings.StopBits = ONESTOPBIT;
    settings.fBinary = TRUE;
    settings.fParity = settings.fNull = settings.fErrorChar = settings.fAbortOnError = FALSE;
    settings.fOutxCtsFlow = settings.fOutxDsrFlow = settings.fDsrSensitivity = FALSE;
    settings.fOutX = settings.fInX = FALSE;
    COMMTIMEOUTS timeouts{};
    timeouts.ReadIntervalTimeout = MAXDWORD;
    timeouts.WriteTotalTimeoutConstant = writeTimeoutMs;
    return ::SetCommState(port, &settings) != 0 && ::SetCommTimeouts(port, &timeouts) != 0;
}

} // namespace

LineIo::Line openSerialDevice(const std::string& path, std::uint32_t baudRate) {
    // Without the prefix only COM1 to COM9 are found.
    const std::wstring name = L"\\\\.\\" + std::wstring(path.begin(), path.end());
    const HANDLE port =
        ::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (port == INVALID_HANDLE_VALUE)
        throw std::runtime_error(language::sentence("cannot open the device %1: %2", {path, lastReason()}));
    if (!prepare(port, baudRate)) {
        ::CloseHandle(port);
        throw std::runtime_error(language::sentence("%1 is not a serial device; choose another", {path}));
    }
    return reinterpret_cast<LineIo::Line>(port);
}

void closeSerialDevice(LineIo::Line device) {
    ::CloseHandle(handleOf(device));
}

std::optional<std::uint32_t> serialDeviceRate(LineIo::Line device) {
    DCB settings{};
    settings.DCBlength = sizeof settings;
    if (::GetCommState(handleOf(device), &settings) == 0)
        return std::nullopt;
    return settings.BaudRate;
}

} // namespace emulator
