// State of a virtual camera. Plain data: tests and demonstrations read and set it.
#pragma once

#include "emulator/camera/camerasettings.h"
#include "link/protocol/commands.h"
#include "link/protocol/picturerecords.h"

#include <array>
#include <vector>

namespace emulator {

/// A stored picture. The catalogue lists `info` unchanged, a read sends `jpeg`.
struct Picture {
    protocol::PictureInfo info;
    Bytes jpeg;
    Time visibleFrom{0}; ///< the catalogue lists it from this time on
};

/// A picture whose size and digest fit its bytes.
[[nodiscard]] Picture makePicture(std::uint16_t id, Bytes jpeg);

/// One of the four quantities of property 16.
struct OrientationItem {
    enum class Answer { value, sentinel, tooShort };

    std::uint32_t value = 0;
    Answer answer = Answer::value;
};

struct DoorEvent {
    Time at{0};
    bool open = false;
    std::uint32_t time = 0; ///< seconds since 1970, as sent
    std::uint8_t sequence = 0;
    bool sequenceRight = true; ///< one more than the previous one, modulo 256
};

/// Ids of the settings properties.
namespace property {
using protocol::code;
using protocol::PropertyId;
inline constexpr std::uint8_t compressionRate = code(PropertyId::compressionRate);
inline constexpr std::uint8_t captureAngles = code(PropertyId::captureAngles);
inline constexpr std::uint8_t captureDirection = code(PropertyId::captureDirection);
inline constexpr std::uint8_t readOnly = code(PropertyId::captureReserve);
inline constexpr std::uint8_t gyroOn = code(PropertyId::gyroSwitch);
inline constexpr std::uint8_t heaterDuty = code(PropertyId::heaterDuty);
inline constexpr std::uint8_t orientation = code(PropertyId::orientation);
} // namespace property

struct CameraState {
    std::string serialNumber = "SHELF000001";
    std::string appVersion = "2.3.1";
    std::string systemVersion = "5.10.8";
    std::string qvVersion = "qv 1.4.0";
    std::string modelInfo = "model_v1 2024-01-31";
    std::string gyroText{protocol::gyro_test::passed};
    /// Value bytes by id; the camera does not know other ids. 12 is read-only.
    std::map<std::uint8_t, Bytes> properties = {
        {property::compressionRate, {80}}, {property::captureAngles, {30, 60}},
        {property::captureDirection, {1}}, {property::readOnly, {0}},
        {property::gyroOn, {1}},           {property::heaterDuty, {30}},
    };
    /// Pitch, roll, yaw, acceleration: every read of property 16 gives the next one; after two seconds
    /// without a read, pitch.
    std::array<OrientationItem, protocol::orientation_value::quantities> orientation = {
        {{45}, {3}, {120}, {981}}};

    std::vector<Picture> pictures;    ///< in catalogue order
    std::uint16_t nextPictureId = 33; ///< above every property id, to distinguish a shifted delete

    /// The picture of type 3. Without a value, every request for the first piece draws a new one.
    std::optional<Bytes> jsonPicture;
    std::string jsonVersion = "1.0.3";
    /// Sent instead of {"result":0,"version":"..."}.
    std::optional<std::string> jsonPropertyText;

    std::vector<DoorEvent> doorLog;

    /// First bytes of the next announced file that the camera already holds; emptied by a complete upload.
    Bytes heldUpload;
    /// Digest of the file of the held bytes; empty: any file.
    Bytes heldUploadDigest;

    /// The camera ignores all requests before this time.
    Time bootingUntil{0};
};

} // namespace emulator
