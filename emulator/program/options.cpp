#include "emulator/program/options.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace emulator {

namespace {

constexpr std::array<std::string_view, 5> typeNames = {"ostra", "dorvel", "sales-static", "quenta",
                                                       "sales-dynamic"};

std::int64_t numberIn(const std::string& option, const std::string& text, std::int64_t least,
                      std::int64_t most) {
    const auto number = parseNumber(text);
    if (!number || *number < least || *number > most)
        throw OptionError(option + ": \"" + text + "\" is not a number from " + std::to_string(least) +
                          " to " + std::to_string(most));
    return *number;
}

CameraType typeIn(const std::string& text) {
    const auto* const named = std::find(typeNames.begin(), typeNames.end(), text);
    const auto number = named != typeNames.end() ? named - typeNames.begin()
                                                 : numberIn("--type", text, 0, typeNames.size() - 1);
    return static_cast<CameraType>(number);
}

struct OptionRow {
    std::string_view name;
    std::string_view parameter; ///< empty: none; in brackets: may be left out
    std::string_view help;
    void (*apply)(Options& options, const std::string& text);
};

// clang-format off
const std::array optionRows = {
    OptionRow{"--type", "TYPE", "0 ostra, 1 dorvel, 2 sales-static, 3 quenta, 4 sales-dynamic; a number or a name (0)",
        [](Options&, const std::string&) {}}, // read before all others: it sets what they change
    OptionRow{"--address", "N", "slave address, 0 to 255; 0x for hexadecimal (as the type has it)",
        [](Options& o, const std::string& t) { o.settings.address = static_cast<std::uint8_t>(numberIn("--address", t, 0, 255)); }},
    OptionRow{"--baud", "N", "rate of --device, and the one that --check-baud expects (as the type has it)",
        [](Options& o, const std::string& t) { o.settings.baudRate = static_cast<std::uint32_t>(numberIn("--baud", t, 1, 4000000)); }},
    OptionRow{"--check-baud", "", "hear nothing while the tool uses another rate",
        [](Options& o, const std::string&) { o.settings.mindsBaudRate = true; }},
    OptionRow{"--device", "DEV", "serve on this serial device (/dev/ttyUSB1, COM6) instead of a new pseudo-terminal",
        [](Options& o, const std::string& t) { o.device = t; }},
    OptionRow{"--link", "PATH", "keep a symbolic link to the pseudo-terminal here",
        [](Options& o, const std::string& t) { o.link = t; }},
    OptionRow{"--pace", "N", "bytes per second in each direction (unlimited)",
        [](Options& o, const std::string& t) { o.bytesPerSecond = static_cast<std::uint32_t>(numberIn("--pace", t, 1, 100000000)); }},
    OptionRow{"--offset", "N", "picture-command offset, 0 to 255 (0)",
        [](Options& o, const std::string& t) { o.settings.pictureOffset = static_cast<std::uint8_t>(numberIn("--offset", t, 0, 255)); }},
    OptionRow{"--pictures", "DIR", "hold the JPEG files of this folder, in the order of their names",
        [](Options& o, const std::string& t) { o.pictureFolder = t; }},
    OptionRow{"--holds-image", "", "type 4: the announced application image is there already",
        [](Options& o, const std::string&) { o.settings.holdsAnnouncedImage = true; }},
    OptionRow{"--fault", "FAULT", "kind[=parameter][@request][#occurrence]; may be repeated",
        [](Options& o, const std::string& t) { o.faults.push_back(parseFault(t)); }},
    OptionRow{"--tap", "DEV", "stand between the tool and the real camera on this device, and record",
        [](Options& o, const std::string& t) { o.tapDevice = t; o.action = Options::Action::tap; }},
    OptionRow{"--record", "FILE", "the recording of --tap (a new one in the working directory)",
        [](Options& o, const std::string& t) { o.recordFile = t; }},
    OptionRow{"--blank-serials", "", "leave serial numbers out of the recording of --tap",
        [](Options& o, const std::string&) { o.blankSerials = true; }},
    OptionRow{"--replay", "FILE", "answer from this recording",
        [](Options& o, const std::string& t) { o.replayFile = t; o.action = Options::Action::replay; }},
    OptionRow{"--at-once", "", "--replay without the recorded delays",
        [](Options& o, const std::string&) { o.atOnce = true; }},
    OptionRow{"--lesson", "[N]", "training, lesson N; without a number: print the lessons (in Chinese)",
        [](Options& o, const std::string& t) { o.lesson = t; o.action = t.empty() ? Options::Action::listLessons : Options::Action::lesson; }},
    OptionRow{"--list-faults", "", "print the kinds of faults and the names of the requests",
        [](Options& o, const std::string&) { o.action = Options::Action::listFaults; }},
    OptionRow{"--help", "", "print this",
        [](Options& o, const std::string&) { o.action = Options::Action::help; }},
};
// clang-format on

struct Given {
    const OptionRow* row;
    std::string value;
};

/// The value behind "=", or else the next argument, which `i` then passes over.
std::string valueOf(const OptionRow& row, const std::vector<std::string>& arguments, std::size_t& i) {
    const std::string name(row.name);
    const std::size_t equals = arguments[i].find('=');
    if (row.parameter.empty() && equals != std::string::npos)
        throw OptionError(name + " takes no value");
    if (row.parameter.empty())
        return {};
    if (equals != std::string::npos && equals + 1 < arguments[i].size())
        return arguments[i].substr(equals + 1);
    const bool mayBeLeftOut = row.parameter.front() == '[';
    const bool another = i + 1 < arguments.size() && !(mayBeLeftOut && arguments[i + 1].starts_with("--"));
    if (equals == std::string::npos && another && !arguments[i + 1].empty())
        return arguments[++i];
    if (mayBeLeftOut)
        return {};
    throw OptionError(name + " needs a value: " + std::string(row.parameter));
}

/// "--name value" or "--name=value".
std::vector<Given> splitArguments(const std::vector<std::string>& arguments) {
    std::vector<Given> given;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string name = arguments[i].substr(0, arguments[i].find('='));
        const auto* const row = std::find_if(optionRows.begin(), optionRows.end(),
                                             [&name](const OptionRow& r) { return r.name == name; });
        if (row == optionRows.end())
            throw OptionError("unknown option \"" + arguments[i] + "\"; see --help");
        given.push_back({row, valueOf(*row, arguments, i)});
    }
    return given;
}

