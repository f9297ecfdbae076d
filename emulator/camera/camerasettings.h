// How a virtual camera behaves: its type, its speed, its switches. All of it may be changed at any time.
#pragma once

#include "link/protocol/bytes.h"
#include "link/protocol/cameratypes.h"
#include "trace/event.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace emulator {

using protocol::Bytes;
using protocol::ByteView;
using trace::Time; ///< every time of a virtual camera

using protocol::CameraType;

/// What the camera does with a capture: the bytes of a new JPEG. Called with the picture id and a number
/// that differs at every call.
using PictureSource = std::function<Bytes(std::uint16_t id, std::uint32_t variation)>;

struct CameraSettings {
    CameraType type = CameraType::ostra;
    std::uint8_t address = 1;
    std::uint32_t baudRate = protocol::baudRates.front();
    /// Hear nothing while the line is known to run at another rate (VirtualCamera::setLineSpeed).
    bool mindsBaudRate = false;
    bool answersAllAddresses = false;
    /// Added modulo 256 to the codes 06 to 09 by this camera.
    std::uint8_t pictureOffset = 0;

    /// Answer commands of other camera types too (first-generation pictures on type 4, and so on).
    bool answersEveryGeneration = false;
    bool answersHeartbeat = true;
    /// Answer the door simulation with a frame, which the tool does not read.
    bool answersDoor = false;
    /// Deleting a picture that is not there fails instead of succeeding.
    bool deleteOfAbsentFails = false;
    /// A V1 read whose id is not held is served with the picture whose id has the same low byte.
    bool v1ReadMatchesLowByte = false;
    /// A new picture goes to the front of the catalogue instead of its end.
    bool newestPictureFirst = false;
    /// Property ids whose writing is refused, beside those that cannot be written at all.
    std::set<std::uint8_t> refusedProperties;

    Time answerDelay = std::chrono::milliseconds(8);
    /// By command code as on the line; overrides answerDelay.
    std::map<std::uint8_t, Time> commandDelays;
    /// From the capture request until the picture is in the catalogue.
    Time captureTime = std::chrono::milliseconds(200);
    Time rebootTime = std::chrono::seconds(3);
    Time factoryResetTime = std::chrono::seconds(10);
    /// Restart after an accepted application or system image.
    Time updateRestartTime = std::chrono::seconds(3);
    /// Raw upload data ends after this silence.
    Time uploadSilence = std::chrono::seconds(5);
    /// An interrupted upload is resumed where it broke off when the same file is announced again.
    bool keepsInterruptedUploads = true;
    /// Type 4: the announced application image is already held completely, whatever it is.
    bool holdsAnnouncedImage = false;

    /// Seconds since 1970 at Time zero: the camera's own clock for picture records.
    std::uint32_t clockStart = 1700000000;
    PictureSource drawPicture; ///< set by settingsForType to the shelf drawer
    /// Where the variations of the pictures begin; settingsForType draws it, so that every camera takes
    /// other pictures. Set it for pictures that can be foretold.
    std::uint32_t pictureSeed = 0;
};

/// The settings a camera of this type comes with: address, rate and switches.
[[nodiscard]] CameraSettings settingsForType(CameraType type);

} // namespace emulator
