// turns_test: uses other commands while the orientation is being read. The main window and a virtual camera
// in one process, joined by two serial ports; without ports, by a pseudo-terminal.
//
//     turns_test [--ports CAMERA_PORT TOOL_PORT] [OPTION OR TEST FOR QTEST...]
#include "app/application.h"
#include "app/consoleoutput.h"
#include "app/mainwindow.h"
#include "dialogs/setcameralocation.h"
#include "emulator/line/devicefront.h"
#include "emulator/line/terminalcamera.h"
#include "tests/support/guitest.h"
#include "tests/support/windowactions.h"

#include <QComboBox>
#include <QDir>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>

using namespace guitest;
using namespace std::chrono_literals;
using emulator::VirtualCamera;

namespace {

constexpr auto answerDelay = 60ms;
constexpr int rounds = 3; // of the reads: only some of them meet
constexpr int fileSize = 50000;
constexpr int resultTimeoutMs = 150000; // longer than the return wait

/// Values of the virtual camera.
const QString versions = QStringLiteral("SDK版本:2.3.1\n系统版本:5.10.8\nQV-APP版本:qv 1.4.0");
const QString orientation = QStringLiteral("当前仰俯角:45\n当前横滚角:3\n当前偏航角:120\n当前加速度:981");

void compareTexts(const QString& shown, const QString& expected) {
    QString difference = QStringLiteral("shows \"%1\" instead of \"%2\"").arg(shown, expected);
    difference.replace(QLatin1Char('\n'), QLatin1String(" | "));
    QVERIFY2(shown == expected, difference.toUtf8().constData());
}

/// Each quantity is the camera's or failed: the reading gives way to a whole job.
void compareOrientation(const QString& shown) {
    const QStringList lines = shown.split(QLatin1Char('\n'));
    const QStringList values = orientation.split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), values.size());
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString prefix = values[i].left(values[i].indexOf(QLatin1Char(':')) + 1);
        if (lines[i] != prefix + QStringLiteral("不支持,获取失败"))
            compareTexts(lines[i], values[i]);
    }
}

/// An exception fails the test instead of ending the program.
template <typename Body>
void checked(Body body) {
    try {
        body();
    } catch (const std::exception& error) {
        QFAIL(error.what());
    }
}

struct Ports {
    std::string camera; ///< empty: a pseudo-terminal
    std::string tool;
};

} // namespace

class TurnsTest final : public QObject {
    Q_OBJECT

public:
    explicit TurnsTest(Ports ports) : m_ports(std::move(ports)) {}

private slots:
    void init();
    void cleanup();

    void showsVersions();
    void showsVersionsWhileOrientationIsRead_data() { everyRound(); }
    void showsVersionsWhileOrientationIsRead();
    void showsOrientationWhileVersionsAreRead_data() { everyRound(); }
    void showsOrientationWhileVersionsAreRead();
    void uploadsAppImage();
    void uploadsAppImageWhileOrientationIsRead();
    void uploadsSystemImage();
    void uploadsSystemImageWhileOrientationIsRead();

private:
    struct Upload {
        const char* pathButton;
        const char* pathLabel;
        const char* updateButton;
    };
    static constexpr Upload appImage{"btn_apppath", "label_apppath", "btn_appupdate"};
    static constexpr Upload systemImage{"btn_firewarepath", "label_firewarepath", "btn_firewareupdate"};

    static void everyRound();
    void openLink();
    void openOrientation() { trigger(*m_window, "actionInstallLocation"); }
    QString readVersions();
    /// Waits until the open window shows all four quantities, read or failed.
    QString readOrientation();
    /// The content of the file.
    QByteArray chooseFile(const Upload& upload);
    /// Compares what the camera received with the file.
    void upload(const Upload& upload, bool whileOrientationIsRead);

    Ports m_ports;
    QTemporaryDir m_folder;
    std::unique_ptr<emulator::CameraFront> m_camera;
    std::unique_ptr<MainWindow> m_window;
};

// --- a window and a camera for each test -------------------------------------------------------------------

void TurnsTest::init() {
    emulator::CameraSettings settings = emulator::settingsForType(emulator::CameraType::ostra);
    settings.answerDelay = answerDelay;
    settings.updateRestartTime = 0s;
    std::string toolPort = m_ports.tool;
    if (m_ports.camera.empty()) {
        emulator::TerminalCamera terminal = emulator::serveOnNewTerminal(VirtualCamera(settings));
        m_camera = std::move(terminal.front);
        toolPort = terminal.portName;
    } else {
        m_camera = std::make_unique<emulator::DeviceFront>(VirtualCamera(settings), m_ports.camera);
    }
    m_window = std::make_unique<MainWindow>();
    m_window->show();
    choosePort(*m_window, QString::fromStdString(toolPort));
    checked([this] { openLink(); });
}

