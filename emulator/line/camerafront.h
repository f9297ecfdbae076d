// Serves a virtual camera on a serial line in real time.
#pragma once

#include "emulator/camera/virtualcamera.h"
#include "emulator/line/linefront.h"

namespace emulator {

/// Owns the camera. Use withCamera from any thread. Event handlers run on the front's thread, or on the one
/// inside withCamera, with the mutex held; they must not call the front.
class CameraFront : public LineFront {
public:
    /// Calls the function with the camera and returns its result. Keep it short: the camera stands still
    /// meanwhile. Not to be nested.
    template <typename Function>
    decltype(auto) withCamera(Function&& function) {
        return whileStopped(
            [this, &function]() -> decltype(auto) { return std::forward<Function>(function)(m_camera); });
    }

protected:
    explicit CameraFront(VirtualCamera camera) : m_camera(std::move(camera)) {}
    void start(LineIo::Line line) { LineFront::start(m_camera, line); }

private:
    VirtualCamera m_camera;
};

} // namespace emulator
