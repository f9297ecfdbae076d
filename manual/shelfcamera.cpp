#include "cli/options.h"
#include "manual/programs.h"

#include <CLI/CLI.hpp>

namespace manual {

namespace {

struct ShelfCameraOptions {
    cli::Options options;
    CLI::App app;
};

ValueCompletions shelfCameraValues() {
    std::string rates;
    for (const std::uint32_t rate : protocol::baudRates)
        addWord(rates, std::to_string(rate));
    return {{"FILE", "file"},     {"STATE", "file"},     {"PORT", "file"},
            {"FOLDER", "folder"}, {"TYPE", typeNames()}, {"RATE", rates}};
}

} // namespace

Program shelfCamera() {
    const auto described = std::make_shared<ShelfCameraOptions>();
    cli::describeOptions(described->app, described->options);
    Program program{{described, &described->app}, {}, shelfCameraValues(), {}};
    program.text.description =
        "Reads, checks, sets up and updates cameras on serial ports; several ports work at the same time. "
        "The general options stand before the command. Results go to standard output, progress and errors "
        "to standard error. The texts are Chinese where LANGUAGE, LC_ALL, LC_MESSAGES or LANG asks for it, "
        "else English. Reports are in Chinese.";
    program.text.examples = {
        {"Find the camera of each port, whatever its rate and address", {"shelf-camera find --first"}},
        {"Check one camera and hand over a report",
         {"shelf-camera -p /dev/ttyUSB0 -t dorvel check --picture -o report.pdf"}},
        {"Check two cameras at once, for a script",
         {"shelf-camera -p /dev/ttyUSB0 -p /dev/ttyUSB1 --json check >checks.jsonl"}},
        {"Examine a camera and make a virtual one that behaves so",
         {"shelf-camera -t dorvel conform -o store7.profile"}},
        {"Write a setting and read it back", {"shelf-camera -y heater 40"}},
        {"Upload an application image and wait for the camera's return",
         {"shelf-camera -y upload app app.bin"}},
        {"Run a job file; after an interruption the same line continues",
         {"shelf-camera -y batch --keep-going --resume state jobs.txt"}},
        {"Record what passes over the line, for virtual-camera --replay",
         {"shelf-camera --record line.rec versions"}},
    };
    program.text.seeAlso = {"shelf-camera-tool", "virtual-camera"};
    program.check = [](const std::vector<std::string>& words) { std::ignore = cli::parseOptions(words); };
    return program;
}

} // namespace manual
