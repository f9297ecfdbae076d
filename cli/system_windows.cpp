#include "cli/exitcode.h"
#include "cli/system.h"

#include <atomic>
#include <cstdio>
#include <io.h>
#include <windows.h>

namespace cli {

namespace {

std::atomic<bool> wasInterrupted{false};

BOOL WINAPI interrupt(DWORD) {
    if (wasInterrupted.exchange(true))
        ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(ExitCode::interrupted));
    return TRUE;
}

} // namespace

void watchForInterrupts() {
    ::SetConsoleCtrlHandler(&interrupt, TRUE);
}

bool interrupted() {
    return wasInterrupted;
}

bool inputIsTerminal() {
    return ::_isatty(::_fileno(stdin)) != 0;
}

bool errorIsTerminal() {
    return ::_isatty(::_fileno(stderr)) != 0;
}

// The console ends a reading at an interruption.
bool awaitInput() {
    return !interrupted();
}

void prepareConsole() {
    ::SetConsoleOutputCP(CP_UTF8);
    const HANDLE console = ::GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    if (::GetConsoleMode(console, &mode) != 0)
        ::SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

// The plugin for windows needs no display; the one without a screen finds no fonts here.
void drawWithoutDisplay() {}

} // namespace cli
