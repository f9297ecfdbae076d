#include "tests/simulation/world/simulatedfront.h"

namespace world {

SimulatedFront::SimulatedFront(emulator::VirtualCamera camera) : m_line(std::move(camera)) {
    appear();
}

SimulatedFront::~SimulatedFront() {
    removePort(m_portName);
    notifyAll(&m_line);
}

void SimulatedFront::appear() {
    static int number = 0;
    m_portName = "/dev/simulated" + std::to_string(number++);
    addPort(m_portName, {"n/a", "n/a", &m_line, false, false});
}

void SimulatedFront::vanish() {
    removePort(m_portName);
    m_portName.clear();
    m_line.setPresent(false);
}

void SimulatedFront::comeBack() {
    if (m_line.isPresent())
        return;
    removePort(m_portName);
    appear();
    m_line.setPresent(true);
}

void SimulatedFront::setBusy(bool busy) {
    if (SimulatedPort* const port = findPort(m_portName))
        port->busy = busy;
}

} // namespace world
