#include "tests/simulation/world/simulatedfront.h"

namespace world {

SimulatedFront::SimulatedFront(emulator::VirtualCamera camera) : m_line(std::move(camera)) {
    appear();
}

SimulatedFront::~SimulatedFront() {
    disappear();
    notifyAll(&m_line);
}

void SimulatedFront::appear() {
    static int number = 0;
    m_portName = "/dev/simulated" + std::to_string(number++);
    addPort(m_portName, {"n/a", "n/a", &m_line, false, false});
    if (!m_link.empty())
        linkAt(m_link);
}

void SimulatedFront::disappear() {
    removePort(m_portName);
    removePort(m_link);
}

void SimulatedFront::linkAt(const std::string& path) {
    m_link = path;
    addPort(path, {"n/a", "n/a", &m_line, false, false});
}

void SimulatedFront::vanish() {
    disappear();
    m_portName.clear();
    m_line.setPresent(false);
}

void SimulatedFront::comeBack() {
    if (m_line.isPresent())
        return;
    disappear();
    appear();
    m_line.setPresent(true);
}

void SimulatedFront::setBusy(bool busy) {
    for (const std::string& name : {m_portName, m_link}) {
        if (SimulatedPort* const port = findPort(name))
            port->busy = busy;
    }
}

} // namespace world
