// The modes --tap and --replay of virtual-camera.
#include "emulator/line/linetap.h"
#include "emulator/line/replayfront.h"
#include "emulator/line/toolline.h"
#include "emulator/program/console.h"
#include "language/language.h"
#include "trace/recordingfile.h"

#include <iostream>

namespace emulator {

namespace {

using language::sentence;
using WallClock = std::chrono::system_clock;

trace::RecordingHead headFor(const Options& options, WallClock::time_point now) {
    trace::RecordingHead head;
    head.start = trace::wallClockText(now);
    head.device = options.tapDevice;
    head.baudRate = options.settings.baudRate;
    head.pictureOffset = options.settings.pictureOffset;
    head.serialsBlanked = options.blankSerials;
    return head;
}

/// The line to the tool: a new pseudo-terminal, or a device, such as one COM port of a pair.
std::unique_ptr<ByteLine> openFarLine(const Options& options, std::uint32_t baudRate) {
    return options.device.empty() ? openToolLine(options.link) : openDeviceLine(options.device, baudRate);
}

void sayWhoOpensFar(const Options& options, const ByteLine& line) {
    if (options.device.empty())
        sayWhoOpens(options.link.empty() ? line.name() : options.link);
}

} // namespace

int runTap(const Options& options) {
    watchForStop(); // before the link exists, which only an orderly end removes
    const std::string path =
        options.recordFile.empty() ? trace::freshRecordingName(WallClock::now()) : options.recordFile;
    const auto camera = openDeviceLine(options.tapDevice, options.settings.baudRate);
    const auto tool = openFarLine(options, options.settings.baudRate);
    const auto file = std::make_shared<trace::RecordingFile>(path);
    trace::Recorder recorder(headFor(options, WallClock::now()),
                             [file](const std::string& lines) { file->append(lines); });
    recorder.onEvent(&printEvent);
    LineTap tap(*tool, *camera, std::move(recorder));
    std::cout << sentence("passing %1 on to %2 at %3 baud, recording to %4",
                          {tool->name(), camera->name(), std::to_string(options.settings.baudRate), path})
              << std::endl;
    sayWhoOpensFar(options, *tool);
    waitWhile([&tap] { return tap.running(); });
    tap.stop();
    if (tap.failure().empty())
        return done;
    printFailure(tap.failure());
    return lineLost;
}

int runReplay(const Options& options) {
    watchForStop();
    const trace::Recording recording = trace::loadRecording(options.replayFile);
    ReplayCamera camera(recording, options.atOnce);
    camera.onEvent(&printEvent);
    const auto line =
        openFarLine(options, options.baudGiven ? options.settings.baudRate : recording.head.baudRate);
    std::cout << sentence("answering %1 requests of %2 on %3",
                          {std::to_string(camera.requests()), options.replayFile, line->name()})
              << std::endl;
    sayWhoOpensFar(options, *line);
    const ReplayFront front(camera, *line);
    if (waitWhile([&front] { return front.lineOpen(); }))
        return done;
    printFailure(sentence("the line is gone: %1", {line->name()}));
    return lineLost;
}

} // namespace emulator
