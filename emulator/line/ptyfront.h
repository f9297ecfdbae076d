// A virtual camera behind a pseudo-terminal. Unix only.
#pragma once

#include "emulator/line/camerafront.h"
#include "emulator/line/pty.h"

#include <string>

namespace emulator {

/// Opens a pseudo-terminal and serves the camera on it. The tool opens portName() as a serial port, any
/// number of times.
///
///     PtyFront front(CameraType::ostra);
///     front.withCamera([](VirtualCamera& camera) { camera.state().serialNumber = "A1"; });
///     CameraSp client(front.portName(), 460800);
class PtyFront final : public CameraFront {
public:
    /// Throw std::runtime_error when the system has no pseudo-terminal left.
    explicit PtyFront(CameraType type = CameraType::ostra) : PtyFront(VirtualCamera(type)) {}
    explicit PtyFront(CameraSettings settings) : PtyFront(VirtualCamera(std::move(settings))) {}
    explicit PtyFront(VirtualCamera camera);
    ~PtyFront() override;

    /// Path of the device; another one after comeBack. Empty while it has vanished.
    [[nodiscard]] std::string portName() const { return m_pty.portName(); }
    /// Keeps a symbolic link to the device at the path, through vanish and comeBack, until destruction.
    /// Replaces an existing link; throws std::runtime_error for any other existing file.
    void linkAt(const std::string& path) { m_pty.linkAt(path); }
    /// Removes the device, as pulling the adapter does; an open port then fails. Not to be called inside
    /// withCamera or an event handler; nor comeBack.
    void vanish();
    /// Makes a new device and its link. Does nothing while there is a device.
    void comeBack();
    /// While it is busy, only a privileged user can open the device.
    void setBusy(bool busy);

protected:
    void closeLine() override;
    [[nodiscard]] std::optional<std::uint32_t> lineSpeed() const override;

private:
    Pty m_pty; // the front's thread only, except the names
};

} // namespace emulator
