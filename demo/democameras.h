// The virtual cameras of the demonstration and the ports at which the tool finds them.
#pragma once

#include "emulator/line/camerafront.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// One camera per protocol: first generation, JSON, V1. Each has a pseudo-terminal of its own, or they take
/// turns on one serial port that is connected to the tool's.
class DemoCameras {
public:
    /// Throws std::runtime_error where the system has no pseudo-terminals.
    DemoCameras();
    /// The names of the two ports. Throws std::runtime_error when the camera's cannot be opened.
    DemoCameras(std::string cameraPort, std::string toolPort);

    [[nodiscard]] static std::vector<emulator::CameraType> types();
    /// Port for the tool; empty while it is pulled. Any thread.
    [[nodiscard]] std::string portName(emulator::CameraType type) const;
    /// Pulls the camera's adapter (false) or plugs it in under another name (true). False for a serial port.
    bool plug(emulator::CameraType type, bool in);
    /// Of all cameras, from now on.
    void setLine(const emulator::LineTraits& traits, std::uint64_t seed);
    /// Connects the camera to its line; on a shared line it replaces the previous one.
    void connect(emulator::CameraType type);
    /// A connected camera.
    [[nodiscard]] emulator::CameraFront& front(emulator::CameraType type) { return *m_fronts.at(type); }

private:
    std::string m_cameraPort; ///< empty: pseudo-terminals
    std::string m_toolPort;
    emulator::LineTraits m_line;
    std::uint64_t m_lineSeed = 1;
    mutable std::mutex m_terminalsMutex;
    std::map<emulator::CameraType, std::string> m_terminals;
    std::map<emulator::CameraType, std::function<std::string(bool in)>> m_plugs; ///< of terminals
    std::map<emulator::CameraType, std::unique_ptr<emulator::CameraFront>> m_fronts;
};
