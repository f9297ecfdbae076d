#include "link/diagnostics.h"

namespace diagnostics {

void useHexadecimal() {
    const std::lock_guard lock(lineMutex());
    std::cout << std::hex;
}

} // namespace diagnostics
