// The stations that upload images and a model.
#include "demo/tour.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QToolButton>
#include <QToolTip>

using emulator::VirtualCamera;

namespace {

constexpr int returnTimeoutMs = 60000;

/// Writes a file of this size into the folder and gives its path.
QString makeFile(const QString& folder, const QString& name, int size) {
    QByteArray content(size, '\0');
    for (int i = 0; i < size; ++i)
        content[i] = static_cast<char>((i * 31 + i / 256) & 0xFF);
    QString path = QDir(folder).filePath(name);
    QFile file(path);
    TourGuide::expect(file.open(QIODevice::WriteOnly) && file.write(content) == size,
                      QStringLiteral("cannot write ") + path);
    return path;
}

emulator::UploadRecord lastUpload(VirtualCamera& camera) {
    return camera.record().uploads.back();
}

} // namespace

void Tour::uploadAppImage() {
    m_guide.say(QStringLiteral("an application image, resumed"));
    constexpr int size = 150000;
    constexpr int held = 40000;
    const QString path = makeFile(m_guide.folder(), QStringLiteral("app.bin"), size);
    QFile file(path);
    TourGuide::expect(file.open(QIODevice::ReadOnly), path);
    const QByteArray prefix = file.read(held);
    camera([&](VirtualCamera& c) {
        c.settings().updateRestartTime = std::chrono::seconds(1);
        c.state().heldUpload.assign(prefix.begin(), prefix.end());
    });
    front().setPace(pacedBytesPerSecond);

    TourGuide::giveFile([&] { TourGuide::press(m_window, "btn_apppath"); }, path);
    TourGuide::expectText(m_window, "label_apppath", path);
    m_guide.meetBox(
        [&] {
            TourGuide::press(m_window, "btn_appupdate");
            TourGuide::pause(3500);
            m_guide.screenshot(m_window, QStringLiteral("upload-sending"));
        },
        QStringLiteral("升级已完成，结果:true"), QMessageBox::Ok, QStringLiteral("upload-result"),
        returnTimeoutMs);
    front().setPace(0);
    const emulator::UploadRecord upload = camera(&lastUpload);
    TourGuide::expect(upload.offset == held && upload.digestRight && upload.earlyBytes == 0,
                      QStringLiteral("the application image as the camera got it"));
}

void Tour::uploadSystemImage() {
    m_guide.say(QStringLiteral("a system image"));
    const QString path = makeFile(m_guide.folder(), QStringLiteral("system.img"), 70000);
    m_guide.dropFile(m_window, path, QStringLiteral("file-drop"));
    TourGuide::expectText(m_window, "label_firewarepath", path);
    auto& shownPath = TourGuide::find<QLabel>(m_window, "label_firewarepath");
    TourGuide::waitUntil([&] { return shownPath.toolTip().contains(QStringLiteral("MD5：")); },
                         "the file's digest is known");
    TourGuide::hover(shownPath);
    m_guide.screenshot(m_window, QStringLiteral("file-facts"));
    QToolTip::hideText();
    m_guide.meetBox(
        [&] {
            TourGuide::press(m_window, "btn_firewareupdate");
            TourGuide::pause(4500);
            m_guide.screenshot(m_window, QStringLiteral("upload-awaiting-return"));
        },
        QStringLiteral("升级已完成，结果:true"), QMessageBox::Ok, QString(), returnTimeoutMs);
    TourGuide::expect(camera(&lastUpload).digestRight,
                      QStringLiteral("the system image as the camera got it"));
}

void Tour::uploadModel() {
    m_guide.say(QStringLiteral("a model"));
    const QString path = makeFile(m_guide.folder(), QStringLiteral("model.bin"), 30000);
    TourGuide::giveFile([&] { TourGuide::press(m_window, "btn_modelpath"); }, path);
    TourGuide::enter(m_window, "et_modelname", QStringLiteral("model_v1"));
    m_guide.meetBox([&] { TourGuide::press(m_window, "btn_modelupdate"); },
                    QStringLiteral("升级已完成，结果:true"), QMessageBox::Ok,
                    QStringLiteral("upload-model-result"), returnTimeoutMs);
    const emulator::UploadRecord upload = camera(&lastUpload);
    TourGuide::expect(upload.digestRight && upload.name == "model_v1",
                      QStringLiteral("the model as the camera got it"));
}

void Tour::stopUpload() {
    m_guide.say(QStringLiteral("an upload that is stopped"));
    camera([](VirtualCamera& c) { c.state().heldUpload.clear(); });
    front().setPace(pacedBytesPerSecond);
    TourGuide::press(m_window, "btn_appupdate");
    const auto& progress = TourGuide::find<QLabel>(m_window, "label_transfer");
    TourGuide::waitUntil([&] { return progress.text().startsWith(QStringLiteral("已发送")); },
                         "the upload is under way");
    m_guide.meetBox([&] { TourGuide::press(m_window, "btn_stop_transfer"); },
                    QStringLiteral("现在关闭会中断升级，摄像头可能要重新升级后才能使用。确定要关闭吗？"),
                    QMessageBox::Yes, QStringLiteral("upload-stop-question"));
    front().setPace(0);
    expectClosed();
    constexpr int drainMs = 300; // what was sent reaches this camera, not the next one on the same line
    TourGuide::pause(drainMs);
    m_guide.screenshot(m_window, QStringLiteral("upload-stopped"));
}

void Tour::uploadAppImageV1() {
    m_guide.say(QStringLiteral("an application image by the second protocol"));
    camera([](VirtualCamera& c) { c.settings().holdsAnnouncedImage = true; });
    m_guide.meetBox([&] { TourGuide::press(m_window, "btn_appupdate"); },
                    QStringLiteral("升级已完成，结果:true"), QMessageBox::Ok, QString(), returnTimeoutMs);
    const emulator::AppV1Record record = camera([](VirtualCamera& c) { return c.record().appV1; });
    TourGuide::expect(record.announcements == 5 && record.closingPackets == 11 && record.dataPackets == 0,
                      QStringLiteral("five announcements and eleven closing packets"));
}
