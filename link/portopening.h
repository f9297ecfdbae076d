// System-dependent part of opening a port.
#pragma once

#include <serial/serial.h>

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

/// One opening of a port by the library. Unix: the process's openings take turns, because the descriptor that
/// the library opens is found by comparing the process's descriptors before and after.
class PortOpening {
public:
    /// Throws the library's exception with the error number if the library must not open this name.
    explicit PortOpening(const std::string& name);
    PortOpening(const PortOpening&) = delete;
    PortOpening& operator=(const PortOpening&) = delete;

    /// Descriptor of the port that the library opened; -1: unknown.
    [[nodiscard]] int descriptor() const;
    /// After a failure: closes what the library left open. Throws an exception with the error number if the
    /// library's has none and the system gives one. taken: duration of the failed opening.
    void undo(const serial::IOException& failure, std::chrono::nanoseconds taken) const;

private:
    std::string m_name;
    std::uint64_t m_device = 0; ///< 0: unknown
    std::unique_lock<std::mutex> m_turn;
    std::vector<int> m_before; ///< earlier descriptors of the device
};
