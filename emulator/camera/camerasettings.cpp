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
    // The tool does not empty this camera before a capture and shows the first record.
    settings.newestPictureFirst = type == CameraType::salesDynamic;
    return settings;
}

} // namespace emulator
