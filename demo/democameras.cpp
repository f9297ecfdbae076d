#include "demo/democameras.h"

#include "emulator/line/devicefront.h"
#include "emulator/line/terminalcamera.h"

using emulator::CameraType;

DemoCameras::DemoCameras() {
    for (const CameraType type : types()) {
        emulator::TerminalCamera terminal =
            emulator::serveOnNewTerminal(emulator::VirtualCamera(emulator::settingsForType(type)));
        m_terminals[type] = std::move(terminal.portName);
        m_plugs[type] = std::move(terminal.plug);
        m_fronts[type] = std::move(terminal.front);
    }
}

DemoCameras::DemoCameras(std::string cameraPort, std::string toolPort)
    : m_cameraPort(std::move(cameraPort)), m_toolPort(std::move(toolPort)) {
    connect(types().front());
}

std::vector<CameraType> DemoCameras::types() {
    return {CameraType::ostra, CameraType::quenta, CameraType::salesDynamic};
}

std::string DemoCameras::portName(CameraType type) const {
    const std::lock_guard lock(m_terminalsMutex);
    return m_cameraPort.empty() ? m_terminals.at(type) : m_toolPort;
}

bool DemoCameras::plug(CameraType type, bool in) {
    const auto plug = m_plugs.find(type);
    if (plug == m_plugs.end())
        return false;
    std::string name = plug->second(in);
    const std::lock_guard lock(m_terminalsMutex);
    m_terminals[type] = std::move(name);
    return true;
}

void DemoCameras::setLine(const emulator::LineTraits& traits, std::uint64_t seed) {
    m_line = traits;
    m_lineSeed = seed;
    for (const auto& [type, front] : m_fronts)
        front->setTraits(m_line, m_lineSeed);
}

void DemoCameras::connect(CameraType type) {
    if (m_fronts.contains(type))
        return;
    m_fronts.clear(); // closes the port
    m_fronts[type] = std::make_unique<emulator::DeviceFront>(
        emulator::VirtualCamera(emulator::settingsForType(type)), m_cameraPort);
    m_fronts[type]->setTraits(m_line, m_lineSeed);
}
