// shelf-camera-demo: the tool with virtual cameras attached.
#include "app/adapters.h"
#include "app/application.h"
#include "app/consoleoutput.h"
#include "app/outlinestyle.h"
#include "app/portchoice.h"
#include "app/readablecolors.h"
#include "demo/tour.h"

#include <QComboBox>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QPalette>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

#include <algorithm>
#include <iostream>
#include <memory>
#include <vector>

using emulator::CameraType;

namespace {

/// The system's ports, then those of the cameras that it does not list. Any thread.
std::vector<PortEntry> portsWith(const DemoCameras& cameras) {
    std::vector<PortEntry> ports = presentPorts();
    for (const CameraType type : DemoCameras::types()) {
        const QString name = QString::fromStdString(cameras.portName(type));
        const bool isListed = std::any_of(ports.begin(), ports.end(),
                                          [&name](const PortEntry& port) { return port.name == name; });
        const QString camera = QStringLiteral("virtual camera of type %1").arg(static_cast<unsigned>(type));
        if (!name.isEmpty() && !isListed)
            ports.push_back({name, camera, camera});
    }
    return ports;
}

/// Lists the cameras' ports and chooses the first camera's.
void addPorts(MainWindow& window, const std::shared_ptr<const DemoCameras>& cameras) {
    auto* const ports = window.findChild<PortChoice*>(QStringLiteral("sel_ports"));
    ports->setSource([cameras] { return portsWith(*cameras); });
    ports->refill();
    for (const CameraType type : DemoCameras::types())
        std::cout << "virtual camera of type " << static_cast<unsigned>(type) << " at "
                  << cameras->portName(type) << std::endl;
    ports->choose(QString::fromStdString(cameras->portName(DemoCameras::types().front())));
}

/// Pseudo-terminals, or the two ports of the options.
std::shared_ptr<DemoCameras> makeCameras(const QString& cameraPort, const QString& toolPort) {
    try {
        if (cameraPort.isEmpty())
            return std::make_shared<DemoCameras>();
        return std::make_shared<DemoCameras>(cameraPort.toStdString(), toolPort.toStdString());
    } catch (const std::exception& failure) {
        std::cerr << "shelf-camera-demo: " << failure.what()
                  << "; give two ports that are joined: --camera-port COM6 --tool-port COM5" << std::endl;
        return nullptr;
    }
}

/// The palette of a dark desktop.
void darken() {
    Application::setStyle(new OutlineStyle);
    const QColor ground(0x2b, 0x2b, 0x2b);
    QPalette palette(ground);
    palette.setColor(QPalette::Base, ground.darker(130));
    palette.setColor(QPalette::Highlight, QColor(0x2e, 0x7d, 0xd7));
    Application::setPalette(palette);
    deepenPaleTexts();
}

/// Opens the link and saves the window once it has answered. False when it did not or cannot be saved.
bool takePicture(MainWindow& window, const QString& file) {
    window.findChild<QPushButton*>(QStringLiteral("btn_open"))->click();
    window.findChild<QPushButton*>(QStringLiteral("btn_heartbeat"))->click();
    const bool alive = window.findChild<QRadioButton*>(QStringLiteral("rb_heartbeat"))->isChecked();
    QApplication::processEvents(); // texts that have grown get their place
    return window.grab().save(file) && alive;
}

/// Empty, or why the line cannot be used.
QString setLine(DemoCameras& cameras, const QString& line, const QString& seed) {
    bool isNumber = true;
    const qulonglong number = seed.isEmpty() ? 1 : seed.toULongLong(&isNumber);
    if (!isNumber)
        return QStringLiteral("--line-seed: \"%1\" is not a number").arg(seed);
    try {
        cameras.setLine(emulator::parseLine(line.toStdString()), number);
    } catch (const emulator::LineTextError& error) {
        return QString::fromUtf8(error.what());
    }
    return {};
}

int takeTour(MainWindow& window, DemoCameras& cameras, const QString& folder) {
    try {
        Tour(window, cameras, folder).run();
        std::cout << "tour: everything as it must be" << std::endl;
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "tour: FAILED: " << failure.what() << std::endl;
        window.grab().save(QDir(folder).filePath(QStringLiteral("failure.png")));
        return 1;
    }
}

/// The options; the parser knows nothing more.
struct DemoOptions {
    DemoOptions() {
        parser.setApplicationDescription(QStringLiteral("The camera tool with virtual cameras attached."));
        parser.addOptions({tour, picture, dark, cameraPort, toolPort, line, lineSeed, version, help});
    }

