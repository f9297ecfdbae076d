#include "emulator/program/console.h"

#include "emulator/line/terminalowner.h"
#include "language/language.h"

#include <array>
#include <atomic>
#include <csignal>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <thread>

namespace emulator {

namespace {

// Set by a signal, on whichever thread that comes.
std::atomic<bool> stopRequested = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void requestStop(int) {
    stopRequested = true;
}

} // namespace

void printEvent(const Event& event) {
    constexpr std::array<const char*, 3> marks = {"<- ", "-> ", "   "};
    std::ostringstream line; // one write per line: the reader of a pipe gets complete lines
    line << std::fixed << std::setprecision(3) << std::setw(9)
         << std::chrono::duration<double>(event.at).count() << "  "
         << marks[static_cast<std::size_t>(event.kind)] << event.text << "\n";
    std::cout << line.str() << std::flush;
}

void printFailure(const std::string& sentence) {
    std::cerr << "virtual-camera: " << sentence << std::endl;
}

void sayWhoOpens(const std::string& port) {
    if (onlyRootOpensTerminals())
        std::cout << language::sentence("only root can open it; for another user: sudo chown USER %1", {port})
                  << std::endl;
}

void watchForStop() {
    std::signal(SIGINT, &requestStop);
    std::signal(SIGTERM, &requestStop);
}

bool waitWhile(const std::function<bool()>& condition) {
    constexpr std::chrono::milliseconds pollInterval{50};
    while (!stopRequested && condition())
        std::this_thread::sleep_for(pollInterval);
    return stopRequested;
}

} // namespace emulator
