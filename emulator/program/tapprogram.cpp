// The modes --tap and --replay of virtual-camera.
#include "emulator/line/linetap.h"
#include "emulator/line/replayfront.h"
#include "emulator/line/toolline.h"
#include "emulator/program/console.h"
#include "trace/recordingfile.h"

#include <iostream>

namespace emulator {

namespace {

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
std::unique_ptr<ByteLine> openFarLine(const Options& options) {
    return options.device.empty() ? openToolLine(options.link)
                                  : openDeviceLine(options.device, options.settings.baudRate);
}

} // namespace

int runTap(const Options& options) {
    watchForStop(); // before the link exists, which only an orderly end removes
    const std::string path =
        options.recordFile.empty() ? trace::freshRecordingName(WallClock::now()) : options.recordFile;
    const auto camera = openDeviceLine(options.tapDevice, options.settings.baudRate);
    const auto tool = openFarLine(options);
    const auto file = std::make_shared<trace::RecordingFile>(path);
    trace::Recorder recorder(headFor(options, WallClock::now()),
                             [file](const std::string& lines) { file->append(lines); });
    recorder.onEvent(&printEvent);
    LineTap tap(*tool, *camera, std::move(recorder));
    std::cout << "passing " << tool->name() << " on to " << camera->name() << " at "
              << options.settings.baudRate << " baud, recording to " << path << std::endl;
    waitWhile([&tap] { return tap.running(); });
    tap.stop();
    if (tap.failure().empty())
        return done;
    printFailure(tap.failure());
    return lineLost;
}

int runReplay(const Options& options) {
    watchForStop();
    ReplayCamera camera(trace::loadRecording(options.replayFile), options.atOnce);
    camera.onEvent(&printEvent);
    const auto line = openFarLine(options);
    std::cout << "answering " << camera.requests() << " requests of " << options.replayFile << " on "
              << line->name() << std::endl;
    const ReplayFront front(camera, *line);
    if (waitWhile([&front] { return front.lineOpen(); }))
        return done;
    printFailure("the line is gone: " + line->name());
    return lineLost;
}

} // namespace emulator
