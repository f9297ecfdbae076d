// The kept recordings: a real client gets the answers of the camera, and the same session gives the same
// recording.
#include "emulator/line/linetap.h"
#include "emulator/line/ptyfront.h"
#include "emulator/line/replayfront.h"
#include "emulator/line/toolline.h"
#include "tests/emulator/line/recordedsession.h"
#include "trace/recordingfile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace emulatortest {
namespace {

using namespace emulator;
using namespace trace;

constexpr std::uint32_t anyRate = 460800;

struct Kept {
    CameraType type;
    const char* name;

    friend void PrintTo(const Kept& kept, std::ostream* out) { *out << kept.name; }
};

std::string keptPath(const Kept& kept) {
    return std::string(KEPT_RECORDINGS) + "/" + kept.name + ".rec";
}

/// Bytes of the recording without times; successive bytes of one side are one piece, however the system split
/// them.
std::vector<RecordingEntry> conversation(const Recording& recording) {
    std::vector<RecordingEntry> pieces;
    for (const RecordingEntry& entry : recording.entries) {
        if (pieces.empty() || pieces.back().from != entry.from)
            pieces.push_back({Time{0}, entry.from, {}});
        protocol::append(pieces.back().bytes, entry.bytes);
    }
    return pieces;
}

/// The session through a tap, recorded to the path.
std::vector<std::string> record(const Kept& kept, const std::string& path) {
    PtyFront front(sessionSettings(kept.type));
    front.withCamera([](VirtualCamera& camera) { fillSessionCamera(camera); });
    const auto tool = openToolLine({});
    const auto camera = openDeviceLine(front.portName(), settingsForType(kept.type).baudRate);
    const auto file = std::make_shared<RecordingFile>(path);
    RecordingHead head;
    head.start = wallClockText(std::chrono::system_clock::now());
    head.device = "a virtual camera";
    head.baudRate = settingsForType(kept.type).baudRate;
    LineTap tap(*tool, *camera, Recorder(head, [file](const std::string& lines) { file->append(lines); }));
    CameraSp client(tool->name(), anyRate);
    return runSession(kept.type, client);
}

/// The session with a camera that answers from the recording.
std::vector<std::string> replay(const Kept& kept, bool atOnce, std::size_t& unknown) {
    ReplayCamera camera(loadRecording(keptPath(kept)), atOnce);
    const auto line = openToolLine({});
    std::vector<std::string> results;
    {
        const ReplayFront front(camera, *line);
        CameraSp client(line->name(), anyRate);
        results = runSession(kept.type, client);
    }
    unknown = camera.unknownRequests();
    return results;
}

class Recordings : public testing::TestWithParam<Kept> {};

TEST_P(Recordings, AnswerARealClientAsTheCamera) {
    std::size_t unknown = 0;
    EXPECT_EQ(replay(GetParam(), false, unknown), sessionResults(GetParam().type));
    EXPECT_EQ(unknown, 0U);
}

TEST_P(Recordings, AnswerTheSameAtOnce) {
    std::size_t unknown = 0;
    EXPECT_EQ(replay(GetParam(), true, unknown), sessionResults(GetParam().type));
    EXPECT_EQ(unknown, 0U);
}

/// CAMERA_KEEP_RECORDINGS=1 in the environment replaces the kept recording.
TEST_P(Recordings, ComeOutTheSameAgain) {
    EXPECT_EQ(record(GetParam(), "again.rec"), sessionResults(GetParam().type));
    if (std::getenv("CAMERA_KEEP_RECORDINGS") != nullptr)
        std::filesystem::copy_file("again.rec", keptPath(GetParam()),
                                   std::filesystem::copy_options::overwrite_existing);
    const std::vector<RecordingEntry> kept = conversation(loadRecording(keptPath(GetParam())));
    const std::vector<RecordingEntry> again = conversation(loadRecording("again.rec"));
    ASSERT_EQ(again.size(), kept.size());
    for (std::size_t i = 0; i < kept.size(); ++i) {
        EXPECT_EQ(again[i].from, kept[i].from) << "piece " << i;
        EXPECT_EQ(again[i].bytes, kept[i].bytes) << "piece " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(All, Recordings,
                         testing::Values(Kept{CameraType::ostra, "ostra"}, Kept{CameraType::quenta, "quenta"},
                                         Kept{CameraType::salesDynamic, "sales-dynamic"}),
                         [](const auto& row) {
                             std::string name = row.param.name;
                             std::erase(name, '-');
                             return name;
                         });

} // namespace
} // namespace emulatortest
