// Settings of a virtual camera: type, delays, switches. They may change at any time.
#pragma once

#include "emulator/camera/requestselector.h"
#include "link/protocol/bytes.h"
#include "link/protocol/cameratypes.h"
#include "trace/event.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace emulator {

using protocol::Bytes;
using protocol::ByteView;
using trace::Time; ///< type of all times of a virtual camera

using protocol::CameraType;

/// Makes the JPEG of a capture. Called with the picture id and a number that differs in every call.
using PictureSource = std::function<Bytes(std::uint16_t id, std::uint32_t variation)>;

/// Delays of the answers to some requests: half of them up to the median, one of twenty beyond `most`.
struct DelayRange {
    RequestSelector requests;
    Time least{0};
    Time median{0};
    Time most{0};

    /// The n-th delay, n from 0; the first is the median. Any run of them fills the range evenly.
    [[nodiscard]] Time at(std::uint32_t n) const;
};

struct CameraSettings {
    CameraType type = CameraType::ostra;
    std::uint8_t address = 1;
    std::uint32_t baudRate = protocol::baudRates.front();
    /// Receives only noise while the line runs at another rate (VirtualCamera::setLineSpeed).
    bool mindsBaudRate = false;
    bool answersAllAddresses = false;
    /// The camera adds it, modulo 256, to the codes 06 to 09.
    std::uint8_t pictureOffset = 0;

    /// Answers commands of other camera types too, e.g. first-generation pictures on type 4.
    bool answersEveryGeneration = false;
    bool answersHeartbeat = true;
    /// Answers the door simulation with a frame, which the tool does not read.
    bool answersDoor = false;
    /// Deleting a picture that does not exist fails instead of succeeding.
    bool deleteOfAbsentFails = false;
    /// A V1 read of an unknown id gets the picture whose id has the same low byte.
    bool v1ReadMatchesLowByte = false;
    /// A new picture goes to the front of the catalogue instead of its end.
    bool newestPictureFirst = false;
    /// Properties whose writes the camera refuses, beside the read-only ones.
    std::set<std::uint8_t> refusedProperties;
    /// Refuses reads of properties that it does not know; else it is silent.
    bool answersUnknownIds = true;
    /// Refuses a property read without id; else it is silent.
    bool answersShortRequests = false;
    /// Serves frames with a wrong check code.
    bool takesWrongCheckCodes = false;

    Time answerDelay = std::chrono::milliseconds(8);
    /// By command code on the line; overrides answerDelay.
    std::map<std::uint8_t, Time> commandDelays;
    /// The first one that fits goes before both.
    std::vector<DelayRange> delays;
    /// Requests are lost from the one under way until so long after its answer; 0: none are.
    Time rest{0};
    /// A read of the orientation after a longer pause begins again with pitch.
    Time orientationPause = std::chrono::seconds(2);
    /// From the capture request until the catalogue lists the picture.
    Time captureTime = std::chrono::milliseconds(200);
    Time rebootTime = std::chrono::seconds(3);
    Time factoryResetTime = std::chrono::seconds(10);
    /// Restart after an accepted application or system image.
    Time updateRestartTime = std::chrono::seconds(3);
    /// Sent when a restart is over.
    Bytes bootBytes;
    /// An upload without data for this long is abandoned.
    Time uploadSilence = std::chrono::seconds(5);
    /// A new announcement of the same file resumes an interrupted upload.
    bool keepsInterruptedUploads = true;
    /// Type 4: the camera already holds every announced application image.
    bool holdsAnnouncedImage = false;

    /// Seconds since 1970 at Time zero: the camera's own clock for picture records.
    std::uint32_t clockStart = 1700000000;
    PictureSource drawPicture; ///< set by settingsForType to the shelf drawer
    /// First variation of the pictures. settingsForType sets a random one, so that every camera takes other
    /// pictures; set it for reproducible ones.
    std::uint32_t pictureSeed = 0;
};

/// Default settings of this type: address, rate and switches.
[[nodiscard]] CameraSettings settingsForType(CameraType type);

} // namespace emulator
