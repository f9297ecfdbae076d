// Writes the manual page or the bash completion of shelf-camera to standard output.
#include "cli/completion.h"
#include "cli/english.h"
#include "cli/manualpage.h"
#include "cli/options.h"

#include <QCoreApplication>
#include <QDate>

#include <CLI/CLI.hpp>
#include <iostream>

namespace {

const std::vector<cli::ManualExample> examples{
    {"Find the camera of each port, whatever its rate and address", {"shelf-camera find --first"}},
    {"Check one camera and hand over a report",
     {"shelf-camera -p /dev/ttyUSB0 -t dorvel check --picture -o report.pdf"}},
    {"Check two cameras at once, for a script",
     {"shelf-camera -p /dev/ttyUSB0 -p /dev/ttyUSB1 --json check >checks.jsonl"}},
    {"Examine a camera and make a virtual one that behaves so",
     {"shelf-camera -t dorvel conform -o store7.profile"}},
    {"Write a setting and read it back", {"shelf-camera -y heater 40"}},
    {"Upload an application image and wait for the camera's return", {"shelf-camera -y upload app app.bin"}},
    {"Run a job file; after an interruption the same line continues",
     {"shelf-camera -y batch --keep-going --resume state jobs.txt"}},
    {"Record what passes over the line, for virtual-camera --replay",
     {"shelf-camera --record line.rec versions"}},
};

cli::ManualText manualText(const std::string& date) {
    return {
        date,
        CAMERA_TOOL_VERSION,
        "Reads, checks, sets up and updates cameras on serial ports; several ports work at the same time. "
        "The general options stand before the command. Results go to standard output, progress and errors "
        "to standard error. The texts are Chinese where LANGUAGE, LC_ALL, LC_MESSAGES or LANG asks for it, "
        "else English. Reports are in Chinese.",
        examples,
        {"shelf-camera-tool", "virtual-camera"}};
}

/// Throws for an example that the program does not take.
void checkExamples() {
    for (const cli::ManualExample& example : examples) {
        for (const std::string& line : example.lines) {
            const std::string command = line.substr(0, line.find(" >"));
            std::vector<std::string> words = CLI::detail::split(command, ' ');
            words.erase(words.begin());
            std::ignore = cli::parseOptions(words);
        }
    }
}

cli::ValueCompletions valueCompletions() {
    std::string types;
    for (const protocol::CameraTypeInfo& type : protocol::cameraTypes)
        types += (types.empty() ? "" : " ") + std::string(type.optionName);
    std::string rates;
    for (const std::uint32_t rate : protocol::baudRates)
        rates += (rates.empty() ? "" : " ") + std::to_string(rate);
    return {{"FILE", "file"},     {"STATE", "file"}, {"PORT", "file"},
            {"FOLDER", "folder"}, {"TYPE", types},   {"RATE", rates}};
}

int usage() {
    std::cerr << "usage: shelf-camera-manual man [DATE] | bash" << std::endl;
    return 2;
}

} // namespace

int main(int count, char** arguments) {
    const QCoreApplication application(count, arguments);
    language::Texts english(cli::englishTexts());
    QCoreApplication::installTranslator(&english);
    cli::Options options;
    CLI::App app;
    cli::describeOptions(app, options);
    const QStringList words = QCoreApplication::arguments();
    const QString what = words.value(1);
    if (what == QLatin1String("man")) {
        try {
            checkExamples();
        } catch (const cli::UsageError& error) {
            std::cerr << "an example: " << error.what() << std::endl;
            return 1;
        }
        const QString today = QDate::currentDate().toString(Qt::ISODate);
        std::cout << cli::manualPage(app, manualText(words.value(2, today).toStdString()));
    } else if (what == QLatin1String("bash")) {
        std::cout << cli::bashCompletion(app, valueCompletions());
    } else {
        return usage();
    }
    return std::cout.flush() ? 0 : 1;
}
