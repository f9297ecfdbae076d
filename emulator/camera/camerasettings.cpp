#include "emulator/camera/camerasettings.h"

#include "emulator/camera/pictureartist.h"

#include <random>

namespace emulator {

CameraSettings settingsForType(CameraType type) {
    CameraSettings settings;
    settings.type = type;
    settings.drawPicture = &drawShelfPicture;
    settings.pictureSeed = std::random_device()();
    settings.address = protocol::infoOf(type).usualAddress;
    settings.baudRate = protocol::infoOf(type).baudRate;
    // The tool shows the first record and does not delete the pictures of this camera before a capture.
    settings.newestPictureFirst = type == CameraType::salesDynamic;
    return settings;
}

} // namespace emulator
