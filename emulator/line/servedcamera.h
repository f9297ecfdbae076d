// A virtual camera on a line, whatever the line is.
#pragma once

#include "emulator/camera/virtualcamera.h"
#include "emulator/line/linetraits.h"

#include <functional>

namespace emulator {

/// Any thread.
class ServedCamera {
public:
    virtual ~ServedCamera() = default;

    /// Calls the function with the camera, which stands still meanwhile. Not to be nested.
    virtual void useCamera(const std::function<void(VirtualCamera&)>& function) = 0;
    /// The time of the camera's records.
    [[nodiscard]] virtual Time now() const = 0;
    /// The line from now on; the same seed gives the same line.
    virtual void setTraits(const LineTraits& traits, std::uint64_t seed = 1) = 0;
};

} // namespace emulator
