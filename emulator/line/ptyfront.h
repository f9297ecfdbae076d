// A virtual camera behind a pseudo-terminal. Unix only.
#pragma once

#include "emulator/line/camerafront.h"
#include "emulator/line/pty.h"

#include <string>

namespace emulator {

/// Makes a pseudo-terminal and serves the camera on it. The tool opens portName() as a serial port; it may
/// close and open it again as often as it likes.
///
///     PtyFront front(CameraType::ostra);
///     front.withCamera([](VirtualCamera& camera) { camera.state().serialNumber = "A1"; });
///     CameraSp client(front.portName(), 460800);
class PtyFront final : public CameraFront {
public:
    /// Throw std::system_error when the system has no pseudo-terminal left.
    explicit PtyFront(CameraType type = CameraType::ostra) : PtyFront(VirtualCamera(type)) {}
    explicit PtyFront(CameraSettings settings) : PtyFront(VirtualCamera(std::move(settings))) {}
    explicit PtyFront(VirtualCamera camera);
    ~PtyFront() override;

    /// Path of the device; another one after comeBack. Empty while it has vanished.
    [[nodiscard]] std::string portName() const { return m_pty.portName(); }
    /// Keeps a symbolic link to the device at the path, through vanish and comeBack, until destruction.
    /// Replaces a link that is there; throws std::runtime_error when something else is.
    void linkAt(const std::string& path) { m_pty.linkAt(path); }
    /// The device disappears, as when the adapter is pulled. An open port fails from then on.
    /// Not from inside withCamera or an event handler; nor comeBack.
    void vanish();
    /// A new device, with the link back in place. Does nothing while there is one.
    void comeBack();
    /// Nobody else can open the device while it is busy (a privileged user still can).
    void setBusy(bool busy);

protected:
    void closeLine() override;
    [[nodiscard]] std::optional<std::uint32_t> lineSpeed() const override;

private:
    Pty m_pty; // but for its names: the front's thread only once it runs
};

} // namespace emulator
