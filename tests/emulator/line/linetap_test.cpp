// The tap between two real lines.
#include "emulator/line/linetap.h"
#include "emulator/line/pty.h"
#include "emulator/line/ptyfront.h"
#include "emulator/line/toolline.h"
#include "tests/emulator/camera/camerabench.h"
#include "tests/emulator/line/ptyclient.h"
#include "tests/trace/tapbench.h"

#include <algorithm>

namespace emulatortest {
namespace {

using tracetest::TapBench;

using testing::HasSubstr;

/// Tool's end, tap and camera's end on real terminals.
class TapOnLines {
public:
    explicit TapOnLines(Recorder::Sink sink = {}) {
        m_far.open();
        m_tool = openToolLine({});
        m_camera = openDeviceLine(m_far.portName(), 460800);
        if (!sink)
            sink = [this](const std::string& lines) { m_text += lines; };
        m_tap.emplace(*m_tool, *m_camera, Recorder(RecordingHead{"now", "far", 460800, 0, false}, sink));
    }
    ~TapOnLines() { m_tap.reset(); }
    TapOnLines(const TapOnLines&) = delete;
    TapOnLines& operator=(const TapOnLines&) = delete;

    [[nodiscard]] std::string toolName() const { return m_tool->name(); }
    [[nodiscard]] int cameraEnd() const { return m_far.master(); }
    void unplug() { m_far.close(); }
    LineTap& tap() { return *m_tap; }
    /// Ends the tap.
    Recording recording() {
        m_tap->stop();
        std::istringstream lines(m_text);
        return readRecording(lines);
    }
    [[nodiscard]] std::string text() {
        m_tap->stop();
        return m_text;
    }

private:
    Pty m_far;
    std::unique_ptr<ByteLine> m_tool;
    std::unique_ptr<ByteLine> m_camera;
    std::string m_text;
    std::optional<LineTap> m_tap;
};

Bytes readFrom(int descriptor, std::size_t count) {
    Bytes bytes;
    pollfd polled{descriptor, POLLIN, 0};
    while (bytes.size() < count && ::poll(&polled, 1, 5000) > 0) {
        std::array<std::uint8_t, 4096> buffer{};
        const ssize_t got = ::read(descriptor, buffer.data(), buffer.size());
        if (got <= 0)
            break;
        bytes.insert(bytes.end(), buffer.begin(), buffer.begin() + got);
    }
    return bytes;
}

Bytes everyByteTwice() {
    Bytes bytes = countingBytes(512);
    std::reverse(bytes.begin() + 256, bytes.end());
    return bytes;
}

TEST(LineTap, PassesEveryByteUnchangedBothWays) {
    TapOnLines lines;
    PtyClient client(lines.toolName());
    client.write(everyByteTwice());
    EXPECT_EQ(readFrom(lines.cameraEnd(), 512), everyByteTwice());
    ASSERT_EQ(::write(lines.cameraEnd(), everyByteTwice().data(), 512), 512);
    EXPECT_EQ(client.read(512), everyByteTwice());
    Bytes fromTool;
    Bytes fromCamera;
    for (const RecordingEntry& entry : lines.recording().entries)
        protocol::append(entry.from == Side::tool ? fromTool : fromCamera, entry.bytes);
    EXPECT_EQ(fromTool, everyByteTwice());
    EXPECT_EQ(fromCamera, everyByteTwice());
}

TEST(LineTap, PassesAByteInLessThanTwoMilliseconds) {
    TapOnLines lines;
    PtyClient client(lines.toolName());
    std::vector<double> times;
    for (int i = 0; i < 200; ++i) {
        const auto start = std::chrono::steady_clock::now();
        client.write(hex(heartbeatRequest));
        ASSERT_EQ(readFrom(lines.cameraEnd(), 11).size(), 11U);
        const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
        times.push_back(took.count());
    }
    std::sort(times.begin(), times.end());
    RecordProperty("median_ms", std::to_string(times[100]));
    EXPECT_LT(times[100], 2.0);
}

TEST(LineTap, MakesTheToolWaitAsTheCameraDoes) {
    TapOnLines lines;
    PtyClient client(lines.toolName());
    constexpr std::size_t much = 1 << 20;
    EXPECT_LT(client.write(Bytes(much), 300ms), much) << "nobody reads at the camera's end";
    const std::size_t rest = readFrom(lines.cameraEnd(), 1000).size();
    EXPECT_GE(rest, 1000U);
}

TEST(LineTap, ReportsBytesThatTheToolDoesNotRead) {
    TapOnLines lines;
    PtyClient client(lines.toolName());
    const Bytes some(4096);
    const auto end = std::chrono::steady_clock::now() + 3s;
    while (std::chrono::steady_clock::now() < end) {
        static_cast<void>(!::write(lines.cameraEnd(), some.data(), some.size()));
        ::usleep(10000);
    }
    EXPECT_TRUE(lines.tap().running());
    EXPECT_THAT(lines.text(), HasSubstr("bytes lost: the tool does not read"));
}

TEST(LineTap, EndsWithAMessageWhenTheCameraLineIsGone) {
    TapOnLines lines;
    lines.unplug();
    EXPECT_TRUE(comesTrue([&] { return !lines.tap().running(); }));
    EXPECT_THAT(lines.tap().failure(), HasSubstr("the line is gone: /dev/"));
    EXPECT_THAT(lines.text(), HasSubstr("the line is gone: /dev/"));
}

TEST(LineTap, EndsWithAMessageWhenTheRecordingFails) {
    auto calls = std::make_shared<std::atomic<int>>(0);
    TapOnLines lines([calls](const std::string&) {
        if (++*calls > 1)
            throw std::runtime_error("no space");
    });
    PtyClient client(lines.toolName());
    client.write(hex(heartbeatRequest));
    EXPECT_TRUE(comesTrue([&] { return !lines.tap().running(); }));
    EXPECT_EQ(lines.tap().failure(), "no space");
}

TEST(LineTap, ReportsDifferentRates) {
    TapOnLines lines;
    PtyClient client(lines.toolName());
    client.setSpeed(B9600);
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(readFrom(lines.cameraEnd(), 11).size(), 11U) << "it passes all the same";
    EXPECT_THAT(lines.text(), HasSubstr("the tool runs its line at 9600 baud, the camera's runs at 460800"));
}

TEST(LineTap, LetsTheToolCloseAndOpenItsLine) {
    TapOnLines lines;
    {
        PtyClient client(lines.toolName());
        client.write(hex(heartbeatRequest));
        EXPECT_EQ(readFrom(lines.cameraEnd(), 11).size(), 11U);
    }
    PtyClient client(lines.toolName());
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(readFrom(lines.cameraEnd(), 11).size(), 11U);
    EXPECT_TRUE(lines.tap().running());
}

} // namespace
} // namespace emulatortest
