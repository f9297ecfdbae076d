#include "tests/support/uploadwindow.h"

#include "tests/support/systemfilechooser.h"
#include "tests/support/windowactions.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMessageBox>

#include <mutex>
#include <thread>

using namespace guitest;
using namespace std::chrono_literals;
using emulator::VirtualCamera;

namespace {

constexpr auto shortPause = 3ms;

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

UploadWindow::UploadWindow() : CameraWindow(emulator::settingsForType(emulator::CameraType::ostra)) {
    guitest::useSystemFileChooser();
    clock.limitPauses(shortPause);
    camera.withCamera([](VirtualCamera& each) { each.settings().updateRestartTime = 0s; });
}

UploadWindow::~UploadWindow() {
    window.reset();
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

void UploadWindow::useSecondProtocol(bool holdsImage) {
    camera.withCamera([holdsImage](VirtualCamera& each) {
        each.settings() = emulator::settingsForType(emulator::CameraType::salesDynamic);
        each.settings().updateRestartTime = 0s;
        each.settings().holdsAnnouncedImage = holdsImage;
    });
    chooseCameraType(*window, "rb_dx_dt");
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

std::vector<std::chrono::milliseconds> UploadWindow::longPauses() const {
    std::vector<std::chrono::milliseconds> found;
    for (const std::chrono::nanoseconds each : clock.pauses()) {
        if (each >= 500ms)
            found.push_back(std::chrono::duration_cast<std::chrono::milliseconds>(each));
    }
    return found;
}

QStringList UploadWindow::allExchanges() const {
    return QStringList(exchangeControls.begin(), exchangeControls.end()) + exchangingEntries(*window);
}

QStringList UploadWindow::enabledExchanges() const {
    QStringList enabled;
    for (const char* const name : exchangeControls) {
        if (isEnabled(*window, name))
            enabled.append(name);
    }
    for (const QString& name : exchangingEntries(*window)) {
        if (find<QAction>(*window, qPrintable(name))->isEnabled())
            enabled.append(name);
    }
    return enabled;
}
