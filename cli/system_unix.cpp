#include "cli/exitcode.h"
#include "cli/system.h"

#include <QByteArray>

#include <csignal>
#include <poll.h>
#include <unistd.h>

namespace cli {

namespace {

volatile std::sig_atomic_t interruptions = 0;

void interrupt(int) {
    if (interruptions != 0)
        ::_exit(static_cast<int>(ExitCode::interrupted));
    interruptions = 1;
}

} // namespace

void watchForInterrupts() {
    std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is seen by the write
    std::signal(SIGXFSZ, SIG_IGN); // so is a limit on the size of files
    struct sigaction action {};
    action.sa_handler = &interrupt;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaction(signal, &action, nullptr);
}

bool interrupted() {
    return interruptions != 0;
}

bool inputIsTerminal() {
    return ::isatty(STDIN_FILENO) != 0;
}

bool errorIsTerminal() {
    return ::isatty(STDERR_FILENO) != 0;
}

bool awaitInput() {
    constexpr int lookMs = 50; // an interruption just before a wait without end would be overlooked
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (!interrupted()) {
        if (::poll(&input, 1, lookMs) > 0)
            return true;
    }
    return false;
}

void prepareConsole() {}

void drawWithoutDisplay() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
}

} // namespace cli
