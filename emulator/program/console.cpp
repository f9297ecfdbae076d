#include "emulator/program/console.h"

#include <array>
#include <csignal>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace emulator {

namespace {

volatile std::sig_atomic_t endWanted = 0;

void askForEnd(int) {
    endWanted = 1;
}

} // namespace

void printEvent(const Event& event) {
    constexpr std::array<const char*, 3> marks = {"<- ", "-> ", "   "};
    std::ostringstream line; // one write a line: a reader of a pipe sees whole lines
    line << std::fixed << std::setprecision(3) << std::setw(9)
         << std::chrono::duration<double>(event.at).count() << "  "
         << marks[static_cast<std::size_t>(event.kind)] << event.text << "\n";
    std::cout << line.str() << std::flush;
}

void printFailure(const std::string& sentence) {
    std::cerr << "virtual-camera: " << sentence << std::endl;
}

void watchForEnd() {
    std::signal(SIGINT, &askForEnd);
    std::signal(SIGTERM, &askForEnd);
}

bool endAsked() {
    return endWanted != 0;
}

} // namespace emulator
