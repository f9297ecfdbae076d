#include "emulator/camera/camerasettings.h"

#include "emulator/camera/pictureartist.h"

#include <random>

namespace emulator {

CameraSettings settingsForType(CameraType type) {
    CameraSettings settings;
    settings.type = type;
    settings.drawPicture = &drawShelfPicture;
    settings.pictureSeed = std::random_device()();
    switch (type) {
    case CameraType::ostra:
    case CameraType::salesStatic:
        break;
    case CameraType::dorvel:
        settings.address = 0xEE;
        break;
    case CameraType::quenta:
        settings.address = 3;
        settings.baudRate = 230400;
        break;
    case CameraType::salesDynamic:
        settings.address = 2;
        // The tool does not empty this camera before a capture and shows the first record.
        settings.newestPictureFirst = true;
        break;
    }
    return settings;
}

} // namespace emulator
