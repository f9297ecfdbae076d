// Catalogues of both generations, and the all-in-one sequence that looks its picture up in one.
#include "fuzz/scriptedlink.h"

#include <array>

using namespace fuzz;

namespace {

const std::array<Command, 3> commands{{
    [](CameraSp& c, Input&) {
        for (const auto& record : c.getOriginPicInfos())
            static_cast<void>(protocol::parseOriginRecord(
                std::span<const std::uint8_t>(record.get(), protocol::origin_record::size)));
    },
    [](CameraSp& c, Input&) {
        for (const auto& record : c.getPicInfosV1())
            static_cast<void>(protocol::parseV1Record(
                std::span<const std::uint8_t>(record.get(), protocol::v1_record::size)));
    },
    [](CameraSp& c, Input&) { c.takePic(); },
}};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    runOne(commands, 0, data, size);
    return 0;
}
