#include "bench/transfers.h"

#include "bench/adapter.h"
#include "bench/farend.h"
#include "bench/measure.h"
#include "bench/plaincopy.h"
#include "bench/process.h"
#include "bench/randomfile.h"
#include "bench/relay.h"
#include "emulator/line/ptyfront.h"
#include "link/camerasp.h"
#include "link/protocol/exchangetable.h"
#include "link/protocol/uploads.h"
#include "link/uploadfile.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>

namespace bench {

namespace {

using emulator::CameraType;
using protocol::Bytes;

constexpr std::uint32_t downloadTimeoutMs =
    *protocol::rules::getOriginPicInfos.timeoutMs; // kept by a download
constexpr std::uint8_t pictureId = 5;
constexpr std::size_t readBlock = protocol::rules::getOriginTargetPic.readSize;
/// The pace lets a fiftieth of a second pass at once after a silence.
constexpr double paceAllowance = 1.0 / 50;
constexpr double megabyte = 1 << 20;

struct Run {
    double seconds = 0;
    double cpu = 0; ///< seconds
};

Run medianOf(const std::vector<Run>& runs) {
    Run middle;
    std::vector<double> values;
    for (const Run& run : runs)
        values.push_back(run.seconds);
    middle.seconds = median(values);
    values.clear();
    for (const Run& run : runs)
        values.push_back(run.cpu);
    middle.cpu = median(values);
    return middle;
}

Run timed(const std::function<void()>& work) {
    const Stopwatch watch;
    work();
    return {watch.seconds(), watch.cpuSeconds()};
}

FarEnd pictureCamera(std::uint32_t size, std::uint32_t pace) {
    return FarEnd(CameraType::ostra, pace, [size](emulator::PtyFront& front) {
        front.withCamera([size](emulator::VirtualCamera& camera) {
            camera.state().pictures = {emulator::makePicture(pictureId, randomBytes(size))};
        });
    });
}

/// Request, then the client's reads on the client's library, and nothing else.
void readBare(serial::Serial& port, std::uint32_t size) {
    const Bytes request = protocol::buildFrame(protocol::code(protocol::Command::originRead),
                                               protocol::originReadRequest(pictureId, size), 1);
    port.write(request);
    Bytes answer;
    while (answer.size() < std::size_t{size} + protocol::transferOverhead)
        port.read(answer, readBlock);
}

serial::Timeout constantTimeouts(std::uint32_t ms) {
    return serial::Timeout(serial::Timeout::max(), ms, 0, ms, 0);
}

void measureDownload(Results& results, const TransferSizes& sizes, std::uint32_t size,
                     const std::string& words) {
    std::vector<Run> clients;
    std::vector<Run> bares;
    for (int round = 0; round < sizes.rounds; ++round) {
        {
            const FarEnd camera = pictureCamera(size, sizes.pace);
            CameraSp client(camera.portName(), baudRate);
            clients.push_back(timed([&] { client.getOriginTargetPic(pictureId, size); }));
        }
        if (std::filesystem::file_size(std::to_string(pictureId) + ".jpg") != size)
            throw std::runtime_error("the picture did not arrive whole");
        const FarEnd camera = pictureCamera(size, sizes.pace);
        serial::Serial port(camera.portName(), baudRate, constantTimeouts(downloadTimeoutMs));
        bares.push_back(timed([&] { readBare(port, size); }));
    }
    const Run client = medianOf(clients);
    const Run bare = medianOf(bares);
    const double bytes = size + double{protocol::transferOverhead};
    const double atLeast = bytes / sizes.pace - paceAllowance;
    const bool wholeBlocks = (size + protocol::transferOverhead) % readBlock == 0;
    const auto lineGoal = wholeBlocks ? std::optional<Goal>({Goal::Kind::atLeast, 0.99}) : std::nullopt;
    results.add({words + ": time, request to end of the last read", client.seconds * 1000, "ms", {}});
    results.add({words + ": rate, of the line", atLeast / client.seconds, "x", lineGoal});
    results.add({words + ": rate, of the bare reader", bare.seconds / client.seconds, "x",
                 Goal{Goal::Kind::atLeast, 0.99}});
    results.add({words + ": processor time of the client", client.cpu * 1000, "ms", {}});
    results.add({words + ": processor time, of the bare reader's", client.cpu / bare.cpu, "x",
                 Goal{Goal::Kind::atMost, 1.5}});
}

// --- uploads -----------------------------------------------------------------------------------------------

struct UploadWay {
    const char* name;
    protocol::Command command;
    bool flushes;
    void (CameraSp::*setPath)(const std::string&);
    bool (CameraSp::*upload)();
};

constexpr UploadWay appWay{"application image", protocol::Command::appAnnounce, false,
                           &CameraSp::setAppFilePath, &CameraSp::appUpdate};
constexpr UploadWay systemWay{"system image (flushes every 512 bytes)", protocol::Command::firewareAnnounce,
                              true, &CameraSp::setFirewareFilePath, &CameraSp::firewareUpdate};

/// In one go, or in flushed slices as the client has to.
Arrivals copyBare(const UploadWay& way, const Bytes& content, std::uint32_t pace) {
    FarEnd farEnd(CameraType::ostra, pace);
    copyPlainly({way.command, way.flushes ? protocol::rawChunkSize : content.size(), way.flushes},
                farEnd.portName(), content);
    return farEnd.wholeUpload(content.size());
}

struct Upload {
    Arrivals arrivals;
    double cpu = 0;
    double memory = 0; ///< bytes of growth at the most
};

enum class Adapter { none, withoutLowLatency, withLowLatency };

Upload uploadByClient(const UploadWay& way, const std::string& path, std::uint32_t size, std::uint32_t pace,
                      Adapter adapter = Adapter::none) {
    FarEnd farEnd(CameraType::ostra, pace);
    std::optional<AdapterModel> model;
    if (adapter != Adapter::none)
        model.emplace(farEnd.portName(), pace, adapter == Adapter::withLowLatency);
    CameraSp client(farEnd.portName(), baudRate);
    (client.*way.setPath)(path);
    const PeakMemory memory;
    const Stopwatch watch;
    if (!(client.*way.upload)())
        throw std::runtime_error("the upload failed");
    return {farEnd.wholeUpload(size), watch.cpuSeconds(), static_cast<double>(memory.growthBytes())};
}

/// Returns the seconds from the first to the last byte of the client's upload.
double measureUpload(Results& results, const UploadWay& way, const std::string& path, const Bytes& content,
                     std::uint32_t pace, double goal) {
    const auto size = static_cast<std::uint32_t>(content.size());
    const Upload client = uploadByClient(way, path, size, pace);
    const Arrivals bare = copyBare(way, content, pace);
    const std::string words = std::string(way.name) + " at " + std::to_string(pace) + " bytes/s: ";
    results.add({words + "time, first to last byte", client.arrivals.seconds, "s", {}});
    results.add({words + "rate, of the plain copy", bare.seconds / client.arrivals.seconds, "x",
                 Goal{Goal::Kind::atLeast, goal}});
    results.add(
        {words + "rate, of the line", size / static_cast<double>(pace) / client.arrivals.seconds, "x", {}});
    results.add({words + "processor time of the client", client.cpu * 1000, "ms", {}});
    results.add({words + "peak memory growth", client.memory / megabyte, "MiB",
                 Goal{Goal::Kind::atMost, size / megabyte + 4}});
    return client.arrivals.seconds;
}

// --- growth ------------------------------------------------------------------------------------------------

constexpr std::uint32_t smallestUpload = 64 << 10;
constexpr std::uint32_t growthFactor = 4;
constexpr std::uint32_t repeatedUpTo = 4 << 20; ///< bytes; shorter ones are measured several times
constexpr int repetitions = 5;
constexpr Goal flatness{Goal::Kind::atMost, 1.5};

struct Growth {
    std::uint32_t size; ///< bytes
    double seconds;     ///< first to last byte
    double cpu;         ///< seconds of the client
    double memory;      ///< bytes of growth at the most
    [[nodiscard]] double perMegabyte(double value) const { return value * megabyte / size; }
};

Growth uploadOfSize(const std::string& path, std::uint32_t size) {
    writeRandomFile(path, size);
    std::vector<Run> runs;
    std::vector<double> memory;
    for (int run = 0; run < (size < repeatedUpTo ? repetitions : 1); ++run) {
        const Upload upload = uploadByClient(appWay, path, size, 0);
        runs.push_back({upload.arrivals.seconds, upload.cpu});
        memory.push_back(upload.memory);
    }
    const Run middle = medianOf(runs);
    return {size, middle.seconds, middle.cpu, median(memory)};
}

std::string sizeText(std::uint32_t bytes) {
    return bytes < megabyte ? std::to_string(bytes >> 10) + " KiB" : std::to_string(bytes >> 20) + " MiB";
}

// --- other programs ----------------------------------------------------------------------------------------

struct Protocol {
    const char* name;
    std::vector<std::string> sender;
    std::vector<std::string> receiver;
};

void measureProtocol(Results& results, const Protocol& protocol, const std::string& path, std::uint32_t size,
                     std::uint32_t pace, double clientSeconds) {
    const std::string words = std::string(protocol.name) + " at " + std::to_string(pace) + " bytes/s: ";
    const std::string folder = std::filesystem::absolute("received").string();
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    PacedRelay relay(protocol.receiver, folder, pace);
    std::vector<std::string> sender = protocol.sender;
    sender.push_back(path);
    const int code = runOn(sender, relay.portName());
    const Arrivals arrivals = relay.arrivals();
    if (code != 0 || arrivals.bytes < size) {
        results.remark(words + "did not get through (code " + std::to_string(code) + ", " +
                       std::to_string(arrivals.bytes) + " bytes)");
        return;
    }
    results.add({words + "time, first to last byte", arrivals.seconds, "s", {}});
    results.add({words + "the upload's speed against it", arrivals.seconds / clientSeconds, "x",
                 Goal{Goal::Kind::atLeast, 1}});
}

} // namespace

void measureDownloads(Results& results, const TransferSizes& sizes) {
    results.section("Picture download, paced at " + std::to_string(sizes.pace) + " bytes/s");
    const auto blocks = (sizes.picture + protocol::transferOverhead + readBlock - 1) / readBlock;
    const auto wholeBlocks = static_cast<std::uint32_t>(blocks * readBlock - protocol::transferOverhead);
    measureDownload(results, sizes, wholeBlocks, std::to_string(wholeBlocks) + " bytes (whole reads)");
    measureDownload(results, sizes, wholeBlocks - 181, std::to_string(wholeBlocks - 181) + " bytes");
    results.remark("The second picture does not fill its last read, which then lasts one timeout (50 ms) "
                   "longer than its bytes: client and bare reader pay that alike.");
}

void measureUploadGrowth(Results& results, std::uint32_t largest) {
    const std::string path = std::filesystem::absolute("growing.bin").string();
    std::vector<Growth> all;
    for (std::uint64_t size = smallestUpload; size <= largest; size *= growthFactor)
        all.push_back(uploadOfSize(path, static_cast<std::uint32_t>(size)));
    std::filesystem::remove(path);
    std::vector<double> times;
    std::vector<double> cpuTimes;
    for (const Growth& each : all) {
        times.push_back(each.perMegabyte(each.seconds));
        cpuTimes.push_back(each.perMegabyte(each.cpu));
    }
    const double middle = median(times);
    const double middleCpu = median(cpuTimes);

    results.section("Uploads as the file grows, the line as fast as it goes");
    results.columns({"File", "Time, s", "Time per MiB, ms", "Of the middle one's (goal 1.5)",
                     "Processor time per MiB, ms", "Of the middle one's (goal 1.5)",
                     "Peak memory growth, MiB", "Memory beyond the file, MiB (goal 4)"});
    for (const Growth& each : all) {
        const double time = each.perMegabyte(each.seconds);
        const double cpu = each.perMegabyte(each.cpu);
        results.addRow(sizeText(each.size),
                       {{"time", each.seconds, "s", {}},
                        {"time per MiB", time * 1000, "ms", {}},
                        {"time per MiB, of the middle one's", time / middle, "x", flatness},
                        {"processor time per MiB", cpu * 1000, "ms", {}},
                        {"processor time per MiB, of the middle one's", cpu / middleCpu, "x", flatness},
                        {"peak memory growth", each.memory / megabyte, "MiB", {}},
                        {"memory beyond the file", (each.memory - each.size) / megabyte, "MiB",
                         Goal{Goal::Kind::atMost, 4}}});
    }
    results.remark(
        "An application image without its pauses. The time is the sender's pause of a microsecond after "
        "each 512 bytes, as long as the system makes it, and the calls between; files below 4 MiB are "
        "sent " +
        std::to_string(repetitions) +
        " times, the median counts. The file is held in memory "
        "once: what comes on top of it has to be the same for every size.");
}

void measureUploads(Results& results, const TransferSizes& sizes) {
    results.section("Upload of " + std::to_string(sizes.file) + " bytes, the pause of 2 s not counted");
    const std::string path = std::filesystem::absolute("image.bin").string();
    writeRandomFile(path, sizes.file);
    const Bytes content = readUploadFile(path, [](auto, auto) { return true; }).content;
    const double slow = measureUpload(results, appWay, path, content, sizes.pace, 0.99);
    const double fast = measureUpload(results, appWay, path, content, sizes.fastPace, 0.98);
    measureUpload(results, systemWay, path, content, sizes.fastPace, 0.99);

    if (!isInstalled("sz") || !isInstalled("rz")) {
        results.remark("lrzsz is not installed: no comparison with its protocols.");
        return;
    }
    const std::array<Protocol, 3> protocols = {
        {{"ZMODEM (sz)", {"sz", "-b", "-q"}, {"rz", "-b", "-q", "-y"}},
         {"YMODEM (sb)", {"sb", "-b", "-q"}, {"rb", "-b", "-q", "-y"}},
         {"XMODEM (sx -k)", {"sx", "-b", "-q", "-k"}, {"rx", "-b", "-q", "-y", "image.bin"}}}};
    measureProtocol(results, protocols[0], path, sizes.file, sizes.pace, slow);
    for (const Protocol& protocol : protocols)
        measureProtocol(results, protocol, path, sizes.file, sizes.fastPace, fast);
}

void measureAdapter(Results& results, const TransferSizes& sizes) {
    const std::uint32_t size = sizes.file / 4;
    const std::string path = std::filesystem::absolute("image.bin").string();
    writeRandomFile(path, size);
    results.section("System image of " + std::to_string(size) + " bytes behind a modelled USB adapter");
    const double lineSeconds = size / static_cast<double>(sizes.pace);
    const auto measure = [&](Adapter adapter, const char* words, const std::optional<Goal>& goal) {
        const Upload upload = uploadByClient(systemWay, path, size, sizes.pace, adapter);
        results.add(
            {std::string(words) + ": rate, of the line", lineSeconds / upload.arrivals.seconds, "x", goal});
    };
    measure(Adapter::withoutLowLatency, "report each 16 ms", {});
    measure(Adapter::withLowLatency, "low latency, report each ms", Goal{Goal::Kind::atLeast, 0.9});
    results.remark("At " + std::to_string(sizes.pace) +
                   " bytes/s. Each flush waits for the report that follows the last byte.");
}

} // namespace bench
