// The readable values of a camera: one table for single readings, check-up and report.
#pragma once

#include "link/camerasp.h"
#include "link/protocol/cameratypes.h"

#include <QJsonValue>
#include <QString>

#include <span>

namespace service {

enum class Verdict { good, odd, failed };

/// One value as it was read.
struct ReadValue {
    Verdict verdict = Verdict::failed;
    QJsonValue value; ///< for programs; null when the reading failed
    QString text;     ///< for people; empty when the reading failed
    QString reason;   ///< why it is odd or failed; empty for a good one
    CommandEnd end = CommandEnd::failed;
};

/// One reading. Reads on the calling thread, one exchange or a few.
struct Reading {
    const char* key = nullptr;   ///< JSON key
    const char* title = nullptr; ///< translated in the context "Readings"
    ReadValue (*read)(CameraSp& camera, protocol::CameraType type) = nullptr;
    bool framesOnly = true; ///< cameras that speak JSON do not know it

    [[nodiscard]] bool isKnownTo(protocol::CameraType type) const;
    [[nodiscard]] QString translatedTitle() const;
};

/// In the order of a check-up.
[[nodiscard]] std::span<const Reading> readings();
/// By its key; null for an unknown one.
[[nodiscard]] const Reading* readingOf(std::string_view key);

/// The pictures that the camera holds, by the commands of its type. JSON cameras have no catalogue: empty.
[[nodiscard]] std::vector<protocol::PictureInfo> readCatalogue(CameraSp& camera, protocol::CameraType type);

/// A text of the camera up to its first zero.
[[nodiscard]] QString cameraWords(std::string_view bytes);

} // namespace service
