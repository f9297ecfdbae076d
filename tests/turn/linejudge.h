// Finds disturbances between users in the camera's record.
#pragma once

#include "emulator/camera/camerarecord.h"

#include <QStringList>

#include <map>
#include <set>

namespace turn {

using emulator::Bytes;

struct LineRules {
    emulator::Time answerDelay{0};
    std::set<std::uint8_t> silentCodes;       ///< requests that the camera does not answer
    std::map<std::uint8_t, Bytes> files;      ///< by the code of the announcement
    std::vector<emulator::Time> uploadEnds{}; ///< when the last byte of each complete upload came
};

/// One line for each request that came while another exchange was under way, and for each damaged frame;
/// empty when one exchange followed the other.
[[nodiscard]] QStringList overlaps(const emulator::CameraRecord& record, const LineRules& rules);

/// One line for each upload with foreign bytes between its announcement and its verdict. Uploads may have
/// failed without a byte where `mayFail`; else the camera has got exactly the file.
[[nodiscard]] QStringList uploadFaults(const emulator::CameraRecord& record, const LineRules& rules,
                                       bool mayFail = false);

} // namespace turn
