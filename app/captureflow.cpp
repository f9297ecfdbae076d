#include "app/captureflow.h"

#include "link/protocol/cameratypes.h"
#include "pictures/localpicture.h"
#include "pictures/picturegeneration.h"
#include "service/reportwords.h"

#include <QDebug>
#include <QFile>
#include <QLabel>

using namespace std::chrono_literals;
using protocol::PictureCommands;

namespace {

constexpr std::uint8_t jsonPicture = 1; // the only picture a JSON camera gives

constexpr auto captureDelay = 100ms;
constexpr auto catalogueDelay = 800ms;
constexpr int stateRounds = 10;
constexpr auto stateRound = 500ms;
constexpr auto downloadDelay = 100ms; // after the picture is known

// The V1 deletion before a capture names one picture, not all; cameras answer success if there is none.
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

/// Differences of the two generations. Only the low byte of a V1 id counts here.
struct CaptureFlow::Path {
    const PictureGeneration& generation;
    bool (*deleteBefore)(CameraSp& camera);
    void (*download)(CameraSp& camera, std::uint8_t id, std::uint32_t size);
};

const CaptureFlow::Path CaptureFlow::originPath{originPictures, &::deleteBefore, &::download};
const CaptureFlow::Path CaptureFlow::v1Path{v1Pictures, &::deleteBeforeV1, &::downloadV1};

/// One run of the flow. The user-interface thread finds the picture; the pool job waits for it.
struct CaptureFlow::Capture {
    enum State : int { noPicture = -1, waiting = 0, known = 1 };

    std::atomic<std::uint8_t> id{0};
    std::atomic<std::uint32_t> size{0}; ///< bytes
    std::atomic<int> state{waiting};    ///< set last
    // User-interface thread only:
    std::uint64_t run = 0;
    bool taken = true; ///< false: the camera took no picture, an older one may be there
    std::shared_ptr<const LinkUse> use;

