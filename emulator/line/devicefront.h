// A virtual camera on a serial device: a null-modem cable or another program's pseudo-terminal.
#pragma once

#include "emulator/line/byteline.h"
#include "emulator/line/camerafront.h"

namespace emulator {

/// Opens the device at the camera's rate and serves the camera on it. After a failure of the device
/// lineOpen() stays false.
class DeviceFront final : public CameraFront {
public:
    /// Throws std::runtime_error with a text for people when the device cannot be opened as a terminal.
    DeviceFront(VirtualCamera camera, const std::string& path);
    ~DeviceFront() override { stop(); }

protected:
    void closeLine() override { m_device.reset(); }
    [[nodiscard]] std::optional<std::uint32_t> lineSpeed() const override { return m_device->rate(); }

private:
    std::unique_ptr<ByteLine> m_device;
};

} // namespace emulator
