// The stations that upload images and a model.
#include "demo/tour.h"

#include <QDir>
#include <QFile>
#include <QMessageBox>

using emulator::VirtualCamera;

namespace {

constexpr std::uint32_t pacedBytesPerSecond = 46080; // 460800 baud
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
    TourGuide::giveFile([&] { TourGuide::press(m_window, "btn_firewarepath"); }, path);
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

void Tour::uploadAppImageV1() {
    m_guide.say(QStringLiteral("an application image by the second protocol"));
    camera([](VirtualCamera& c) { c.settings().holdsAnnouncedImage = true; });
    m_guide.meetBox([&] { TourGuide::press(m_window, "btn_appupdate"); },
                    QStringLiteral("升级已完成，结果:true"), QMessageBox::Ok, QString(), returnTimeoutMs);
    const emulator::AppV1Record record = camera([](VirtualCamera& c) { return c.record().appV1; });
    TourGuide::expect(record.announcements == 5 && record.closingPackets == 11 && record.dataPackets == 0,
                      QStringLiteral("five announcements and eleven closing packets"));
}
