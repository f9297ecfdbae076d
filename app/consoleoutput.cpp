#include "app/consoleoutput.h"

#ifdef _WIN32

#include <QByteArray>

#include <cstdio>
#include <windows.h>

namespace {

bool goesSomewhere(DWORD stream) {
    const HANDLE handle = ::GetStdHandle(stream);
    return handle != nullptr && handle != INVALID_HANDLE_VALUE && ::GetFileType(handle) != FILE_TYPE_UNKNOWN;
}

void sendToConsole(std::FILE* stream) {
    std::FILE* reopened = nullptr;
    static_cast<void>(::freopen_s(&reopened, "CONOUT$", "w", stream));
}

} // namespace

ConsoleOutput::ConsoleOutput() {
    const bool outputIsRedirected = goesSomewhere(STD_OUTPUT_HANDLE);
    const bool errorIsRedirected = goesSomewhere(STD_ERROR_HANDLE);
    if ((!outputIsRedirected || !errorIsRedirected) && ::AttachConsole(ATTACH_PARENT_PROCESS) != 0) {
        if (!outputIsRedirected)
            sendToConsole(stdout);
        if (!errorIsRedirected)
            sendToConsole(stderr);
    }
    m_previousCodePage = ::GetConsoleOutputCP();
    if (m_previousCodePage != 0)
        ::SetConsoleOutputCP(CP_UTF8);
    // Qt's own lines would otherwise go to a debugger only.
    if (goesSomewhere(STD_ERROR_HANDLE))
        qputenv("QT_FORCE_STDERR_LOGGING", "1");
}

ConsoleOutput::~ConsoleOutput() {
    if (m_previousCodePage != 0)
        ::SetConsoleOutputCP(m_previousCodePage);
}

#else

ConsoleOutput::ConsoleOutput() = default;
ConsoleOutput::~ConsoleOutput() = default;

#endif
