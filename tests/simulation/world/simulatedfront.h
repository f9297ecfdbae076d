// A virtual camera on a simulated line: what emulator::PtyFront is in real time.
#pragma once

#include "tests/simulation/world/simulatedline.h"

namespace world {

/// Has the functions of emulator::PtyFront, so that tests use either. The port is not in the system's list.
class SimulatedFront {
public:
    explicit SimulatedFront(emulator::CameraType type = emulator::CameraType::ostra)
        : SimulatedFront(emulator::VirtualCamera(type)) {}
    explicit SimulatedFront(emulator::CameraSettings settings)
        : SimulatedFront(emulator::VirtualCamera(std::move(settings))) {}
    explicit SimulatedFront(emulator::VirtualCamera camera);
    ~SimulatedFront();
    SimulatedFront(const SimulatedFront&) = delete;
    SimulatedFront& operator=(const SimulatedFront&) = delete;

    template <typename Function>
    decltype(auto) withCamera(Function&& function) {
        const WakeOnExit wake{m_line};
        return std::forward<Function>(function)(m_line.camera());
    }
    [[nodiscard]] SimulatedLine& line() { return m_line; }
    [[nodiscard]] std::string portName() const { return m_portName; }
    [[nodiscard]] emulator::Time now() const { return m_line.lineTime(); }
    [[nodiscard]] bool lineOpen() { return m_line.isPresent(); }
    void setPace(std::uint32_t bytesPerSecond) { m_line.setPace(bytesPerSecond); }
    void setTraits(const emulator::LineTraits& traits, std::uint64_t seed = 1) {
        m_line.model().setTraits(traits, seed);
    }
    [[nodiscard]] emulator::LineDamageCounts lineDamage(emulator::LineDamage::Receiver receiver) {
        return m_line.model().countsTo(receiver);
    }
    /// A second name of the port, which stays the same through vanish and comeBack.
    void linkAt(const std::string& path);
    void vanish();
    void comeBack();
    void setBusy(bool busy);

private:
    struct WakeOnExit {
        SimulatedLine& line;
        ~WakeOnExit() { notifyAll(&line); }
    };

    void appear();
    void disappear();

    SimulatedLine m_line;
    std::string m_portName;
    std::string m_link; ///< empty: none
};

} // namespace world
