#include "tests/support/uploadwindow.h"

#include "dialogs/setcameraprotocol.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMessageBox>

#include <mutex>
#include <thread>

using namespace guitest;
using namespace std::chrono_literals;
using emulator::VirtualCamera;

namespace {

constexpr auto shortPause = 3ms;

const QStringList exchangeControls{
    "btn_heartbeat", "rb_heartbeat",     "btn_appversion",     "btn_takepic",    "btn_apppath",
    "btn_appupdate", "btn_firewarepath", "btn_modelinfo",      "btn_modelpath",  "btn_modelupdate",
    "et_modelname",  "btn_gyro",         "btn_firewareupdate", "label_modelinfo"};
} // namespace

const WindowUpload appUpload{"App",       "btn_apppath", "btn_appupdate", "label_apppath",
                             "appUpdate", 0x1B,          "running",       false};
const WindowUpload appUploadV1{"AppV1",       "btn_apppath", "btn_appupdate", "label_apppath",
                               "appUpdateV1", 0x1D,          "running",       true};
const WindowUpload systemUpload{
    "System", "btn_firewarepath", "btn_firewareupdate", "label_firewarepath", "systemUpdate", 0x0B, "runing",
    false};
const WindowUpload modelUpload{"Model",
                               "btn_modelpath",
                               "btn_modelupdate",
                               "label_modelpath",
                               "modelUpdate",
                               0xCB,
                               "modelUpdateTask running",
                               false};

void PrintTo(const WindowUpload& upload, std::ostream* out) {
    *out << upload.name;
}

/// What the link was asked to sleep, from any thread.
struct UploadWindow::NotedPauses {
    std::mutex mutex;
    std::vector<std::chrono::nanoseconds> asked;
};

UploadWindow::UploadWindow()
    : camera(emulator::CameraType::ostra), window(std::make_unique<MainWindow>()),
      m_pauses(std::make_shared<NotedPauses>()) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    CameraSp::replaceSleep([pauses = m_pauses](std::chrono::nanoseconds asked) {
        {
            const std::lock_guard lock(pauses->mutex);
            pauses->asked.push_back(asked);
        }
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(asked, shortPause));
    });
    camera.withCamera([](VirtualCamera& each) { each.settings().updateRestartTime = 0s; });
    window->show();
}

UploadWindow::~UploadWindow() {
    window.reset();
    CameraSp::replaceSleep({});
}

QString UploadWindow::writeFile(const QString& name, int size) {
    QByteArray content(size, '\0');
    for (int i = 0; i < size; ++i)
        content[i] = static_cast<char>((i * 7 + i / 251) & 0xFF);
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(content), size);
    return QDir::current().absoluteFilePath(name);
}

void UploadWindow::open() {
    const QString port = QString::fromStdString(camera.portName());
    auto* const ports = find<QComboBox>(*window, "sel_ports");
    ports->addItem(port);
    ports->setCurrentText(port);
    click(*window, "btn_open");
    ASSERT_EQ(text(*window, "btn_open"), "关闭串口");
}

void UploadWindow::useSecondProtocol(bool holdsImage) {
    camera.withCamera([holdsImage](VirtualCamera& each) {
        each.settings() = emulator::settingsForType(emulator::CameraType::salesDynamic);
        each.settings().updateRestartTime = 0s;
        each.settings().holdsAnnouncedImage = holdsImage;
    });
    trigger(*window, "actionaddress");
    SetCameraProtocol* const dialog = openWindows<SetCameraProtocol>().at(0);
    click(*dialog, "rb_dx_dt");
    click(*dialog, "btn_confirm");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void UploadWindow::choose(const WindowUpload& upload, const QString& path) {
    const FileChooser chooser(path);
    click(*window, upload.pathButton);
    ASSERT_EQ(chooser.seen().size(), 1U);
}

void UploadWindow::start(const WindowUpload& upload, int size, bool holdsImage) {
    if (upload.secondProtocol)
        useSecondProtocol(holdsImage);
    choose(upload, writeFile("新 固件 v2.bin", size));
    click(*window, upload.updateButton);
}

void UploadWindow::fault(const std::string& description) {
    camera.withCamera([&description](VirtualCamera& each) { each.addFault(description); });
}

QString UploadWindow::outcome(int timeoutMs) {
    BoxAnswerer boxes;
    if (!boxes.waitFor(1, timeoutMs))
        return "no box";
    QTest::qWait(50); // a second one would come now
    EXPECT_EQ(boxes.seen().size(), 1U);
    EXPECT_EQ(boxes.seen()[0].title, "");
    EXPECT_EQ(boxes.seen()[0].buttons, QStringList(QString::number(QMessageBox::Ok, 16)));
    EXPECT_EQ(boxes.seen()[0].icon, static_cast<int>(QMessageBox::Information));
    return boxes.seen()[0].text;
}

void UploadWindow::realPauses() {
    CameraSp::replaceSleep({});
}

std::vector<std::chrono::milliseconds> UploadWindow::longPauses() const {
    const std::lock_guard lock(m_pauses->mutex);
    std::vector<std::chrono::milliseconds> found;
    for (const std::chrono::nanoseconds each : m_pauses->asked) {
        if (each >= 500ms)
            found.push_back(std::chrono::duration_cast<std::chrono::milliseconds>(each));
    }
    return found;
}

emulator::CameraRecord UploadWindow::record() {
    return camera.withCamera([](VirtualCamera& each) { return each.record(); });
}

QStringList UploadWindow::allExchanges() const {
    return exchangeControls + exchangingEntries(*window);
}

QStringList UploadWindow::enabledExchanges() const {
    QStringList enabled;
    for (const QString& name : exchangeControls) {
        if (find<QWidget>(*window, qPrintable(name))->isEnabled())
            enabled.append(name);
    }
    for (const QString& name : exchangingEntries(*window)) {
        if (find<QAction>(*window, qPrintable(name))->isEnabled())
            enabled.append(name);
    }
    return enabled;
}
