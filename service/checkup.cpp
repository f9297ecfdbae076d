#include "service/checkup.h"

#include "service/picturetaking.h"
#include "service/reportwords.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>

namespace service {

Verdict Checkup::verdict() const {
    Verdict worst = line.isOdd() || !pictureFailure.isEmpty() ? Verdict::odd : Verdict::good;
    for (const CheckLine& each : lines)
        worst = std::max(worst, each.value.verdict);
    return worst;
}

QString Checkup::textOf(std::string_view key) const {
    for (const CheckLine& each : lines) {
        if (key == each.reading->key)
            return each.value.text;
    }
    return {};
}

bool Checkup::isSilent() const {
    return std::all_of(lines.begin(), lines.end(),
                       [](const CheckLine& each) { return each.value.end == CommandEnd::noAnswer; });
}

Checkup runCheckup(CameraSp& camera, protocol::CameraType type, LineQuality& quality,
                   const std::function<void(const CheckLine& line)>& read, const std::atomic<bool>* stopped) {
    Checkup checkup;
    checkup.baudRate = camera.baudRate();
    checkup.type = type;
    const LineTurn::Hold order = camera.takeReadings();
    for (const Reading& reading : readings()) {
        if (!reading.isKnownTo(type))
            continue;
        if (camera.stopRequested() || (stopped != nullptr && *stopped)) {
            checkup.interruption = reportWords({CommandEnd::stopped});
            break;
        }
        const ReadValue value = reading.read(camera, type);
        if (value.end == CommandEnd::lineBusy || value.end == CommandEnd::stopped) {
            checkup.interruption = value.reason;
            break;
        }
        checkup.lines.push_back({&reading, value});
        read(checkup.lines.back());
    }
    checkup.line = quality.finish();
    return checkup;
}

void takeCheckupPicture(CameraSp& camera, Checkup& checkup) {
    const LineTurn::Hold turn = camera.takeLine(LineUser::download);
    if (!turn) {
        checkup.pictureFailure = reportWords(
            {camera.stopRequested() ? CommandEnd::stopped : CommandEnd::lineBusy, turn.busyWith()});
        return;
    }
    const QTemporaryDir folder;
    const std::string folderBefore = camera.setPictureFolder(folder.path().toStdString());
    const PictureResult taken = takePicture(camera, checkup.type, folder.path());
    camera.setPictureFolder(folderBefore);
    QFile file(taken.file);
    if (taken.succeeded() && file.open(QIODevice::ReadOnly))
        checkup.picture = file.readAll();
    else
        checkup.pictureFailure = reportWords(taken.report);
}

} // namespace service
