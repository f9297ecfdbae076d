// Announcement answers, verdicts and package results of the uploads.
#include "link/protocol/uploads.h"

#include "fuzz/scriptedlink.h"
#include "tests/fake/fakeserial.h"

#include <array>
#include <filesystem>
#include <fstream>

using namespace fuzz;

namespace {

constexpr std::size_t fileSize = 1300;
constexpr const char* fileName = "image.bin";

void prepare() {
    if (!std::filesystem::exists(fileName))
        std::ofstream(fileName, std::ios::binary) << std::string(fileSize, 'x');
}

/// Behind the announcement no more than the file goes out, in chunks.
void checkRaw() {
    const auto writes = fake_serial::writes();
    std::size_t sent = 0;
    for (std::size_t i = 1; i < writes.size(); ++i) {
        require(writes[i].size() <= protocol::rawChunkSize);
        sent += writes[i].size();
    }
    require(sent <= fileSize);
}

const std::array<Command, 4> commands{{
    [](CameraSp& c, Input&) {
        c.setAppFilePath(fileName);
        c.appUpdate();
        checkRaw();
    },
    [](CameraSp& c, Input&) {
        c.setFirewareFilePath(fileName);
        c.firewareUpdate();
        checkRaw();
    },
    [](CameraSp& c, Input&) {
        c.setModelNameAndPath("model_v1", fileName);
        c.modelUpdate();
        checkRaw();
    },
    [](CameraSp& c, Input&) {
        const bool done = c.appUpdateV1("app.bin", fileName);
        constexpr std::size_t whole = protocol::appV1Announcements + protocol::appV1ClosingPackets;
        require(fake_serial::writes().size() <= whole);
        require(!done || fake_serial::writes().size() == whole);
    },
}};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::array<Command, 4> prepared = [] {
        std::array<Command, 4> all;
        for (std::size_t i = 0; i < all.size(); ++i)
            all[i] = [i](CameraSp& c, Input& parameters) {
                prepare();
                commands[i](c, parameters);
            };
        return all;
    }();
    runOne(prepared, 0, data, size);
    return 0;
}
