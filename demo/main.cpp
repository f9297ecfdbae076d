// shelf-camera-demo: the tool with virtual cameras attached.
#include "app/application.h"
#include "app/consoleoutput.h"
#include "demo/tour.h"

#include <QComboBox>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QPalette>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

#include <iostream>

using emulator::CameraType;

namespace {

/// Lists the cameras' ports behind the system's and chooses the first camera's.
void addPorts(MainWindow& window, const DemoCameras& cameras) {
    auto* const ports = window.findChild<QComboBox*>(QStringLiteral("sel_ports"));
    for (const CameraType type : DemoCameras::types()) {
        const QString name = QString::fromStdString(cameras.portName(type));
        if (ports->findText(name) < 0)
            ports->addItem(name);
        std::cout << "virtual camera of type " << static_cast<unsigned>(type) << " at "
                  << cameras.portName(type) << std::endl;
    }
    ports->setCurrentText(QString::fromStdString(cameras.portName(DemoCameras::types().front())));
}

/// Pseudo-terminals, or the two ports of the options.
std::unique_ptr<DemoCameras> makeCameras(const QString& cameraPort, const QString& toolPort) {
    try {
        if (cameraPort.isEmpty() && toolPort.isEmpty())
            return std::make_unique<DemoCameras>();
        if (cameraPort.isEmpty() || toolPort.isEmpty())
            throw std::runtime_error("--camera-port and --tool-port belong together");
        return std::make_unique<DemoCameras>(cameraPort.toStdString(), toolPort.toStdString());
    } catch (const std::exception& failure) {
        std::cerr << "shelf-camera-demo: " << failure.what()
                  << "\nGive two ports that are joined: --camera-port COM6 --tool-port COM5" << std::endl;
        return nullptr;
    }
}

/// The palette of a dark desktop.
void darken() {
    Application::setStyle(QStringLiteral("Fusion"));
    const QColor ground(0x2b, 0x2b, 0x2b);
    QPalette palette(ground);
    palette.setColor(QPalette::Base, ground.darker(130));
    for (const QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x80));
    palette.setColor(QPalette::Highlight, QColor(0x2e, 0x7d, 0xd7));
    Application::setPalette(palette);
}

/// Opens the link and saves the window once it has answered. False when it did not or cannot be saved.
bool takePicture(MainWindow& window, const QString& file) {
    window.findChild<QPushButton*>(QStringLiteral("btn_open"))->click();
    window.findChild<QPushButton*>(QStringLiteral("btn_heartbeat"))->click();
    const bool alive = window.findChild<QRadioButton*>(QStringLiteral("rb_heartbeat"))->isChecked();
    QApplication::processEvents(); // texts that have grown get their place
    return window.grab().save(file) && alive;
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
    Application application(argumentCount, arguments);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The camera tool with virtual cameras attached."));
    parser.addHelpOption();
    const QCommandLineOption tour(
        QStringLiteral("tour"),
        QStringLiteral("Drive the window through all it can do, leave screenshots in "
                       "FOLDER and exit; 0 if everything was as it must be."),
        QStringLiteral("FOLDER"));
    const QCommandLineOption cameraPort(
        QStringLiteral("camera-port"),
        QStringLiteral("Put the cameras on this serial port instead of pseudo-terminals, one at a time."),
        QStringLiteral("PORT"));
    const QCommandLineOption toolPort(
        QStringLiteral("tool-port"),
        QStringLiteral("The port that a null-modem line joins to the cameras'; the window opens it."),
        QStringLiteral("PORT"));
    const QCommandLineOption picture(
        QStringLiteral("picture"),
        QStringLiteral("Open the link, save the window as FILE and exit; 0 if the camera answered."),
        QStringLiteral("FILE"));
    const QCommandLineOption dark(QStringLiteral("dark"), QStringLiteral("Show everything in a dark style."));
    parser.addOptions({tour, picture, dark, cameraPort, toolPort});
    parser.process(application);
    if (parser.isSet(dark))
        darken();

    const std::unique_ptr<DemoCameras> cameras =
        makeCameras(parser.value(cameraPort), parser.value(toolPort));
    if (!cameras)
        return 2;
    MainWindow window;
    addPorts(window, *cameras);
    window.show();
    if (parser.isSet(picture)) {
        const QString file = QFileInfo(parser.value(picture)).absoluteFilePath();
        QTimer::singleShot(500, &window, [&, file] { Application::exit(takePicture(window, file) ? 0 : 1); });
        return Application::exec();
    }
    if (!parser.isSet(tour))
        return Application::exec();

    const QString folder = QDir(parser.value(tour)).absolutePath();
    if (!QDir().mkpath(folder)) {
        std::cerr << "tour: cannot make the folder " << folder.toStdString() << std::endl;
        return 2;
    }
    // The dialogs of the desktop cannot be driven from here.
    Application::setAttribute(Qt::AA_DontUseNativeDialogs);
    QTimer::singleShot(0, &window, [&] { Application::exit(takeTour(window, *cameras, folder)); });
    return Application::exec();
}
