#include "app/consoleoutput.h"

#include <QByteArray>

#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace {

bool isOpen(HANDLE handle) {
    return handle != nullptr && handle != INVALID_HANDLE_VALUE && ::GetFileType(handle) != FILE_TYPE_UNKNOWN;
}

/// Into a file, a pipe, or nowhere.
bool isRedirected(DWORD stream) {
    const HANDLE handle = ::GetStdHandle(stream);
    DWORD mode = 0;
    return isOpen(handle) && ::GetConsoleMode(handle, &mode) == 0;
}

/// Writes whole lines unchanged: single bytes, or the C library's code page, would break UTF-8. The writer
/// flushes each line.
void sendToConsole(std::FILE* stream) {
    std::FILE* reopened = nullptr;
    if (::freopen_s(&reopened, "CONOUT$", "w", stream) != 0)
        return;
    ::_setmode(::_fileno(stream), _O_BINARY);
    static_cast<void>(std::setvbuf(stream, nullptr, _IOFBF, BUFSIZ));
}

} // namespace

ConsoleOutput::ConsoleOutput() {
    if (!isRedirected(STD_OUTPUT_HANDLE) || !isRedirected(STD_ERROR_HANDLE))
        ::AttachConsole(ATTACH_PARENT_PROCESS); // fails where there is none, or this has it already
    m_previousCodePage = ::GetConsoleOutputCP();
    if (m_previousCodePage != 0) {
        ::SetConsoleOutputCP(CP_UTF8);
        if (!isRedirected(STD_OUTPUT_HANDLE))
            sendToConsole(stdout);
        if (!isRedirected(STD_ERROR_HANDLE))
            sendToConsole(stderr);
    }
    // Qt would write its lines to a debugger only.
    if (m_previousCodePage != 0 || isOpen(::GetStdHandle(STD_ERROR_HANDLE)))
        qputenv("QT_FORCE_STDERR_LOGGING", "1");
}

ConsoleOutput::~ConsoleOutput() {
    if (m_previousCodePage != 0)
        ::SetConsoleOutputCP(m_previousCodePage);
}
