#include "emulator/line/toolline.h"
#include "language/language.h"

#include <stdexcept>

namespace emulator {

std::unique_ptr<ByteLine> openToolLine(const std::string&) {
    throw std::runtime_error(
        language::sentence("Windows has no pseudo-terminals; name one port of a pair with --device"));
}

} // namespace emulator
