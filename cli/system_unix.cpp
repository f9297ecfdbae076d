#include "cli/exitcode.h"
#include "cli/system.h"

#include <QByteArray>

#include <atomic>
#include <csignal>
#include <poll.h>
#include <unistd.h>

namespace cli {

namespace {

// Set by a signal on any thread, read by several.
std::atomic<bool> isInterrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void interrupt(int) {
    if (isInterrupted.exchange(true))
        ::_exit(static_cast<int>(ExitCode::interrupted));
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
    return isInterrupted;
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
