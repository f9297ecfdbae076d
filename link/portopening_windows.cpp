#include "link/portopening.h"

#include <cerrno>
#include <string_view>
#include <windows.h>

namespace {

constexpr auto slowOpening = std::chrono::milliseconds(500);

/// 0 if the library's text says more.
int errorNumberOf(DWORD systemError) {
    switch (systemError) {
    case ERROR_ACCESS_DENIED: // another program has the port open
    case ERROR_SHARING_VIOLATION:
    case ERROR_BUSY:
        return EBUSY;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_DEV_NOT_EXIST:
        return ENOENT;
    case ERROR_GEN_FAILURE: // the adapter was just pulled out
    case ERROR_BAD_COMMAND:
    case ERROR_DEVICE_NOT_CONNECTED:
        return ENODEV;
    default:
        return 0;
    }
}

/// The error of opening this port; 0 when it opens or the error says nothing.
DWORD answerToOpening(const std::string& name) {
    const std::string path = "\\\\.\\" + name;
    const HANDLE port =
        ::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (port == INVALID_HANDLE_VALUE)
        return ::GetLastError();
    ::CloseHandle(port);
    return 0;
}

} // namespace

PortOpening::PortOpening(const std::string& name) : m_name(name) {}

int PortOpening::descriptor() const {
    return -1;
}

/// The library's exception has no error number, and the number in its text is unrelated. Therefore the system
/// is asked once more, unless the first attempt took long: the second would take as long.
void PortOpening::undo(const serial::IOException& failure, std::chrono::nanoseconds taken) const {
    if (taken > slowOpening ||
        std::string_view(failure.what()).find("error opening") == std::string_view::npos)
        return;
    if (const int errorNumber = errorNumberOf(answerToOpening(m_name)); errorNumber != 0)
        throw serial::IOException(__FILE__, __LINE__, errorNumber);
}