/// What makes no sense together.
void checkTogether(const Options& options) {
    if (!options.device.empty() && !options.link.empty())
        throw OptionError("--link belongs to a new pseudo-terminal; leave it out with --device");
    const int modes = (options.tapDevice.empty() ? 0 : 1) + (options.replayFile.empty() ? 0 : 1) +
                      (options.lesson.empty() ? 0 : 1);
    if (modes > 1)
        throw OptionError("--tap, --replay and --lesson exclude each other");
    if (options.tapDevice.empty() && (options.blankSerials || !options.recordFile.empty()))
        throw OptionError("--record and --blank-serials belong to --tap");
    if (options.replayFile.empty() && options.atOnce)
        throw OptionError("--at-once belongs to --replay");
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size() + 1, width), ' ');
    return text;
}

} // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
    const std::vector<Given> given = splitArguments(arguments);
    CameraType type = CameraType::ostra;
    for (const Given& option : given) {
        if (option.row->name == "--type")
            type = typeIn(option.value);
    }
    Options options;
    options.settings = settingsForType(type);
    for (const Given& option : given)
        option.row->apply(options, option.value);
    checkTogether(options);
    return options;
}

std::string helpText() {
    std::string text = "virtual-camera: a shelf camera without hardware, on a serial device.\n\n"
                       "usage: virtual-camera [options]\n\n";
    for (const OptionRow& row : optionRows)
        text += "  " + padded(std::string(row.name) + " " + std::string(row.parameter), 20) +
                std::string(row.help) + "\n";
    text += "\nIt prints a line for everything it receives and answers. Ctrl+C ends it.\n";
    return text;
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
    for (const trace::RequestName& name : trace::requestNames())
        text << "  " << padded(std::string(name.name), 24) << name.words << "\n";
    return text.str();
}

} // namespace emulator
