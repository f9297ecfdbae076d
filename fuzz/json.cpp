// The JSON envelope, its text and its picture pieces.
#include "fuzz/scriptedlink.h"

#include <array>

using namespace fuzz;

namespace {

const std::array<Command, 3> commands{{
    [](CameraSp& c, Input&) { c.getQuentaModbusProperty({}); },
    [](CameraSp& c, Input&) { c.getQuentaModbusProperty("{\"method\":\"x\"}"); },
    [](CameraSp& c, Input&) { c.getQuentaModbusPic(1); },
}};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    runOne(commands, 0, data, size);
    return 0;
}
