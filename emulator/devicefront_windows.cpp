#include "emulator/devicefront.h"

#include <stdexcept>
#include <system_error>
#include <windows.h>

namespace emulator {

namespace {

HANDLE handleOf(LineIo::Line line) {
    return reinterpret_cast<HANDLE>(line); // NOLINT(performance-no-int-to-ptr): a handle is a number
}

std::string lastErrorText() {
    return std::system_category().message(static_cast<int>(::GetLastError()));
}

/// 8 data bits, no parity, nothing interpreted; reading gives what is there, writing does not hang for ever.
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

DeviceFront::DeviceFront(VirtualCamera camera, const std::string& path) : CameraFront(std::move(camera)) {
    const std::uint32_t baudRate = withCamera([](VirtualCamera& held) { return held.settings().baudRate; });
    // Without the prefix only COM1 to COM9 are found.
    const std::wstring name = L"\\\\.\\" + std::wstring(path.begin(), path.end());
    const HANDLE port =
        ::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (port == INVALID_HANDLE_VALUE)
        throw std::runtime_error(path + ": " + lastErrorText());
    m_device = reinterpret_cast<LineIo::Line>(port);
    if (!prepare(port, baudRate)) {
        DeviceFront::closeLine();
        throw std::runtime_error(path + " is not a serial device");
    }
    start(m_device);
}

DeviceFront::~DeviceFront() {
    stop();
    closeLine();
}

void DeviceFront::closeLine() {
    if (m_device != LineIo::none)
        ::CloseHandle(handleOf(m_device));
    m_device = LineIo::none;
}

std::optional<std::uint32_t> DeviceFront::lineSpeed() const {
    DCB settings{};
    settings.DCBlength = sizeof settings;
    if (::GetCommState(handleOf(m_device), &settings) == 0)
        return std::nullopt;
    return settings.BaudRate;
}

} // namespace emulator
