// Memory, descriptors and threads over many repetitions; the camera runs in another process.
#include "bench/farend.h"
#include "bench/lognowhere.h"
#include "bench/measure.h"
#include "emulator/line/ptyfront.h"
#include "link/camerasp.h"
#include "tests/support/testclock.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

using emulator::CameraType;

constexpr std::uint32_t baudRate = 460800;
constexpr std::int64_t memoryLimit = 2 << 20; // bytes
constexpr const char* imageName = "image.bin";
constexpr std::size_t imageSize = 200000;
constexpr std::uint32_t pictureSize = 40 * 512 - 11; // a transfer of whole reads

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memoryCounts = false; // the sanitizer keeps freed memory
#else
constexpr bool memoryCounts = true;
#endif

/// Answers that fill their reads, so that a thousand exchanges do not wait for a thousand timeouts.
void prepare(emulator::PtyFront& front) {
    front.withCamera([](emulator::VirtualCamera& camera) {
        camera.state().appVersion = "1.2";                  // a frame of 15 bytes
        camera.state().modelInfo = "model_v1 20240131x";    // of 30
        camera.state().serialNumber = std::string(88, 'S'); // of 100
        camera.settings().captureTime = {};
        camera.settings().drawPicture = [](std::uint16_t, std::uint32_t) {
            return emulator::Bytes(pictureSize, 7);
        };
    });
}

std::size_t entriesOf(const char* folder) {
    const std::filesystem::directory_iterator all(folder);
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

struct Usage {
    std::int64_t memory = bench::residentBytes();
    std::size_t descriptors = entriesOf("/proc/self/fd");
    std::size_t threads = entriesOf("/proc/self/task");
};

class Endurance : public testing::Test {
protected:
    Endurance() {
        clock.skipPauses();
        std::ofstream(imageName) << std::string(imageSize, 'i');
    }

    /// Warms up, then measures the repetitions.
    void repeat(const char* what, int times, const std::function<bool(int round)>& work) {
        const int warmUp = std::max(5, times / 10);
        int failures = 0;
        for (int round = 0; round < warmUp; ++round)
            failures += work(round) ? 0 : 1;
        const Usage before;
        const bench::Stopwatch watch;
        for (int round = 0; round < times; ++round)
            failures += work(round) ? 0 : 1;
        const double seconds = watch.seconds();
        const Usage after;
        std::printf("%d %s in %.1f s: memory %+lld KiB, descriptors %zu -> %zu, threads %zu -> %zu, "
                    "%d failures\n",
                    times, what, seconds, static_cast<long long>((after.memory - before.memory) / 1024),
                    before.descriptors, after.descriptors, before.threads, after.threads, failures);
        EXPECT_EQ(failures, 0);
        EXPECT_EQ(after.descriptors, before.descriptors);
        EXPECT_EQ(after.threads, before.threads);
        if (memoryCounts) {
            EXPECT_LE(after.memory - before.memory, memoryLimit);
        }
    }

    TestClock clock;
    bench::FarEnd ostra{CameraType::ostra, 0, &prepare};
    bench::FarEnd dynamic{CameraType::salesDynamic, 0, &prepare};
    bench::LogToNowhere quiet;
};

bool exchangeOnce(CameraSp& camera, int round) {
    switch (round % 5) {
    case 0:
        return camera.getAppVersion() == "1.2";
    case 1:
        return camera.getModelInfo() == "model_v1 20240131x";
    case 2:
        return camera.getSn().size() == 88;
    case 3:
        return camera.getCommonPropertyWithoutParse(3, 0x0F, 50, 8).size() == 8;
    default:
        // One in 25 is a write, which waits for its timeout.
        return round % 25 == 4 ? camera.setCommonProperty(15, {30}, 3) : !camera.getSn().empty();
    }
}

bool uploadOnce(CameraSp& camera, int round) {
    // Every tenth waits one second for its verdict; a system image has none.
    return round % 10 == 0 ? camera.appUpdate() : camera.firewareUpdate();
}

bool captureOnce(CameraSp& camera, std::uint16_t id, bool lists) {
    if (!camera.captureV1())
        return false;
    if (lists && camera.getPicInfosV1().size() != 1)
        return false;
    camera.getTargetPicV1(id, pictureSize);
    const std::string file = std::to_string(id) + ".jpg";
    const bool right = std::filesystem::file_size(file) == pictureSize;
    std::filesystem::remove(file);
    camera.getAppVersion(); // sets short timeouts after the long ones of the catalogue
    return right && camera.delPicV1(0xFFFF, 0, 0);
}

} // namespace

TEST_F(Endurance, ThousandExchangesLeakNothing) {
    CameraSp camera(ostra.portName(), baudRate, clock);
    repeat("exchanges", 1000, [&](int round) { return exchangeOnce(camera, round); });
}

TEST_F(Endurance, TwoHundredLinksLeakNothing) {
    repeat("openings and closings", 200, [&](int) {
        CameraSp camera(ostra.portName(), baudRate, clock);
        return camera.getAppVersion() == "1.2";
    });
}

TEST_F(Endurance, FiftyUploadsLeakNothing) {
    CameraSp camera(ostra.portName(), baudRate, clock);
    camera.setAppFilePath(imageName);
    camera.setFirewareFilePath(imageName);
    repeat("uploads of 200 kB", 50, [&](int round) { return uploadOnce(camera, round); });
}

TEST_F(Endurance, FiftyCapturesLeakNothing) {
    CameraSp camera(dynamic.portName(), baudRate, clock);
    camera.setSlaveAddress(emulator::settingsForType(CameraType::salesDynamic).address);
    std::uint16_t id = emulator::CameraState().nextPictureId;
    repeat("captures with download", 50,
           [&](int round) { return captureOnce(camera, id++, round % 10 == 0); });
}

TEST_F(Endurance, MixedUseLeaksNothing) {
    CameraSp origin(ostra.portName(), baudRate, clock);
    origin.setFirewareFilePath(imageName);
    CameraSp v1(dynamic.portName(), baudRate, clock);
    v1.setSlaveAddress(emulator::settingsForType(CameraType::salesDynamic).address);
    std::uint16_t id = emulator::CameraState().nextPictureId;
    repeat("rounds of 20 exchanges, 4 links, an upload and a capture", 50, [&](int round) {
        bool right = origin.firewareUpdate() && captureOnce(v1, id++, false);
        for (int i = 0; i < 20; ++i)
            right = right && exchangeOnce(origin, round * 20 + i);
        for (int i = 0; i < 4; ++i)
            right = right && !CameraSp(dynamic.portName(), baudRate, clock).stopRequested();
        return right;
    });
}