    /// Empty, or why the arguments cannot be used.
    [[nodiscard]] QString complaintOf(const QStringList& arguments) {
        const bool parsed = parser.parse(arguments);
        if (const QStringList names = parser.unknownOptionNames(); !names.isEmpty())
            return QStringLiteral("unknown option \"%1\"; see --help").arg(names.first());
        if (const QStringList words = parser.positionalArguments(); !words.isEmpty())
            return QStringLiteral("unknown argument \"%1\"; see --help").arg(words.first());
        for (const QCommandLineOption& option : {tour, picture, cameraPort, toolPort, line, lineSeed}) {
            if (parser.isSet(option) && parser.value(option).isEmpty())
                return QStringLiteral("--%1 needs a value: %2")
                    .arg(option.names().first(), option.valueName());
        }
        if (!parsed)
            return QStringLiteral("an option lacks its value, or takes none; see --help");
        if (parser.isSet(tour) && parser.isSet(picture))
            return QStringLiteral("--tour and --picture exclude each other");
        if (parser.isSet(lineSeed) && !parser.isSet(line))
            return QStringLiteral("--line-seed belongs to --line");
        if (parser.isSet(tour) && parser.isSet(line))
            return QStringLiteral("--tour and --line exclude each other");
        if (parser.isSet(cameraPort) != parser.isSet(toolPort))
            return QStringLiteral(
                "--camera-port and --tool-port belong together; give two ports that are joined: "
                "--camera-port COM6 --tool-port COM5");
        if (parser.isSet(cameraPort) && parser.value(cameraPort) == parser.value(toolPort))
            return QStringLiteral("--camera-port and --tool-port are two ports that are joined; name two");
        return {};
    }

    const QCommandLineOption tour{
        QStringLiteral("tour"),
        QStringLiteral("Drive the window through all it can do, leave screenshots in "
                       "FOLDER and exit; 0 if everything was as it must be."),
        QStringLiteral("FOLDER")};
    const QCommandLineOption cameraPort{
        QStringLiteral("camera-port"),
        QStringLiteral("Put the cameras on this serial port instead of pseudo-terminals, one at a time."),
        QStringLiteral("PORT")};
    const QCommandLineOption toolPort{
        QStringLiteral("tool-port"),
        QStringLiteral("The port that a null-modem line joins to the cameras'; the window opens it."),
        QStringLiteral("PORT")};
    const QCommandLineOption line{
        QStringLiteral("line"),
        QStringLiteral("The cameras' lines: a preset or traits, as virtual-camera takes them."),
        QStringLiteral("MODEL")};
    const QCommandLineOption lineSeed{
        QStringLiteral("line-seed"), QStringLiteral("Another line of this --line (1)."), QStringLiteral("N")};
    const QCommandLineOption picture{
        QStringLiteral("picture"),
        QStringLiteral("Open the link, save the window as FILE and exit; 0 if the camera answered."),
        QStringLiteral("FILE")};
    const QCommandLineOption dark{QStringLiteral("dark"), QStringLiteral("Show everything in a dark style.")};
    const QCommandLineOption version{QStringLiteral("version"), QStringLiteral("Print the version.")};
    const QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Print this.")};
    QCommandLineParser parser;
};

/// Help and version, without a display. False when neither is asked for.
bool answersOnTerminal(int argumentCount, char* arguments[]) {
    const QCoreApplication application(argumentCount, arguments);
    DemoOptions options;
    options.parser.parse(QCoreApplication::arguments());
    if (options.parser.isSet(options.help))
        std::cout << options.parser.helpText().toStdString() << std::flush;
    else if (options.parser.isSet(options.version))
        std::cout << "shelf-camera-demo " CAMERA_TOOL_VERSION << std::endl;
    else
        return false;
    return true;
}

int badCommandLine(const QString& sentence) {
    std::cerr << "shelf-camera-demo: " << sentence.toStdString() << std::endl;
    return 2;
}

} // namespace

int main(int argumentCount, char* arguments[]) {
    const ConsoleOutput console;
    if (answersOnTerminal(argumentCount, arguments))
        return 0;
    const Application application(argumentCount, arguments);
    DemoOptions options;
    if (const QString complaint = options.complaintOf(Application::arguments()); !complaint.isEmpty())
        return badCommandLine(complaint);
    const QCommandLineParser& parser = options.parser;
    if (parser.isSet(options.dark))
        darken();

    const std::shared_ptr<DemoCameras> cameras =
        makeCameras(parser.value(options.cameraPort), parser.value(options.toolPort));
    if (!cameras)
        return 2;
    if (parser.isSet(options.line)) {
        const QString complaint =
            setLine(*cameras, parser.value(options.line), parser.value(options.lineSeed));
        if (!complaint.isEmpty())
            return badCommandLine(complaint);
    }
    MainWindow window;
    addPorts(window, cameras);
    window.show();
    if (parser.isSet(options.picture)) {
        const QString file = QFileInfo(parser.value(options.picture)).absoluteFilePath();
        QTimer::singleShot(500, &window, [&, file] { Application::exit(takePicture(window, file) ? 0 : 1); });
        return Application::exec();
    }
    if (!parser.isSet(options.tour))
        return Application::exec();

    const QString folder = QDir(parser.value(options.tour)).absolutePath();
    if (!QDir().mkpath(folder)) {
        return badCommandLine(
            QStringLiteral("--tour: cannot make the folder %1; choose another").arg(folder));
    }
    // The dialogs of the desktop cannot be driven from here.
    Application::setAttribute(Qt::AA_DontUseNativeDialogs);
    QTimer::singleShot(0, &window, [&] { Application::exit(takeTour(window, *cameras, folder)); });
    return Application::exec();
}