    /// Runs on the pool. False when there is nothing to download.
    bool waitUntilKnown(CameraSp& camera) const;
};

/// How the pool job of a run ended.
struct CaptureFlow::Download {
    bool tried = false; ///< false: there was nothing to download
    CommandReport report;
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
    return true; // goes on with what is known by now
}

CaptureFlow::CaptureFlow(QLabel* picture, std::function<void(bool)> allowExchange)
    : ClientBorrower(picture, nullptr), m_picture(picture), m_allowExchange(std::move(allowExchange)) {}

void CaptureFlow::attachClient(CameraSp* client) {
    ClientBorrower::attachClient(client);
    m_holder = 0;
}

void CaptureFlow::start(std::uint32_t cameraType) {
    m_picture->clear();
    if (client() == nullptr) {
        reportMissingClient();
        return;
    }
    switch (protocol::cameraTypeInfo(cameraType).pictures) {
    case PictureCommands::json:
        return startJson();
    case PictureCommands::v1:
        return startFrames(v1Path);
    case PictureCommands::origin:
        return startFrames(originPath);
    }
}

void CaptureFlow::startFrames(const Path& path) {
    const auto capture = std::make_shared<Capture>();
    capture->use = beginUse(tr("拍照"), true);
    capture->run = holdControls();
    const ReportScope scope;
    if (!path.deleteBefore(*client())) {
        tellEnd(capture,
                {scope.report(), false, tr("旧图片没有删除（%1）").arg(reportWords(scope.report()))});
        releaseControls(capture->run);
        return;
    }
    afterDelay(captureDelay, [this, &path, capture] { takePicture(path, capture); });
    afterDelay(catalogueDelay, [this, &path, capture] { findPicture(path, capture); });
    runOnPool(
        QString(), this,
        [&path, capture](CameraSp* camera) {
            if (!capture->waitUntilKnown(*camera))
                return Download{};
            const std::uint8_t id = capture->id;
            const std::uint32_t size = capture->size;
            qDebug() << "pic start " << id << "  " << size;
            const ReportScope download;
            path.download(*camera, id, size);
            qDebug() << "pic end";
            return Download{true, download.report()};
        },
        [this, capture](const Download& download) {
            if (!download.tried)
                return;
            qDebug() << "in timer";
            endDownload(capture, download.report);
            releaseControls(capture->run);
        });
}

void CaptureFlow::afterDelay(std::chrono::milliseconds delay, std::function<void()> step) {
    QTimer::singleShot(clock().timerInterval(delay), this,
                       [this, generation = linkGeneration(), step = std::move(step)] {
                           if (generation == linkGeneration())
                               step();
                       });
}

void CaptureFlow::takePicture(const Path& path, const SharedCapture& capture) {
    const ReportScope scope;
    if (ask(QString(), path.generation.capture))
        return;
    capture->taken = false;
    tellEnd(capture, {scope.report()});
    // Reads the catalogue after a failed capture too: an older picture may be there.
    capture->use = beginUse(tr("查找以前的图片"), false);
    releaseControls(capture->run);
    qDebug() << "take failed";
}

void CaptureFlow::findPicture(const Path& path, const SharedCapture& capture) {
    const ReportScope first;
    auto records = ask(QString(), path.generation.catalogue);
    CommandReport report = first.report();
    if (records.empty()) {
        const ReportScope second;
        records = ask(QString(), path.generation.catalogue);
        report = second.report();
    }
    if (records.empty()) {
        capture->state = Capture::noPicture;
        tellEnd(capture,
                {report, false,
                 report.succeeded() ? QString() : tr("没有读到图片列表（%1）").arg(reportWords(report))});
        releaseControls(capture->run);
        return;
    }
    const protocol::PictureInfo info = path.generation.parse(records.front());
    const auto id = static_cast<std::uint8_t>(info.id & 0xFFU);
    removeLocalPicture(id);
    capture->id = id;
    capture->size = info.fileSize;
    capture->state = Capture::known;
    qDebug() << " picture infos:" << id << "  size:" << info.fileSize;
}

/// A picture is shown only if this download has written its file.
void CaptureFlow::endDownload(const SharedCapture& capture, const CommandReport& report) {
    UseOutcome outcome{report};
    if (report.end == CommandEnd::done && !showPicture(capture->id))
        outcome.text = tr("图片已下载，但数据错误，无法显示，请再拍一次");
    else if (report.end == CommandEnd::done && !capture->taken)
        outcome.text = tr("拍照没有成功，显示的是以前的图片，请再拍一次");
    else if (!report.succeeded())
        outcome.text = tr("图片没有下载（%1）").arg(reportWords(report));
    tellEnd(capture, outcome);
}

void CaptureFlow::tellEnd(const SharedCapture& capture, const UseOutcome& outcome) const {
    if (const auto use = std::exchange(capture->use, nullptr))
        endUse(*use, outcome);
}

void CaptureFlow::startJson() {
    removeLocalPicture(jsonPicture);
    const auto capture = std::make_shared<Capture>();
    capture->id = jsonPicture;
    capture->use = beginUse(tr("拍照"), false);
    capture->run = holdControls();
    runOnPool(
        QString(), this,
        [](CameraSp* camera) {
            const ReportScope download;
            qDebug() << "quenta pic start";
            camera->getQuentaModbusPic(jsonPicture);
            qDebug() << "quenta pic end";
            return Download{true, download.report()};
        },
        [this, capture](const Download& download) {
            releaseControls(capture->run);
            if (download.report.end == CommandEnd::done)
                qDebug() << "in quenta timer";
            endDownload(capture, download.report);
        });
}

bool CaptureFlow::showPicture(unsigned id) {
    TakenPicture taken;
    taken.id = id;
    taken.time = QDateTime::currentDateTime();
    if (QFile file(localPictureName(id)); file.open(QIODevice::ReadOnly))
        taken.file = file.readAll();
    taken.image = QImage::fromData(taken.file); // never from the pixmap cache
    if (taken.image.isNull())
        return false;
    const QPixmap picture = QPixmap::fromImage(taken.image);
    m_picture->setPixmap(picture.scaledToWidth(m_picture->width()).scaledToHeight(m_picture->height()));
    emit pictureShown(taken);
    return true;
}

std::uint64_t CaptureFlow::holdControls() {
    m_holder = ++m_runs;
    m_allowExchange(false);
    return m_holder;
}

void CaptureFlow::releaseControls(std::uint64_t run) {
    if (m_holder != run)
        return;
    m_holder = 0;
    m_allowExchange(true);
}
