// The programs with windows.
#include "demo/demooptions.h"
#include "manual/programs.h"
#include "practice/practiceoptions.h"

#include <CLI/CLI.hpp>

namespace manual {

namespace {

/// The same options, for the page and the completion.
void addOptions(CLI::App& app, const QList<QCommandLineOption>& options) {
    app.set_help_flag();
    for (const QCommandLineOption& option : options) {
        std::string names;
        for (const QString& name : option.names())
            names +=
                (names.empty() ? "" : ",") + std::string(name.size() == 1 ? "-" : "--") + name.toStdString();
        const std::string text = option.description().toStdString();
        if (option.valueName().isEmpty())
            app.add_flag(names, text);
        else
            app.add_option(names, text)->type_name(option.valueName().toStdString());
    }
}

/// Throws if the program's options refuse the words.
template <typename Options>
void checkWords(const std::vector<std::string>& words) {
    QStringList arguments{QString()};
    for (const std::string& word : words)
        arguments.append(QString::fromStdString(word));
    if (const QString complaint = Options().complaintOf(arguments); !complaint.isEmpty())
        throw std::invalid_argument(complaint.toStdString());
}

} // namespace

Program demo() {
    const DemoOptions options;
    const auto app = std::make_shared<CLI::App>("the shelf camera tool with virtual cameras attached",
                                                "shelf-camera-demo");
    addOptions(*app, options.program.all());
    Program program{app,
                    {},
                    {{"FOLDER", "folder"}, {"FILE", "file"}, {"PORT", "file"}, {"MODEL", lineNames()}},
                    checkWords<DemoOptions>};
    program.text.description =
        "Shows the window of shelf-camera-tool with virtual cameras in its list of ports, to try and learn "
        "it "
        "without hardware. Downloaded pictures are written into the working directory.";
    program.text.examples = {
        {"Try the tool on a long cable", {"shelf-camera-demo --line long-cable"}},
        {"Let the window show itself, and keep the pictures", {"shelf-camera-demo --tour pictures"}},
    };
    program.text.seeAlso = {"shelf-camera-tool", "virtual-camera"};
    return program;
}

Program practice() {
    const PracticeOptions options;
    const auto app = std::make_shared<CLI::App>("lessons with the shelf camera tool and a virtual camera",
                                                "shelf-camera-practice");
    addOptions(*app, options.program.all());
    Program program{app, {}, {{"N", lessonNumbers()}}, checkWords<PracticeOptions>};
    program.text.description =
        "Lists lessons, in Chinese. A lesson opens the window of shelf-camera-tool with a virtual camera in "
        "its "
        "list of ports, which needs no serial port, and shows its steps beside it. Downloaded pictures are "
        "written into the working directory.";
    program.text.examples = {{"Begin with the first lesson", {"shelf-camera-practice --lesson 1"}}};
    program.text.seeAlso = {"shelf-camera-tool", "virtual-camera"};
    return program;
}

Program tool() {
    const auto app =
        std::make_shared<CLI::App>("test and service shelf cameras over a serial line", "shelf-camera-tool");
    app->set_help_flag();
    app->footer("Files: /dev/ttyUSB* adapters, /dev/ttyACM* adapters, /dev/ttyS* ports of the machine");
    Program program{app, {}, {}, {}};
    program.text.description =
        "A window, in Chinese, to look at the state of one camera, to take and download pictures, to change "
        "its "
        "settings and to update its software. It takes no options and keeps no settings between runs. The "
        "user "
        "at the screen may open USB adapters; others have to be members of the group dialout. Downloaded "
        "pictures are written into the working directory. When it is started from the desktop's menu, that "
        "is "
        "the folder 摄像头图片 in the user's folder of pictures.";
    program.text.seeAlso = {"shelf-camera", "virtual-camera", "shelf-camera-practice", "shelf-camera-demo"};
    return program;
}

} // namespace manual
