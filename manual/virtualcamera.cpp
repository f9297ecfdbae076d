#include "emulator/camera/fault.h"
#include "emulator/program/options.h"
#include "manual/programs.h"

#include <CLI/CLI.hpp>

namespace manual {

namespace {

struct VirtualCameraOptions {
    emulator::Options options;
    CLI::App app;
};

ValueCompletions virtualCameraValues() {
    std::string faults;
    for (const emulator::FaultKindInfo& kind : emulator::faultKinds())
        addWord(faults, kind.name);
    return {{"FILE", "file"},      {"DEV", "file"},        {"PATH", "file"},  {"DIR", "folder"},
            {"TYPE", typeNames()}, {"MODEL", lineNames()}, {"FAULT", faults}, {"[N]", lessonNumbers()}};
}

} // namespace

Program virtualCamera() {
    const auto described = std::make_shared<VirtualCameraOptions>();
    emulator::describeOptions(described->app, described->options);
    described->app.footer(
        "Exit codes: 0 ended by an interrupt, 1 the line is gone, 2 unusable command line or device or file");
    Program program{{described, &described->app}, {}, virtualCameraValues(), {}};
    program.text.description =
        "Serves one virtual camera on a new pseudo-terminal or on a serial device until it is interrupted, "
        "and prints one line for everything it receives and answers. With --tap it stands between the tool "
        "and a real camera and records what passes; with --replay it answers from such a recording; with "
        "--lesson it gives a technician a problem to find. The texts are Chinese where LANGUAGE, LC_ALL, "
        "LC_MESSAGES or LANG asks for it, else English.";
    program.text.examples = {
        {"Be a camera in the tool's list of ports, which has serial devices only",
         {"sudo virtual-camera --link /dev/ttyUSB9"}},
        {"Leave the second answer to the serial number three bytes short",
         {"virtual-camera --type dorvel --fault truncate=3@getSn#2"}},
        {"Give the first lesson", {"sudo virtual-camera --lesson 1 --link /dev/ttyUSB9"}},
        {"Record what the tool and the camera at an adapter say",
         {"sudo virtual-camera --tap /dev/ttyUSB0 --record line.rec --link /dev/ttyUSB9"}},
        {"Answer as the camera of the recording did",
         {"sudo virtual-camera --replay line.rec --link /dev/ttyUSB9"}},
    };
    program.text.seeAlso = {"shelf-camera", "shelf-camera-tool", "shelf-camera-practice"};
    program.check = [](const std::vector<std::string>& words) {
        std::ignore = emulator::parseOptions(words);
    };
    return program;
}

} // namespace manual
