// shelf-camera-demo: the tool with virtual cameras attached.
#include "app/application.h"
#include "demo/tour.h"

#include <QComboBox>
#include <QCommandLineParser>
#include <QDir>
#include <QTimer>

#include <iostream>

using emulator::CameraType;

namespace {

/// One camera for each way of speaking: first generation, JSON, V1.
DemoCameras makeCameras() {
    DemoCameras cameras;
    for (const CameraType type : {CameraType::ostra, CameraType::quenta, CameraType::salesDynamic}) {
        emulator::CameraSettings settings = emulator::settingsForType(type);
        cameras[type] = std::make_unique<emulator::PtyFront>(std::move(settings));
    }
    return cameras;
}

void addPorts(MainWindow& window, const DemoCameras& cameras) {
    auto* const ports = window.findChild<QComboBox*>(QStringLiteral("sel_ports"));
    for (const auto& [type, front] : cameras) {
        const QString name = QString::fromStdString(front->portName());
        ports->addItem(name);
        std::cout << "virtual camera of type " << static_cast<unsigned>(type) << " at " << front->portName()
                  << std::endl;
    }
    ports->setCurrentText(QString::fromStdString(cameras.at(CameraType::ostra)->portName()));
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
    Application application(argumentCount, arguments);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The camera tool with virtual cameras attached."));
    parser.addHelpOption();
    const QCommandLineOption tour(
        QStringLiteral("tour"),
        QStringLiteral("Drive the window through all it can do, leave screenshots in "
                       "FOLDER and exit; 0 if everything was as it must be."),
        QStringLiteral("FOLDER"));
    parser.addOption(tour);
    parser.process(application);

    DemoCameras cameras = makeCameras();
    MainWindow window;
    addPorts(window, cameras);
    window.show();
    if (!parser.isSet(tour))
        return Application::exec();

    const QString folder = QDir(parser.value(tour)).absolutePath();
    if (!QDir().mkpath(folder)) {
        std::cerr << "tour: cannot make the folder " << folder.toStdString() << std::endl;
        return 2;
    }
    // The dialogs of the desktop cannot be driven from here.
    Application::setAttribute(Qt::AA_DontUseNativeDialogs);
    QTimer::singleShot(0, &window, [&] { Application::exit(takeTour(window, cameras, folder)); });
    return Application::exec();
}
