#include "emulator/program/options.h"

#include "emulator/lessons/lessons.h"
#include "language/language.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <sstream>

namespace emulator {

namespace {

using Action = Options::Action;
using language::sentence;

constexpr const char* programName = "virtual-camera";

/// "virtual-camera: what it is", in the chosen language.
std::string summary() {
    return sentence("virtual-camera: a shelf camera without hardware, on a serial device");
}

/// Modes; an option is for some of them.
enum Mode : unsigned { serving = 1, tapping = 2, replaying = 4, teaching = 8, listing = 16 };

/// "0 ostra, 1 dorvel, ..."
std::string knownTypes() {
    std::string known;
    for (const protocol::CameraTypeInfo& type : protocol::cameraTypes)
        known += (known.empty() ? "" : ", ") + std::to_string(static_cast<unsigned>(type.type)) + ' ' +
                 std::string(type.optionName);
    return known;
}

/// "good, long-cable, ..."
std::string knownLines() {
    std::string known;
    for (const LinePreset& preset : linePresets())
        known.append(known.empty() ? "" : ", ").append(preset.name);
    return known;
}

CameraType typeIn(const std::string& text) {
    const auto number = parseNumber(text);
    for (const protocol::CameraTypeInfo& type : protocol::cameraTypes) {
        if (text == type.optionName || number == static_cast<std::int64_t>(type.type))
            return type.type;
    }
    throw OptionError(sentence("--type: there is no type \"%1\"; known: %2", {text, knownTypes()}));
}

std::string lessonIn(const std::string& text) {
    if (!text.empty() && findLesson(text) == nullptr)
        throw OptionError(sentence("--lesson: there is no lesson \"%1\"; known: %2", {text, knownLessons()}));
    return text;
}

std::int64_t numberIn(const std::string& option, const std::string& text, std::int64_t least,
                      std::int64_t most) {
    const auto number = parseNumber(text);
    if (!number || *number < least || *number > most)
        throw OptionError(sentence("%1: \"%2\" is not a number from %3 to %4",
                                   {option, text, std::to_string(least), std::to_string(most)}));
    return *number;
}

bool isFlag(const CLI::Option& option) {
    return option.get_expected_max() == 0;
}

OptionError wrongValue(const CLI::Option& option) {
    return OptionError(isFlag(option)
                           ? sentence("%1 takes no value", {option.get_name()})
                           : sentence("%1 needs a value: %2", {option.get_name(), option.get_type_name()}));
}

using SetText = std::function<void(const std::string& text)>;

/// The last value of a repeated option counts.
CLI::Option* addText(CLI::App& app, const std::string& name, const std::string& parameter, const char* help,
                     const SetText& set) {
    const auto setIt = [&app, name, set](const std::string& text) {
        const CLI::Option& option = *app.get_option(name);
        if (text.empty() && option.get_expected_min() > 0)
            throw wrongValue(option);
        set(text);
    };
    return app.add_option_function<std::string>(name, setIt, sentence(help))
        ->type_name(parameter)
        ->take_last();
}

void addText(CLI::App& app, const std::string& name, const std::string& parameter, const char* help,
             std::string& field) {
    addText(app, name, parameter, help, [&field](const std::string& text) { field = text; });
}

template <typename Number>
void addNumber(CLI::App& app, const std::string& name, const char* help, Number& field, std::int64_t least,
               std::int64_t most) {
    addText(app, name, "N", help, [&field, name, least, most](const std::string& text) {
        field = static_cast<Number>(numberIn(name, text, least, most));
    });
}

void addFlag(CLI::App& app, const std::string& name, const char* help, const std::function<void()>& set) {
    app.add_flag_callback(name, set, sentence(help))->disable_flag_override();
}

void setProfile(Options& o, const std::string& path) {
    o.profile = loadCameraProfile(path);
    o.settings = o.profile->settings;
    o.line = o.profile->line;
}

/// Options of the camera and its line. --profile and --type come first: the others change their settings.
void addCamera(CLI::App& app, Options& o) {
    addText(app, "--profile", "FILE", "a camera as this profile describes it",
            [&o](const std::string& text) { setProfile(o, text); });
    addText(app, "--type", "TYPE", "%1; a number or a name (0)", [&o](const std::string& text) {
        o.settings = settingsForType(typeIn(text));
    })->description(sentence("%1; a number or a name (0)", {knownTypes()}));
    addNumber(app, "--address", "slave address, 0 to 255; 0x for hexadecimal (as the type has it)",
              o.settings.address, 0, 255);
    addNumber(app, "--baud", "rate of --device, and the one that --check-baud expects (as the type has it)",
              o.settings.baudRate, 1, 4000000);
    addFlag(app, "--check-baud", "hear nothing while the tool uses another rate",
            [&o] { o.settings.mindsBaudRate = true; });
    addText(app, "--device", "DEV",
            "serve on this serial device (/dev/ttyUSB1, COM6) instead of a new pseudo-terminal", o.device);
    addText(app, "--link", "PATH", "keep a symbolic link to the pseudo-terminal here", o.link);
    addNumber(app, "--pace", "bytes per second in each direction (unlimited)", o.bytesPerSecond, 1,
              100000000);
    addText(app, "--line", "MODEL", "a bad line: %1, or traits (bits=1e-5,latency=20)",
            [&o](const std::string& text) { o.line = parseLine(text); })
        ->description(sentence("a bad line: %1, or traits (bits=1e-5,latency=20)", {knownLines()}));
    addNumber(app, "--line-seed", "another line of this --line (1)", o.lineSeed, 0,
              std::numeric_limits<std::uint32_t>::max());
    addNumber(app, "--offset", "picture-command offset, 0 to 255 (0)", o.settings.pictureOffset, 0, 255);
    addText(app, "--pictures", "DIR", "hold the JPEG files of this folder, in the order of their names",
            o.pictureFolder);
    addFlag(app, "--holds-image", "type 4: the announced application image is there already",
            [&o] { o.settings.holdsAnnouncedImage = true; });
    app.add_option_function<std::vector<std::string>>(
           "--fault",
           [&o](const std::vector<std::string>& texts) {
               for (const std::string& text : texts)
                   o.faults.push_back(parseFault(text));
           },
           sentence("kind[=parameter][@request][#occurrence]; may be repeated"))
        ->type_name("FAULT")
        ->allow_extra_args(false);
}

/// Options that replace serving the camera.
void addModes(CLI::App& app, Options& o) {
    const auto mode = [&o](std::string& field, Action action) {
        return [&o, &field, action](const std::string& text) {
            field = text;
            o.action = action;
        };
    };
    addText(app, "--tap", "DEV", "stand between the tool and the real camera on this device, and record",
            mode(o.tapDevice, Action::tap));
    addText(app, "--record", "FILE", "the recording of --tap (a new one in the working directory)",
            o.recordFile);
    addFlag(app, "--blank-serials", "leave serial numbers out of the recording of --tap",
            [&o] { o.blankSerials = true; });
    addText(app, "--replay", "FILE", "answer from this recording", mode(o.replayFile, Action::replay));
    addFlag(app, "--at-once", "--replay without the recorded delays", [&o] { o.atOnce = true; });
    addText(app, "--lesson", "[N]", "training, lesson N; without a number: print the lessons (in Chinese)",
            [&o](const std::string& text) {
                o.lesson = lessonIn(text);
                o.action = text.empty() ? Action::listLessons : Action::lesson;
            })
        ->expected(0, 1);
    addFlag(app, "--list-faults", "print the kinds of faults and the names of the requests",
            [&o] { o.action = Action::listFaults; });
    addFlag(app, "--version", "print the version", [&o] { o.action = Action::version; });
    addFlag(app, "-h,--help", "print this", [&o] { o.action = Action::help; });
}

/// Options take effect and are listed in this order; the fields outlive the app.
void addOptions(CLI::App& app, Options& options) {
    app.set_help_flag(); // --help is one of the modes
    app.allow_windows_style_options(false);
    app.allow_extras();
    addCamera(app, options);
    addModes(app, options);
}

/// "--name=" would take the next argument.
void refuseEmptyValues(const CLI::App& app, const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        if (argument.empty() || argument.find('=') != argument.size() - 1)
            continue;
        const CLI::Option* option = app.get_option_no_throw(argument.substr(0, argument.size() - 1));
        if (option != nullptr && (isFlag(*option) || option->get_expected_min() > 0))
            throw wrongValue(*option);
    }
}

/// The parser's sentence begins with the option's name; a flag's name has no dashes there.
OptionError described(const CLI::App& app, const CLI::ParseError& error) {
    const std::string words = error.what();
    const std::string name = words.substr(0, words.find_first_of(": "));
    for (const std::string& spelled : {name, "--" + name}) {
        if (const CLI::Option* option = app.get_option_no_throw(spelled))
            return wrongValue(*option);
    }
    return OptionError(language::sentence("the command line cannot be read; see --help"));
}

struct ModeOption {
    const char* name;
    Mode mode;
};

constexpr std::array modeOptions = {ModeOption{"--tap", tapping}, ModeOption{"--replay", replaying},
                                    ModeOption{"--lesson", teaching}, ModeOption{"--list-faults", listing}};

struct Use {
    const char* option;
    unsigned modes;
};

/// Where each other option means something.
constexpr std::array uses = {
    Use{"--profile", serving},
    Use{"--type", serving | tapping},
    Use{"--address", serving},
    Use{"--baud", serving | tapping | replaying},
    Use{"--check-baud", serving},
    Use{"--device", serving | tapping | replaying | teaching},
    Use{"--link", serving | tapping | replaying | teaching},
    Use{"--pace", serving},
    Use{"--line", serving},
    Use{"--line-seed", serving},
    Use{"--offset", serving | tapping},
    Use{"--pictures", serving},
    Use{"--holds-image", serving},
    Use{"--fault", serving},
    Use{"--record", tapping},
    Use{"--blank-serials", tapping},
    Use{"--at-once", replaying},
};

/// The option that chooses the mode; null: serving.
const ModeOption* chosenMode(const CLI::App& app) {
    const ModeOption* chosen = nullptr;
    for (const ModeOption& option : modeOptions) {
        if (app.count(option.name) == 0)
            continue;
        if (chosen != nullptr)
            throw OptionError(sentence("%1 and %2 exclude each other", {chosen->name, option.name}));
        chosen = &option;
    }
    return chosen;
}

void checkUses(const CLI::App& app, const Options& options) {
    const ModeOption* const chosen = chosenMode(app);
    const unsigned mode = options.action == Action::listLessons ? listing
                          : chosen == nullptr                   ? serving
                                                                : chosen->mode;
    for (const Use& use : uses) {
        if (app.count(use.option) == 0 || (use.modes & mode) != 0)
            continue;
        if (chosen != nullptr)
            throw OptionError(sentence("%1 means nothing with %2; leave it out", {use.option, chosen->name}));
        const auto owner =
            std::find_if(modeOptions.begin(), modeOptions.end(),
                         [&use](const ModeOption& option) { return option.mode == use.modes; });
        throw OptionError(sentence("%1 belongs to %2", {use.option, owner->name}));
    }
}

/// Combinations that are refused.
void checkTogether(const CLI::App& app, const Options& options) {
    checkUses(app, options);
    if (!options.device.empty() && !options.link.empty())
        throw OptionError(sentence("--link belongs to a new pseudo-terminal; leave it out with --device"));
    if (!options.tapDevice.empty() &&
        (options.tapDevice == options.device || options.tapDevice == options.link))
        throw OptionError(sentence("--tap stands between two lines; name another one for the tool"));
    if (options.settings.holdsAnnouncedImage && options.settings.type != CameraType::salesDynamic)
        throw OptionError(sentence("--holds-image belongs to --type sales-dynamic"));
    if (options.profile && app.count("--type") != 0)
        throw OptionError(sentence("%1 means nothing with %2; leave it out", {"--type", "--profile"}));
    if (app.count("--line-seed") != 0 && app.count("--line") == 0 && !options.profile)
        throw OptionError(sentence("%1 belongs to %2", {"--line-seed", "--line"}));
    if (!options.replayFile.empty() && options.device.empty() && app.count("--baud") != 0)
        throw OptionError(sentence("--baud with --replay belongs to --device"));
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size() + 1, width), ' ');
    return text;
}

} // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
    Options options;
    options.settings = settingsForType(CameraType::ostra);
    CLI::App app;
    addOptions(app, options);
    refuseEmptyValues(app, arguments);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(),
                                           arguments.rend())); // the parser takes them from the back
    } catch (const CLI::ParseError& error) {
        throw described(app, error);
    }
    if (options.action == Action::help || options.action == Action::version)
        return options;
    if (const std::vector<std::string> unknown = app.remaining(); !unknown.empty())
        throw OptionError(sentence("unknown option \"%1\"; see --help", {unknown.front()}));
    checkTogether(app, options);
    options.baudGiven = app.count("--baud") != 0;
    return options;
}

