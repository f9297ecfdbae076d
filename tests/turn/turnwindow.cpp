#include "tests/turn/turnwindow.h"

#include "link/protocol/commands.h"
#include "tests/support/cameratype.h"
#include "tests/support/systemfilechooser.h"
#include "tests/support/windowactions.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QMessageBox>
#include <QThread>

#include <thread>

using namespace guitest;
using namespace std::chrono_literals;
using emulator::VirtualCamera;

namespace turn {

namespace {

constexpr auto cutSecond = 150ms;
constexpr auto cutTwoSeconds = 300ms;  // behind an announcement: long enough for requests of others to come
constexpr auto cutThreeSeconds = 60ms; // before one of forty heartbeats
constexpr auto uploadSilence = 5s;     // longer than the pause behind an announcement
constexpr auto cutUploadSilence = 2s;
constexpr int poolThreads = 4; // enough for all users on any machine

constexpr std::uint16_t firstNewId = 33;
constexpr int pictureCount = 30;
/// With the other bytes of a transfer answer a multiple of the block size.
constexpr int pictureSize = 3 * 512 - 11;
constexpr int jsonPictureSize = 1200; // two pieces

constexpr std::array<const WindowUpload*, 4> uploads{&appUpload, &appUploadV1, &systemUpload, &modelUpload};

/// A small picture of one colour.
Bytes drawPicture(std::uint16_t id, std::uint32_t variation) {
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(QColor::fromHsv(id % 360, 200, 100 + static_cast<int>(variation % 100)));
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG");
    EXPECT_LE(data.size(), jsonPictureSize);
    data.append(QByteArray(pictureSize - data.size(), '\0'));
    return {data.begin(), data.end()};
}

std::vector<emulator::Picture> drawFirstPictures() {
    std::vector<emulator::Picture> pictures;
    for (std::uint16_t i = 0; i < pictureCount; ++i)
        pictures.push_back(
            emulator::makePicture(held::firstPicture + i, drawPicture(held::firstPicture + i, i)));
    return pictures;
}

const std::vector<emulator::Picture>& firstPictures() {
    static const std::vector<emulator::Picture> pictures = drawFirstPictures();
    return pictures;
}

/// Shortens the long pauses of uploads and return waits.
std::chrono::nanoseconds cutPause(std::chrono::nanoseconds asked) {
    return asked >= 3s ? cutThreeSeconds : asked >= 2s ? cutTwoSeconds : asked >= 1s ? cutSecond : asked;
}

emulator::CameraSettings settingsFor(const TurnWindow::Setup& setup) {
    emulator::CameraSettings settings = emulator::settingsForType(emulator::CameraType::ostra);
    settings.answersEveryGeneration = true;
    settings.answersAllAddresses = true;
    settings.newestPictureFirst = true;
    settings.holdsAnnouncedImage = true;
    settings.updateRestartTime = 0s;
    settings.uploadSilence =
        setup.pauses == TurnWindow::Pauses::cut ? emulator::Time(cutUploadSilence) : uploadSilence;
    settings.answerDelay = setup.answerDelay;
    settings.drawPicture = &drawPicture;
    settings.pictureSeed = 1;
    return settings;
}

const char* typeButton(std::uint32_t type) {
    return type == cameratype::quenta         ? "rb_quenta"
           : type == cameratype::shelfDynamic ? "rb_dx_dt"
                                              : "rb_ost";
}

} // namespace

bool isThorough() {
    return qEnvironmentVariableIsSet("CAMERA_TURN_ALL");
}

int failuresSoFar() {
    return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}

TurnWindow::TurnWindow(const Setup& setup)
    : m_setup(setup), m_bench(settingsFor(setup)), m_boxes(QMessageBox::Yes) {
    QThreadPool::globalInstance()->setMaxThreadCount(poolThreads);
    useSystemFileChooser();
    if (setup.pauses == Pauses::cut)
        m_bench.clock.setPauses(&cutPause);
    m_bench.camera.withCamera([this](VirtualCamera& camera) {
        camera.onEvent([this](const emulator::Event& event) {
            if (event.text.starts_with("upload complete"))
                m_uploadEnds.push_back(event.at);
        });
    });
    renewCamera();
    chooseCameraType(window(), typeButton(setup.cameraType));
    m_bench.open();
}

TurnWindow::~TurnWindow() {
    m_bench.window.reset();
    QThreadPool::globalInstance()->waitForDone();
}

void TurnWindow::fillCamera(VirtualCamera& camera) {
    emulator::CameraState state;
    state.serialNumber = held::serialNumber;
    state.appVersion = held::appVersion;
    state.systemVersion = held::systemVersion;
    state.qvVersion = held::qvVersion;
    state.modelInfo = held::modelInfo;
    state.jsonVersion = held::jsonVersion;
    namespace id = emulator::property;
    state.properties = {{id::compressionRate, {held::compressionRate}},
                        {id::captureAngles, {held::angleA, held::angleB}},
                        {id::captureDirection, {held::on}},
                        {id::readOnly, {held::reserve}},
                        {id::gyroOn, {held::on}},
                        {id::heaterDuty, {held::heaterDuty}}};
    state.orientation = {{{held::pitch}, {held::roll}, {held::yaw}, {held::acceleration}}};
    state.pictures = firstPictures();
    state.nextPictureId = firstNewId;
    state.jsonPicture = drawPicture(1, 0);
    state.jsonPicture->resize(jsonPictureSize);
    camera.state() = state;
    camera.settings().commandDelays.clear();

    camera.faults().clear();
    if (m_setup.answers == Answers::plain)
        return;
    // Whole blocks: 15 bytes in an upload, 512 for captures and deletions, 1024 for a catalogue.
    for (const char* const padding :
         {"payload=20@appUpdateV1", "payload=5@packetV1", "payload=20@modelUpdate", "payload=502@capture",
          "payload=502@captureV1", "payload=502@delete", "payload=502@deleteV1", "payload=1014@catalogueV1"})
        camera.addFault(padding);
}

void TurnWindow::renewCamera() {
    m_bench.camera.withCamera([this](VirtualCamera& camera) {
        fillCamera(camera);
        camera.clearRecord();
        m_uploadEnds.clear();
    });
}

void TurnWindow::putPicturesBack() {
    m_bench.camera.withCamera([](VirtualCamera& camera) { camera.state().pictures = firstPictures(); });
}

Bytes TurnWindow::fileOf(const WindowUpload& upload) {
    constexpr std::size_t size = 3000;
    Bytes content(size);
    for (std::size_t i = 0; i < size; ++i)
        content[i] = static_cast<std::uint8_t>((upload.code + i * 7 + i / 251) & 0xFF);
    return content;
}

void TurnWindow::chooseFile(const WindowUpload& upload) {
    const QString path = QDir::current().absoluteFilePath(QString(upload.name) + ".bin");
    if (text(window(), upload.pathLabel) == path)
        return;
    const Bytes content = fileOf(upload);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<qint64>(content.size()));
    file.close();
    const FileChooser chooser(path);
    click(window(), upload.pathButton);
    ASSERT_EQ(text(window(), upload.pathLabel), path);
}

