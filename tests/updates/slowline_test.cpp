// Uploads and pictures at 9600 baud, through the queues of several systems.
#include "tests/support/stdoutcapture.h"
#include "tests/updates/uploadcells.h"

using namespace std::chrono_literals;
using namespace uploadcells;
using emulator::CameraType;
using emulator::VirtualCamera;
using emulator::WriteQueue;

namespace {

constexpr double slowPace = 960; // bytes per second at 9600 baud
constexpr std::size_t imageSize = 20000;

constexpr WriteQueue takesWhatFits{};
/// Linux calls a terminal writable below 256 waiting bytes.
constexpr WriteQueue terminal{4096, 256};
/// Linux fills the queue of a pseudo-terminal again when it is nearly empty.
constexpr WriteQueue pseudoTerminal{4096, 129, true};

struct SlowResult {
    bool success = false;
    CommandEnd end = CommandEnd::done;
    double seconds = 0;
    double more = 0; ///< seconds, than without a rate
};

class SlowLine : public testing::Test {
protected:
    SlowLine() { files::write(std::filesystem::path(u8"新 固件 v2.bin"), content(imageSize)); }

    using Command = std::function<bool(CameraSp&)>;
    using Prepare = std::function<void(VirtualCamera&)>;

    /// On a line without a rate for comparison, and at 9600 baud.
    SlowResult run(CameraType type, const Command& command, const Prepare& prepare = {}) {
        const double unpaced = runAt(0, type, command, prepare).seconds;
        SlowResult result = runAt(slowPace, type, command, prepare);
        RecordProperty("milliseconds", static_cast<int>(result.seconds * 1000));
        RecordProperty("more", static_cast<int>((result.seconds - unpaced) * 1000));
        result.more = result.seconds - unpaced;
        return result;
    }
    [[nodiscard]] bool wroteShort() const {
        const auto lines = out.lines();
        return std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
            return line.find("writeLength:") != std::string::npos;
        });
    }

    static bool app(CameraSp& client) {
        client.setAppFilePath(filePath);
        return client.appUpdate();
    }
    static bool system(CameraSp& client) {
        client.setFirewareFilePath(filePath);
        return client.firewareUpdate();
    }
    static bool model(CameraSp& client) {
        client.setModelNameAndPath("m", filePath);
        return client.modelUpdate();
    }

    WriteQueue queue = terminal;
    StdoutCapture out;

private:
    SlowResult runAt(double pace, CameraType type, const Command& command, const Prepare& prepare) {
        TestFront front(type);
        front.line().setQueue(queue);
        front.setPace(static_cast<std::uint32_t>(pace));
        if (prepare)
            front.withCamera(prepare);
        const auto client = connect(front);
        const ReportScope scope;
        const auto began = std::chrono::steady_clock::now();
        const bool success = command(*client);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
        return {success, scope.report().end, took.count()};
    }
};

TEST_F(SlowLine, CarriesUploadsWhole) {
    for (const WriteQueue& each : {takesWhatFits, terminal}) {
        queue = each;
        for (bool (*const upload)(CameraSp&) : {&app, &system, &model}) {
            const SlowResult result = run(CameraType::ostra, upload);
            EXPECT_TRUE(result.success);
            EXPECT_EQ(result.end, CommandEnd::done);
            EXPECT_LT(result.more, imageSize / slowPace + 0.5);
        }
    }
    EXPECT_FALSE(wroteShort());
}

/// The queue lasts four seconds, a write waits one.
TEST_F(SlowLine, CutsAnApplicationBehindAPseudoTerminal) {
    queue = pseudoTerminal;
    const SlowResult result = run(CameraType::ostra, &app);
    EXPECT_FALSE(result.success);
    EXPECT_EQ(result.end, CommandEnd::writtenShort);
    EXPECT_TRUE(wroteShort());
    EXPECT_TRUE(out.has("appupdate update-end failed"));
}

TEST_F(SlowLine, CarriesTheSecondProtocol) {
    const SlowResult result = run(
        CameraType::salesDynamic, [](CameraSp& client) { return client.appUpdateV1("v2.bin", filePath); },
        [](VirtualCamera& camera) { camera.settings().holdsAnnouncedImage = true; });
    EXPECT_TRUE(result.success);
    EXPECT_LT(result.more, 1.5);
}

TEST_F(SlowLine, CarriesPicturesAtItsRate) {
    const auto store = [](VirtualCamera& camera) {
        camera.state().pictures = {emulator::makePicture(5, content(imageSize))};
    };
    const SlowResult first = run(
        CameraType::ostra, [](CameraSp& client) { return client.getOriginTargetPic(5, imageSize), true; },
        store);
    const SlowResult v1 = run(
        CameraType::salesDynamic, [](CameraSp& client) { return client.getTargetPicV1(5, imageSize), true; },
        store);
    for (const SlowResult& each : {first, v1}) {
        EXPECT_EQ(each.end, CommandEnd::done);
        EXPECT_LT(each.more, imageSize / slowPace + 0.5);
    }
    EXPECT_EQ(files::read("5.jpg"), content(imageSize));
}

class SlowCatalogue : public SlowLine {
protected:
    /// The most pictures that a list shows.
    std::size_t longest(CameraType type, std::size_t most, std::size_t (*count)(CameraSp&)) {
        std::size_t pictures = 0;
        while (pictures < most) {
            const std::size_t wanted = pictures + 1;
            const SlowResult result = run(
                type, [&](CameraSp& client) { return count(client) == wanted; },
                [wanted](VirtualCamera& camera) {
                    camera.state().pictures.clear();
                    for (std::size_t id = 1; id <= wanted; ++id)
                        camera.state().pictures.push_back(
                            emulator::makePicture(static_cast<std::uint16_t>(id), {}));
                });
            if (!result.success)
                break;
            pictures = wanted;
        }
        RecordProperty("pictures", static_cast<int>(pictures));
        return pictures;
    }
};

/// Ten reads of 50 ms.
TEST_F(SlowCatalogue, EndsAfterHalfASecondInTheFirstGeneration) {
    const std::size_t pictures =
        longest(CameraType::ostra, 40, [](CameraSp& client) { return client.getOriginPicInfos().size(); });
    EXPECT_GE(pictures, 15U);
    EXPECT_LT(pictures, 20U);
}

TEST_F(SlowCatalogue, HasRoomInV1) {
    const std::size_t pictures =
        longest(CameraType::salesDynamic, 40, [](CameraSp& client) { return client.getPicInfosV1().size(); });
    EXPECT_EQ(pictures, 40U);
}

TEST_F(SlowLine, CarriesJsonPictures) {
    const SlowResult result = run(CameraType::quenta, [](CameraSp& client) {
        return !client.getQuentaModbusProperty("").empty() && client.getQuentaModbusPic(1);
    });
    EXPECT_TRUE(result.success);
    const auto size = static_cast<double>(std::filesystem::file_size("1.jpg"));
    RecordProperty("bytes", static_cast<int>(size));
    EXPECT_LT(result.more, size / slowPace * 1.1);
}

} // namespace