std::string helpText() {
    std::string text = summary() + "\n\n" + sentence("usage: virtual-camera [options]") + "\n\n";
    Options unused;
    CLI::App app;
    addOptions(app, unused);
    for (const CLI::Option* option : std::as_const(app).get_options())
        text += "  " + padded(option->get_name(false, true) + ' ' + option->get_type_name(), 20) +
                option->get_description() + "\n";
    return text + "\n" +
           sentence("It prints a line for everything it receives and answers. Ctrl+C ends it.") + "\n";
}

void describeOptions(CLI::App& app, Options& options) {
    const std::string text = summary();
    app.name(programName);
    app.description(text.substr(text.find_first_not_of(": ", std::char_traits<char>::length(programName))));
    addOptions(app, options);
}

std::string faultListText() {
    std::ostringstream text;
    text << "faults: kind[=parameter][@request][#occurrence], e.g. truncate=3@getSn#2\n"
            "occurrence: #2 the second, #2-4 the second to the fourth, #2+ from the second on; else "
            "always\n\n";
    for (const FaultKindInfo& info : faultKinds()) {
        std::string form(info.name);
        if (!info.example.empty())
            form.append("=").append(info.example);
        text << "  " << padded(form, 24) << info.description << "\n";
    }
    text
        << "\nrequests: any, a code on the line (0x02), or a name; \":id\" after it picks the first payload\n"
           "byte (getProperty:15)\n\n";
    for (const protocol::RequestName& name : protocol::requestNames())
        text << "  " << padded(std::string(name.name), 24) << name.words << "\n";
    text << "\nkeys of a profile, behind its first line \"camera profile 1\":\n\n";
    for (const ProfileKey& key : profileKeys())
        text << "  " << padded(std::string(key.name) + ' ' + std::string(key.example), 34) << key.description
             << "\n";
    return text.str();
}

} // namespace emulator