QStringList TurnWindow::boxTexts(const QString& beginning) const {
    QStringList texts;
    for (const SeenBox& box : m_boxes.seen()) {
        if (box.text.startsWith(beginning))
            texts.append(box.text);
    }
    return texts;
}

void TurnWindow::answerHeartbeatsInTime() {
    static constexpr emulator::Time heardInTime = 150ms;
    m_bench.camera.withCamera([](VirtualCamera& camera) {
        camera.settings().commandDelays[protocol::code(protocol::Command::heartbeat)] =
            std::min(camera.settings().answerDelay, heardInTime);
    });
}

QStringList TurnWindow::heldPictureIds() {
    QStringList ids;
    for (int i = 0; i < pictureCount; ++i)
        ids.append(QString::number(held::firstPicture + i));
    return ids;
}

std::vector<emulator::Picture> TurnWindow::heldPictures(std::span<const std::uint16_t> ids) {
    std::vector<emulator::Picture> pictures;
    for (const emulator::Picture& picture : cameraState().pictures) {
        if (std::find(ids.begin(), ids.end(), picture.info.id) != ids.end())
            pictures.push_back(picture);
    }
    return pictures;
}

bool TurnWindow::isIdle() const {
    const auto tasks = window().findChildren<QThread*>(Qt::FindDirectChildrenOnly);
    return QThreadPool::globalInstance()->activeThreadCount() == 0 &&
           std::none_of(tasks.begin(), tasks.end(), [](const QThread* task) { return task->isRunning(); });
}

LineRules TurnWindow::lineRules() {
    LineRules rules;
    rules.answerDelay = m_setup.answerDelay;
    for (const WindowUpload* const upload : uploads)
        rules.files[upload->code] = fileOf(*upload);
    rules.uploadEnds = m_bench.camera.withCamera([this](VirtualCamera&) { return m_uploadEnds; });
    return rules;
}

} // namespace turn
