#include "link/diagnostics.h"

#include <iostream>

namespace diagnostics {

namespace {

std::ostream*& chosenStream() {
    static std::ostream* chosen = &std::cout;
    return chosen;
}

} // namespace

std::ostream& stream() {
    return *chosenStream();
}

void setStream(std::ostream& stream) {
    chosenStream() = &stream;
}

void useHexadecimal() {
    const std::lock_guard lock(lineMutex());
    stream() << std::hex;
}

} // namespace diagnostics
