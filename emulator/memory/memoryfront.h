// A virtual camera on a line in memory: what PtyFront is on a pseudo-terminal.
#pragma once

#include "emulator/line/servedcamera.h"
#include "emulator/memory/memorylock.h"
#include "emulator/memory/memoryports.h"

namespace emulator {

/// Owns camera and line; its port exists while it lives. Any thread, but portName() not during vanish() and
/// comeBack().
class MemoryFront final : public ServedCamera {
public:
    /// The port is not in the system's list and has a new name each time that it comes.
    explicit MemoryFront(CameraType type = CameraType::ostra) : MemoryFront(VirtualCamera(type)) {}
    explicit MemoryFront(CameraSettings settings) : MemoryFront(VirtualCamera(std::move(settings))) {}
    explicit MemoryFront(VirtualCamera camera)
        : MemoryFront(std::move(camera), {}, {"n/a", "n/a", nullptr, false}) {}
    /// The port always has this name, unless that is empty. Its line is this one's.
    MemoryFront(VirtualCamera camera, std::string name, MemoryPort port);
    ~MemoryFront() override;
    MemoryFront(const MemoryFront&) = delete;
    MemoryFront& operator=(const MemoryFront&) = delete;

    /// As CameraFront::withCamera.
    template <typename Function>
    decltype(auto) withCamera(Function&& function) {
        const NotifyOnExit notify;
        const MemoryLock lock;
        return std::forward<Function>(function)(m_line.camera());
    }
    void useCamera(const std::function<void(VirtualCamera&)>& function) override { withCamera(function); }
    [[nodiscard]] Time now() const override { return m_line.lineTime(); }
    void setTraits(const LineTraits& traits, std::uint64_t seed = 1) override;
    [[nodiscard]] LineDamageCounts lineDamage(LineDamage::Receiver receiver);
    [[nodiscard]] bool lineOpen();
    void setPace(std::uint32_t bytesPerSecond);
    /// As MemoryLine::followRate.
    void followRate();
    [[nodiscard]] std::string portName() const { return m_portName; }
    /// A second name of the port, which stays the same through vanish and comeBack.
    void linkAt(const std::string& path);
    void vanish();
    /// Does nothing while there is a device.
    void comeBack();
    void setBusy(bool busy);

    /// For tests, which take a MemoryLock where several threads run at once.
    [[nodiscard]] MemoryLine& line() { return m_line; }

private:
    struct NotifyOnExit {
        ~NotifyOnExit() { MemoryLock::notifyAll(); }
    };

    // with the lock
    void appear();
    void disappear();

    MemoryLine m_line;
    const std::string m_fixedName; ///< empty: a new one each time
    MemoryPort m_port;
    std::string m_portName; ///< empty: the port is gone
    std::string m_link;     ///< empty: none
};

} // namespace emulator
