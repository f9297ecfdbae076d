#include "emulator/memory/memoryfront.h"

namespace emulator {

MemoryFront::MemoryFront(VirtualCamera camera, std::string name, MemoryPort port)
    : m_line(std::move(camera)), m_fixedName(std::move(name)), m_port(std::move(port)) {
    m_port.line = &m_line;
    const MemoryLock lock;
    appear();
}

MemoryFront::~MemoryFront() {
    const NotifyOnExit notify;
    const MemoryLock lock;
    disappear();
}

void MemoryFront::appear() {
    static int number = 0;
    m_portName = m_fixedName.empty() ? "/dev/simulated" + std::to_string(number++) : m_fixedName;
    addMemoryPort(m_portName, m_port);
    if (!m_link.empty())
        addMemoryPort(m_link, m_port);
}

void MemoryFront::disappear() {
    removeMemoryPort(m_portName);
    removeMemoryPort(m_link);
    m_portName.clear();
}

void MemoryFront::setTraits(const LineTraits& traits, std::uint64_t seed) {
    const MemoryLock lock;
    m_line.model().setTraits(traits, seed);
}

LineDamageCounts MemoryFront::lineDamage(LineDamage::Receiver receiver) {
    const MemoryLock lock;
    return m_line.model().countsTo(receiver);
}

bool MemoryFront::lineOpen() {
    const MemoryLock lock;
    return m_line.isPresent();
}

void MemoryFront::setPace(std::uint32_t bytesPerSecond) {
    const MemoryLock lock;
    m_line.setPace(bytesPerSecond);
}

void MemoryFront::followRate() {
    const MemoryLock lock;
    m_line.followRate();
}

void MemoryFront::linkAt(const std::string& path) {
    const MemoryLock lock;
    m_link = path;
    addMemoryPort(path, m_port);
}

void MemoryFront::vanish() {
    const MemoryLock lock;
    disappear();
    m_line.setPresent(false);
}

void MemoryFront::comeBack() {
    const MemoryLock lock;
    if (m_line.isPresent())
        return;
    disappear();
    appear();
    m_line.setPresent(true);
}

void MemoryFront::setBusy(bool busy) {
    const MemoryLock lock;
    for (const std::string& name : {m_portName, m_link}) {
        if (MemoryPort* const port = findMemoryPort(name))
            port->busy = busy;
    }
}

} // namespace emulator
