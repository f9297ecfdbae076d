// One program for each row of targets.cpp.
#include "fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::runTarget(FUZZ_TARGET, protocol::ByteView(std::span(data, size)));
    return 0;
}
