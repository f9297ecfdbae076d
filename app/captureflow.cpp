#include "app/captureflow.h"

#include "pictures/localpicture.h"
#include "pictures/picturegeneration.h"

#include <QDebug>
#include <QLabel>

using namespace std::chrono_literals;

namespace {

constexpr std::uint32_t jsonCameraType = 3;
constexpr std::uint32_t v1CameraType = 4;
constexpr std::uint8_t jsonPicture = 1; // the only picture a JSON camera gives

constexpr auto captureDelay = 100ms;
constexpr auto catalogueDelay = 800ms;
constexpr int stateRounds = 10;
constexpr auto stateRound = 500ms;
constexpr auto downloadDelay = 100ms; // after the picture is known

// The V1 deletion ahead of a capture names one picture, not all; cameras answer success when there is none.
constexpr std::uint16_t v1DeletedBefore = 255;

bool deleteBefore(CameraSp& camera) {
    return camera.delOriginPic(protocol::originDeleteAll);
}

bool deleteBeforeV1(CameraSp& camera) {
    return camera.delPicV1(v1DeletedBefore, 0, 0);
}

void download(CameraSp& camera, std::uint8_t id, std::uint32_t size) {
    camera.getOriginTargetPic(id, size);
}

void downloadV1(CameraSp& camera, std::uint8_t id, std::uint32_t size) {
    camera.getTargetPicV1(id, size);
}

} // namespace

/// What the two generations differ in. The id has eight bits in both: of a V1 id only the low byte counts
/// here.
struct CaptureFlow::Path {
    const PictureGeneration& generation;
    bool (*deleteBefore)(CameraSp& camera);
    void (*download)(CameraSp& camera, std::uint8_t id, std::uint32_t size);
};

const CaptureFlow::Path CaptureFlow::originPath{originPictures, &::deleteBefore, &::download};
const CaptureFlow::Path CaptureFlow::v1Path{v1Pictures, &::deleteBeforeV1, &::downloadV1};

/// One run of the flow, shared by the user-interface thread, which finds the picture, and the pool job, which
/// waits for it.
struct CaptureFlow::Capture {
    enum State : int { noPicture = -1, waiting = 0, known = 1 };

    std::atomic<std::uint8_t> id{0};
    std::atomic<std::uint32_t> size{0}; ///< bytes
    std::atomic<int> state{waiting};    ///< set last
    bool fresh = true;                  ///< no old file of this name is left; user-interface thread only

    /// Runs on the pool. False when there is nothing to download.
    bool waitUntilKnown(CameraSp& camera) const;
};

bool CaptureFlow::Capture::waitUntilKnown(CameraSp& camera) const {
    for (int round = 0; round < stateRounds; ++round) {
        switch (state.load()) {
        case noPicture:
            return false;
        case known:
            return camera.pause(downloadDelay);
        default:
            if (!camera.pause(stateRound))
                return false;
        }
    }
    return true; // the camera may be slower than its catalogue; ask for whatever is known by now
}

CaptureFlow::CaptureFlow(QLabel* picture, std::function<void(bool)> allowExchange, QObject* parent)
    : QObject(parent), ClientBorrower(picture, nullptr), m_picture(picture),
      m_allowExchange(std::move(allowExchange)) {}

void CaptureFlow::attachClient(CameraSp* client) {
    ClientBorrower::attachClient(client);
    if (m_busy)
        setBusy(false);
}

void CaptureFlow::start(std::uint32_t cameraType) {
    m_picture->clear();
    if (client() == nullptr)
        return;
    if (cameraType == jsonCameraType)
        startJson();
    else
        startFrames(cameraType == v1CameraType ? v1Path : originPath);
}

void CaptureFlow::startFrames(const Path& path) {
    setBusy(true);
    if (!path.deleteBefore(*client())) {
        setBusy(false);
        return;
    }
    const auto capture = std::make_shared<Capture>();
    afterDelay(captureDelay, [this, &path] { takePicture(path); });
    afterDelay(catalogueDelay, [this, &path, capture] { findPicture(path, capture); });
    runOnPool(
        this,
        [&path, capture](CameraSp* camera) {
            if (!capture->waitUntilKnown(*camera))
                return false;
            const std::uint8_t id = capture->id;
            const std::uint32_t size = capture->size;
            qDebug() << "pic start " << id << "  " << size;
            path.download(*camera, id, size);
            qDebug() << "pic end";
            return true;
        },
        [this, capture](bool downloaded) {
            if (!downloaded)
                return;
            qDebug() << "in timer";
            showPicture(capture->id, capture->fresh);
            setBusy(false);
        });
}

void CaptureFlow::afterDelay(std::chrono::milliseconds delay, std::function<void()> step) {
    QTimer::singleShot(delay, this, [this, generation = linkGeneration(), step = std::move(step)] {
        if (generation == linkGeneration())
            step();
    });
}

void CaptureFlow::takePicture(const Path& path) {
    if (ask(path.generation.capture))
        return;
    setBusy(false); // the catalogue is read all the same: an older picture may be there
    qDebug() << "take failed";
}

void CaptureFlow::findPicture(const Path& path, const SharedCapture& capture) {
    auto records = ask(path.generation.catalogue);
    if (records.empty())
        records = ask(path.generation.catalogue);
    if (records.empty()) {
        capture->state = Capture::noPicture;
        setBusy(false);
        return;
    }
    const protocol::PictureInfo info = path.generation.parse(records.front());
    const auto id = static_cast<std::uint8_t>(info.id & 0xFFU);
    capture->fresh = removeLocalPicture(id);
    capture->id = id;
    capture->size = info.fileSize;
    capture->state = Capture::known;
    qDebug() << " picture infos:" << id << "  size:" << info.fileSize;
}

void CaptureFlow::startJson() {
    const bool fresh = removeLocalPicture(jsonPicture);
    setBusy(true);
    runOnPool(
        this,
        [](CameraSp* camera) {
            qDebug() << "quenta pic start";
            const bool downloaded = camera->getQuentaModbusPic(jsonPicture);
            qDebug() << "quenta pic end";
            return downloaded;
        },
        [this, fresh](bool downloaded) {
            setBusy(false);
            if (!downloaded)
                return;
            qDebug() << "in quenta timer";
            showPicture(jsonPicture, fresh);
        });
}

/// A file that is missing, broken or older than the download leaves the label empty.
void CaptureFlow::showPicture(unsigned id, bool fresh) {
    const QImage image = fresh ? QImage(localPictureName(id)) : QImage(); // never from the pixmap cache
    if (image.isNull())
        return;
    const QPixmap picture = QPixmap::fromImage(image);
    m_picture->setPixmap(picture.scaledToWidth(m_picture->width()).scaledToHeight(m_picture->height()));
}

void CaptureFlow::setBusy(bool busy) {
    m_busy = busy;
    m_allowExchange(!busy);
}
