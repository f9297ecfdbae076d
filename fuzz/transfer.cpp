// Picture transfers; the parameters are the stated size and the picture's id.
#include "fuzz/scriptedlink.h"

#include <array>
#include <filesystem>

using namespace fuzz;

namespace {

/// A written picture has the stated size.
void checkFile(unsigned id, std::uint32_t size) {
    const std::string name = std::to_string(id) + ".jpg";
    if (std::filesystem::exists(name))
        require(std::filesystem::file_size(name) == size);
    std::filesystem::remove(name);
}

const std::array<Command, 2> commands{{
    [](CameraSp& c, Input& parameters) {
        const std::uint32_t size = parameters.number();
        const std::uint8_t id = parameters.byte();
        c.getOriginTargetPic(id, size);
        checkFile(id, size);
    },
    [](CameraSp& c, Input& parameters) {
        const std::uint32_t size = parameters.number();
        const std::uint8_t id = parameters.byte();
        c.getTargetPicV1(id, size);
        checkFile(id, size);
    },
}};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    runOne(commands, sizeof(std::uint32_t) + 1, data, size);
    return 0;
}
