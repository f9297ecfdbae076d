// shelf-camera-demo: the tool with virtual cameras attached.
#include "app/adapters.h"
#include "app/application.h"
#include "app/consoleoutput.h"
#include "app/outlinestyle.h"
#include "app/portchoice.h"
#include "app/readablecolors.h"
#include "demo/demooptions.h"
#include "demo/tour.h"

#include <QComboBox>
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

} // namespace

int main(int argumentCount, char* arguments[]) {
    const ConsoleOutput console;
    DemoOptions options;
    ProgramOptions& program = options.program;
    if (program.answersOnTerminal(argumentCount, arguments))
        return 0;
    const Application application(argumentCount, arguments);
    if (const QString complaint = options.complaintOf(Application::arguments()); !complaint.isEmpty())
        return program.refuse(complaint);
    if (program.isSet(options.dark))
        darken();

    const std::shared_ptr<DemoCameras> cameras =
        makeCameras(program.value(options.cameraPort), program.value(options.toolPort));
    if (!cameras)
        return 2;
    if (program.isSet(options.line)) {
        const QString complaint =
            setLine(*cameras, program.value(options.line), program.value(options.lineSeed));
        if (!complaint.isEmpty())
            return program.refuse(complaint);
    }
    MainWindow window;
    addPorts(window, cameras);
    window.show();
    if (program.isSet(options.picture)) {
        const QString file = QFileInfo(program.value(options.picture)).absoluteFilePath();
        QTimer::singleShot(500, &window, [&, file] { Application::exit(takePicture(window, file) ? 0 : 1); });
        return Application::exec();
    }
    if (!program.isSet(options.tour))
        return Application::exec();

    const QString folder = QDir(program.value(options.tour)).absolutePath();
    if (!QDir().mkpath(folder)) {
        return program.refuse(
            QStringLiteral("--tour: cannot make the folder %1; choose another").arg(folder));
    }
    // The dialogs of the desktop cannot be driven from here.
    Application::setAttribute(Qt::AA_DontUseNativeDialogs);
    QTimer::singleShot(0, &window, [&] { Application::exit(takeTour(window, *cameras, folder)); });
    return Application::exec();
}
