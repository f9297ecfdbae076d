// Serves a virtual camera on a serial line in real time.
#pragma once

#include "emulator/camera/virtualcamera.h"
#include "emulator/line/linefront.h"
#include "emulator/line/linemodel.h"
#include "emulator/line/servedcamera.h"

namespace emulator {

/// Owns the camera. Use withCamera from any thread. Event handlers run on the front's thread, or on the one
/// inside withCamera, with the mutex held; they must not call the front.
class CameraFront : public LineFront, public ServedCamera {
public:
    /// Calls the function with the camera and returns its result. Keep it short: the camera stands still
    /// meanwhile. Not to be nested.
    template <typename Function>
    decltype(auto) withCamera(Function&& function) {
        return whileStopped(
            [this, &function]() -> decltype(auto) { return std::forward<Function>(function)(m_camera); });
    }
    void useCamera(const std::function<void(VirtualCamera&)>& function) override { withCamera(function); }
    [[nodiscard]] Time now() const override { return LineFront::now(); }
    void setTraits(const LineTraits& traits, std::uint64_t seed = 1) override {
        whileStopped([&] { m_model.setTraits(traits, seed); });
    }
    /// Since setTraits.
    [[nodiscard]] LineDamageCounts lineDamage(LineDamage::Receiver receiver) {
        return whileStopped([&] { return m_model.countsTo(receiver); });
    }

protected:
    explicit CameraFront(VirtualCamera camera) : m_camera(std::move(camera)) {}
    void start(LineIo::Line line) { LineFront::start(m_model, line); }
    /// Loses what was on the line.
    void reopened() {
        whileStopped([this] {
            m_model.clear();
            m_camera.lineReopened(LineFront::now());
        });
    }

private:
    VirtualCamera m_camera;
    LineModel m_model{m_camera};
};

} // namespace emulator
