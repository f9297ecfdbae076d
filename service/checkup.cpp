#include "service/checkup.h"

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

Checkup runCheckup(CameraSp& camera, protocol::CameraType type, LineQuality& quality,
                   const std::function<void(const CheckLine& line)>& read) {
    Checkup checkup;
    checkup.at = QDateTime::currentDateTime();
    checkup.baudRate = camera.baudRate();
    checkup.type = type;
    for (const Reading& reading : readings()) {
        if (camera.stopRequested())
            break;
        if (!reading.isKnownTo(type))
            continue;
        checkup.lines.push_back({&reading, reading.read(camera, type)});
        read(checkup.lines.back());
    }
    checkup.line = quality.finish();
    return checkup;
}

} // namespace service
