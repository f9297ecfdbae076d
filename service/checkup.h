// A check-up: everything that can be read of a camera, judged.
#pragma once

#include "service/linequality.h"
#include "service/readings.h"

#include <QByteArray>
#include <QDateTime>

#include <atomic>
#include <functional>
#include <vector>

namespace service {

struct CheckLine {
    const Reading* reading = nullptr;
    ReadValue value;
};

struct Checkup {
    QDateTime at;
    QString port;
    std::uint32_t baudRate = 0;
    std::uint8_t address = 0;
    protocol::CameraType type = protocol::CameraType::ostra;
    std::vector<CheckLine> lines;
    LineCounts line;
    QByteArray picture; ///< JPEG; empty: none was asked for or taken
    QString pictureFailure;
    QString interruption; ///< why it ended early; empty: it is complete

    /// The worst of all lines; a line with odd counts is odd.
    [[nodiscard]] Verdict verdict() const;
    /// True if the camera answered nothing.
    [[nodiscard]] bool isSilent() const;
    /// The text of a reading; empty if it failed.
    [[nodiscard]] QString textOf(std::string_view key) const;
};

/// Reads what the type knows, line after line, on the calling thread and tells each. A stopped link, a whole
/// job that asks for the line, and `stopped` end it early. The observer counts the line from the start of the
/// check-up. Sequences of background reads wait for it. Time, port and address are left to the caller.
[[nodiscard]] Checkup runCheckup(CameraSp& camera, protocol::CameraType type, LineQuality& quality,
                                 const std::function<void(const CheckLine& line)>& read,
                                 const std::atomic<bool>* stopped = nullptr);

/// Takes a picture for the report, as one job that keeps the line. CameraSp::endDownload() ends it.
void takeCheckupPicture(CameraSp& camera, Checkup& checkup);

} // namespace service
