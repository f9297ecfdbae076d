// Finding cameras by their heartbeat.
#pragma once

#include "link/camerasp.h"

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace service {

/// The search of one port: all addresses at the first rate, then at the next.
struct FindPlan {
    std::string port;
    std::vector<std::uint32_t> rates;
    std::vector<std::uint8_t> addresses;
    bool firstOnly = false; ///< end at the first camera

    [[nodiscard]] std::size_t attempts() const { return rates.size() * addresses.size(); }
};

struct FoundCamera {
    std::string port;
    std::uint32_t baudRate = 0;
    std::uint8_t address = 0;
};

struct FindObserver {
    /// Before each attempt, from 0.
    std::function<void(std::size_t attempt)> trying;
    std::function<void(const FoundCamera& camera)> found;
};

enum class FindEnd {
    complete, ///< all attempts, or the first camera when that was enough
    stopped,
    lineBusy, ///< a whole job has the line or waits for it
};

/// The usual address of each type, each once.
[[nodiscard]] std::vector<std::uint8_t> usualAddresses();
/// 0 to 255, the usual ones first.
[[nodiscard]] std::vector<std::uint8_t> allAddresses();

/// Sends heartbeats and nothing else; a camera counts when it answers twice, so that a late answer to the
/// address before is not taken for one. Blocks; about 200 ms an attempt. Ends early when `stopped` is set.
/// Throws the serial library's exception when the port cannot be opened, and std::runtime_error when it fails
/// later.
FindEnd findCameras(const FindPlan& plan, const FindObserver& observer, const std::atomic<bool>& stopped,
                    LineObserver* line = nullptr);
/// The same on an open link, at its rate. Other commands may run between two attempts, to their own address.
FindEnd findCameras(CameraSp& camera, const FindPlan& plan, const FindObserver& observer,
                    const std::atomic<bool>& stopped);

} // namespace service
