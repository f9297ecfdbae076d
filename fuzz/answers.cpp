// Answers of one frame: status, properties, captures, deletions.
#include "fuzz/scriptedlink.h"
#include "link/protocol/commands.h"

#include <array>

using namespace fuzz;

namespace {

const std::array<Command, 18> commands{{
    [](CameraSp& c, Input&) { c.testHeartBeat(); },
    [](CameraSp& c, Input&) { c.getSn(); },
    [](CameraSp& c, Input&) { c.setSn("SHELF000001"); },
    [](CameraSp& c, Input&) { c.getAppVersion(); },
    [](CameraSp& c, Input&) { c.getSystemVersion(); },
    [](CameraSp& c, Input&) { c.getQvVersion(); },
    [](CameraSp& c, Input&) { c.getModelInfo(); },
    [](CameraSp& c, Input&) { c.getCommonProperty(15, 2); },
    [](CameraSp& c, Input&) { c.setCommonProperty(15, {30}, 3); },
    [](CameraSp& c, Input&) {
        namespace gyro = protocol::gyro_test;
        require(c.getCommonPropertyWithoutParse(gyro::property, code(protocol::Command::gyroTest),
                                                gyro::timeoutMs, gyro::readSize)
                    .size() <= gyro::readSize);
    },
    [](CameraSp& c, Input&) { c.rebootCamera(); },
    [](CameraSp& c, Input&) { c.resetToFactory(); },
    [](CameraSp& c, Input&) { c.opDoor(true); },
    [](CameraSp& c, Input&) { c.originCapture(); },
    [](CameraSp& c, Input&) { c.captureV1(); },
    [](CameraSp& c, Input&) { c.delOriginPic(5); },
    [](CameraSp& c, Input&) { c.delPicV1(5, 20240131, 3); },
    [](CameraSp& c, Input&) { c.delPicV1(protocol::v1DeleteAll, 0, 0); },
}};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    runOne(commands, 0, data, size);
    return 0;
}
