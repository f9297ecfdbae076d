#include "service/picturetaking.h"

#include "service/readings.h"

#include <algorithm>

namespace service {

namespace {

using namespace std::chrono_literals;
using protocol::CameraType;
using protocol::PictureCommands;
using protocol::PictureInfo;

constexpr auto storeTime = 700ms; // until the catalogue holds a new picture
constexpr int catalogueTries = 2;
constexpr std::uint8_t jsonPicture = 1; // the only picture that a JSON camera gives

bool isSame(const PictureInfo& a, const PictureInfo& b) {
    return a.id == b.id && a.creationTime == b.creationTime && a.digest == b.digest;
}

/// The record that was not there before; nothing if there is none.
std::optional<PictureInfo> newPicture(const std::vector<PictureInfo>& before,
                                      const std::vector<PictureInfo>& after) {
    for (const PictureInfo& picture : after) {
        const bool known = std::any_of(before.begin(), before.end(),
                                       [&](const PictureInfo& other) { return isSame(picture, other); });
        if (!known)
            return picture;
    }
    return std::nullopt;
}

QString fileOf(const QString& folder, unsigned id) {
    return folder + QLatin1Char('/') + QStringLiteral("%1.jpg").arg(id);
}

PictureResult takeJsonPicture(CameraSp& camera, const QString& folder) {
    const ReportScope scope;
    camera.getQuentaModbusPic(jsonPicture);
    return {scope.report(), {}, fileOf(folder, jsonPicture)};
}

} // namespace

PictureResult downloadPicture(CameraSp& camera, CameraType type, const PictureInfo& info,
                              const QString& folder) {
    const ReportScope scope;
    if (protocol::infoOf(type).pictures == PictureCommands::v1) {
        camera.getTargetPicV1(info.id, info.fileSize);
        return {scope.report(), info, fileOf(folder, info.id)};
    }
    const auto id = static_cast<std::uint8_t>(info.id);
    camera.getOriginTargetPic(id, info.fileSize);
    return {scope.report(), info, fileOf(folder, id)};
}

PictureResult takePicture(CameraSp& camera, CameraType type, const QString& folder) {
    const PictureCommands commands = protocol::infoOf(type).pictures;
    if (commands == PictureCommands::json)
        return takeJsonPicture(camera, folder);
    const ReportScope scope;
    const std::vector<PictureInfo> before = readCatalogue(camera, type);
    if (!scope.report().succeeded())
        return {scope.report(), {}, {}};
    if (commands == PictureCommands::v1)
        camera.captureV1();
    else
        camera.originCapture();
    for (int attempt = 0; attempt < catalogueTries && scope.report().succeeded(); ++attempt) {
        if (!camera.pause(storeTime))
            return {{CommandEnd::stopped}, {}, {}};
        if (const auto taken = newPicture(before, readCatalogue(camera, type)))
            return downloadPicture(camera, type, *taken, folder);
    }
    return {scope.report().succeeded() ? CommandReport{CommandEnd::noPictures} : scope.report(), {}, {}};
}

bool deletePicture(CameraSp& camera, CameraType type, const std::optional<PictureInfo>& info) {
    if (protocol::infoOf(type).pictures == PictureCommands::v1)
        return info ? camera.delPicV1(info->id, info->date, info->gid)
                    : camera.delPicV1(protocol::v1DeleteAll, 0, 0);
    return camera.delOriginPic(info ? static_cast<std::uint8_t>(info->id) : protocol::originDeleteAll);
}

} // namespace service
