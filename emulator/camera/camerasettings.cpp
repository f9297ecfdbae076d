#include "emulator/camera/camerasettings.h"

#include "emulator/camera/pictureartist.h"

#include <cmath>
#include <random>

namespace emulator {

Time DelayRange::at(std::uint32_t n) const {
    constexpr double goldenSection = 0.6180339887498949;
    constexpr double half = 0.5;
    constexpr double others = 0.45; // from half of the answers to nineteen of twenty
    const double turns = half + n * goldenSection;
    const double place = turns - std::floor(turns);
    const auto between = [](Time from, Time to, double part) {
        return from + std::chrono::duration_cast<Time>((to - from) * part);
    };
    return place < half ? between(least, median, place / half)
                        : between(median, most, (place - half) / others);
}

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
