#include "bench/senders.h"

#include "bench/farend.h"
#include "bench/measure.h"
#include "bench/process.h"
#include "bench/randomfile.h"
#include "emulator/line/ptyfront.h"
#include "link/protocol/uploads.h"

#include <filesystem>
#include <stdexcept>

namespace bench {

namespace {

constexpr const char* fileName = "image.bin";

/// Seconds from the first byte of the file to its last at the far end.
double send(const Sender& sender, const char* way, const TransferSizes& sizes, std::uint32_t pace) {
    FarEnd farEnd(emulator::CameraType::ostra, pace,
                  [&](emulator::PtyFront& front) { front.linkAt(sender.link); });
    std::vector<std::string> program = sender.program;
    program.insert(program.end(), {way, fileName});
    if (const int code = runOn(program, "/dev/null"); code != 0)
        throw std::runtime_error("the sender ended with code " + std::to_string(code));
    return farEnd.wholeUpload(sizes.file).seconds;
}

struct Pair {
    double upload; ///< seconds
    double copy;   ///< seconds
};

Pair medians(const Sender& sender, const TransferSizes& sizes, std::uint32_t pace) {
    std::vector<double> uploads;
    std::vector<double> copies;
    for (int round = 0; round < sizes.rounds; ++round) { // by turns: what changes in the machine meets both
        uploads.push_back(send(sender, "client", sizes, pace));
        copies.push_back(send(sender, "copy", sizes, pace));
    }
    return {median(uploads), median(copies)};
}

/// Extra time of a chunk of the upload over one of the copy.
double excessMs(const Pair& seconds, const TransferSizes& sizes) {
    return (seconds.upload - seconds.copy) * 1000 * protocol::rawChunkSize / sizes.file;
}

void addRow(Results& results, const TransferSizes& sizes, const std::string& line, const Pair& seconds,
            const std::optional<Goal>& goal) {
    results.addRow(line, {{"upload", seconds.upload, "s", {}},
                          {"copy", seconds.copy, "s", {}},
                          {"upload, of the copy", seconds.upload / seconds.copy, "x", goal},
                          {"chunk of the upload beyond the copy's", excessMs(seconds, sizes), "ms", {}}});
}

} // namespace

void measureSender(Results& results, const Sender& sender, const TransferSizes& sizes) {
    writeRandomFile(fileName, sizes.file);
    results.section("Upload of " + std::to_string(sizes.file) + " bytes, median of " +
                    std::to_string(sizes.rounds));
    results.columns({"Line", "Upload, s", "Plain copy, s", "Upload, of the copy",
                     "A chunk of the upload beyond the copy's, ms"});
    const Goal goal{Goal::Kind::atMost, 1.02};
    addRow(results, sizes, std::to_string(sizes.pace) + " bytes/s", medians(sender, sizes, sizes.pace), goal);
    addRow(results, sizes, std::to_string(sizes.fastPace) + " bytes/s",
           medians(sender, sizes, sizes.fastPace), {});
    const Pair unpaced = medians(sender, sizes, 0);
    addRow(results, sizes, "as fast as it goes", unpaced, {});
    const double chunkMs = protocol::rawChunkSize * 1000.0 / sizes.pace;
    results.add({std::to_string(sizes.pace) + " bytes/s through a port without a buffer: upload, of the copy",
                 1 + excessMs(unpaced, sizes) / chunkMs, "x", goal});
    results.remark(
        "Times at the far end, from the first byte of the file to its last: the announcement and its pause "
        "are not in them. The copy writes 512 bytes at a time, as the client does. The pseudo-terminal "
        "buffers several chunks and so hides what the sender waits between two of them, up to a chunk's own "
        "time. A port without a buffer hides nothing: the last figure is calculated, from what a chunk takes "
        "longer on the line as fast as it goes.");
    std::filesystem::remove(fileName);
}

} // namespace bench
