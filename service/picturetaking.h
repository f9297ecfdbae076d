// Taking and downloading pictures by the commands of the camera's type.
#pragma once

#include "link/camerasp.h"
#include "link/protocol/cameratypes.h"

#include <QString>

#include <optional>

namespace service {

/// A picture in a file.
struct PictureResult {
    CommandReport report;       ///< of the step that failed, else of the download
    protocol::PictureInfo info; ///< JSON cameras tell nothing but the picture
    QString file;               ///< the picture, when the report tells success

    [[nodiscard]] bool succeeded() const { return report.end == CommandEnd::done; }
};

/// Downloads a picture of the catalogue into the client's picture folder, which `folder` names.
[[nodiscard]] PictureResult downloadPicture(CameraSp& camera, protocol::CameraType type,
                                            const protocol::PictureInfo& info, const QString& folder);

/// Takes a picture and downloads it as above. Pictures that the camera holds stay there: the new one is the
/// record that was not in the catalogue before.
[[nodiscard]] PictureResult takePicture(CameraSp& camera, protocol::CameraType type, const QString& folder);

/// Nothing: all pictures.
[[nodiscard]] bool deletePicture(CameraSp& camera, protocol::CameraType type,
                                 const std::optional<protocol::PictureInfo>& info);

} // namespace service
