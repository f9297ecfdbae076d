#include "service/finder.h"

#include "link/protocol/cameratypes.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace service {

namespace {

struct PortLost : std::runtime_error {
    PortLost() : std::runtime_error("the port failed during the search") {}
};

/// False when the search is over.
bool tryAddress(CameraSp& camera, const FoundCamera& candidate, const FindPlan& plan,
                const FindObserver& observer) {
    camera.setSlaveAddress(candidate.address);
    const bool answered = camera.testHeartBeat() && camera.testHeartBeat();
    if (camera.portFailed())
        throw PortLost();
    if (answered)
        observer.found(candidate);
    return !(answered && plan.firstOnly);
}

/// False when the search is over.
bool tryAddresses(CameraSp& camera, std::uint32_t rate, const FindPlan& plan, std::size_t attempt,
                  const FindObserver& observer, const std::atomic<bool>& stopped) {
    for (const std::uint8_t address : plan.addresses) {
        if (stopped || camera.stopRequested())
            return false;
        observer.trying(attempt++);
        if (!tryAddress(camera, {plan.port, rate, address}, plan, observer))
            return false;
    }
    return true;
}

} // namespace

std::vector<std::uint8_t> usualAddresses() {
    std::vector<std::uint8_t> addresses;
    for (const protocol::CameraTypeInfo& type : protocol::cameraTypes) {
        if (std::find(addresses.begin(), addresses.end(), type.usualAddress) == addresses.end())
            addresses.push_back(type.usualAddress);
    }
    return addresses;
}

std::vector<std::uint8_t> allAddresses() {
    std::vector<std::uint8_t> addresses = usualAddresses();
    const std::vector<std::uint8_t> usual = addresses;
    for (int address = 0; address <= std::numeric_limits<std::uint8_t>::max(); ++address) {
        if (std::find(usual.begin(), usual.end(), address) == usual.end())
            addresses.push_back(static_cast<std::uint8_t>(address));
    }
    return addresses;
}

void findCameras(const FindPlan& plan, const FindObserver& observer, const std::atomic<bool>& stopped,
                 LineObserver* line) {
    std::size_t attempt = 0;
    for (const std::uint32_t rate : plan.rates) {
        if (stopped)
            return;
        CameraSp camera(plan.port, rate);
        if (line != nullptr)
            camera.addLineObserver(*line);
        if (!tryAddresses(camera, rate, plan, attempt, observer, stopped))
            return;
        attempt += plan.addresses.size();
    }
}

void findCameras(CameraSp& camera, const FindPlan& plan, const FindObserver& observer,
                 const std::atomic<bool>& stopped) {
    tryAddresses(camera, camera.baudRate(), plan, 0, observer, stopped);
}

} // namespace service