void TurnsTest::openLink() {
    click(*m_window, "btn_open");
    compareTexts(text(*m_window, "btn_open"), QStringLiteral("关闭串口"));
    // Discards bytes that an earlier test left on the line.
    QVERIFY(eventually([this] {
        click(*m_window, "btn_heartbeat");
        return find<QRadioButton>(*m_window, "rb_heartbeat")->isChecked();
    }));
}

void TurnsTest::cleanup() {
    m_window.reset();
    m_camera.reset();
}

void TurnsTest::everyRound() {
    QTest::addColumn<int>("round");
    for (int round = 1; round <= rounds; ++round)
        QTest::addRow("%d", round) << round;
}

// --- reading -----------------------------------------------------------------------------------------------

QString TurnsTest::readVersions() {
    click(*m_window, "btn_appversion");
    eventually([this] { return text(*m_window, "tv_appversion") != QStringLiteral("。。。。"); });
    return text(*m_window, "tv_appversion");
}

QString TurnsTest::readOrientation() {
    const SetCameraLocation& window = *openWindows<SetCameraLocation>().at(0);
    QStringList shown;
    eventually([&] {
        shown.clear();
        for (const char* const label : {"label_1", "label_2", "label_3", "label_4"})
            shown.append(text(window, label));
        return shown.filter(QStringLiteral(":")).size() == shown.size();
    });
    return shown.join(QLatin1Char('\n'));
}

void TurnsTest::showsVersions() {
    checked([this] { compareTexts(readVersions(), versions); });
}

void TurnsTest::showsVersionsWhileOrientationIsRead() {
    checked([this] {
        openOrientation();
        compareTexts(readVersions(), versions);
    });
}

void TurnsTest::showsOrientationWhileVersionsAreRead() {
    checked([this] {
        openOrientation();
        readVersions();
        compareOrientation(readOrientation());
    });
}

// --- uploads -----------------------------------------------------------------------------------------------

QByteArray TurnsTest::chooseFile(const Upload& upload) {
    QByteArray content(fileSize, '\0');
    for (int i = 0; i < fileSize; ++i)
        content[i] = static_cast<char>((i * 31 + i / 256) & 0xFF);
    const QString path = m_folder.filePath(QStringLiteral("固件.bin"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        throw std::runtime_error("the file to upload cannot be written");
    const FileChooser chooser(path);
    click(*m_window, upload.pathButton);
    if (text(*m_window, upload.pathLabel) != path)
        throw std::runtime_error("the file to upload cannot be chosen");
    return content;
}

void TurnsTest::upload(const Upload& upload, bool whileOrientationIsRead) {
    const QByteArray file = chooseFile(upload);
    if (whileOrientationIsRead)
        openOrientation();
    BoxAnswerer boxes;
    click(*m_window, upload.updateButton);
    const bool ended = boxes.waitFor(1, resultTimeoutMs);
    const auto uploads = m_camera->withCamera([](VirtualCamera& camera) { return camera.record().uploads; });
    const QString result = ended ? boxes.seen().at(0).text : QStringLiteral("no result box");
    for (const emulator::UploadRecord& each : uploads)
        qInfo("from byte %u: %zu bytes received, %u of them early, digest %s; %s", each.offset,
              each.received.size(), each.earlyBytes, each.digestRight ? "right" : "wrong",
              result.toUtf8().constData());
    QCOMPARE(uploads.size(), std::size_t{1});
    const emulator::Bytes& received = uploads.front().received;
    QVERIFY2(QByteArray(reinterpret_cast<const char*>(received.data()),
                        static_cast<qsizetype>(received.size())) == file,
             "the camera received another file");
    compareTexts(result, QStringLiteral("升级已完成，结果:true"));
    if (whileOrientationIsRead)
        compareOrientation(readOrientation());
}

void TurnsTest::uploadsAppImage() {
    checked([this] { upload(appImage, false); });
}

void TurnsTest::uploadsAppImageWhileOrientationIsRead() {
    checked([this] { upload(appImage, true); });
}

void TurnsTest::uploadsSystemImage() {
    checked([this] { upload(systemImage, false); });
}

void TurnsTest::uploadsSystemImageWhileOrientationIsRead() {
    checked([this] { upload(systemImage, true); });
}

int main(int argc, char** argv) {
    const ConsoleOutput console;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    Application application(argc, argv);
    Application::setAttribute(Qt::AA_DontUseNativeDialogs);
    QStringList arguments = Application::arguments();
    Ports ports;
    if (arguments.size() >= 4 && arguments.at(1) == QLatin1String("--ports")) {
        ports = {arguments.at(2).toStdString(), arguments.at(3).toStdString()};
        arguments.erase(arguments.begin() + 1, arguments.begin() + 4);
    }
    TurnsTest test(std::move(ports));
    return QTest::qExec(&test, arguments);
}

#include "turns_test.moc"
