#include "service/finder.h"

#include "link/protocol/cameratypes.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>

namespace service {

namespace {

struct PortLost : std::runtime_error {
    PortLost() : std::runtime_error("the port failed during the search") {}
};

/// Two heartbeats without another user between them. Nothing: the line is refused.
std::optional<bool> answersAt(CameraSp& camera, std::uint8_t address) {
    const LineTurn::Hold turn = camera.takeLine(LineUser::reading);
    if (!turn)
        return std::nullopt;
    const bool answered = camera.testHeartBeatAt(address) && camera.testHeartBeatAt(address);
    if (camera.portFailed())
        throw PortLost();
    return answered;
}

/// Nothing: the search goes on.
std::optional<FindEnd> tryAddresses(CameraSp& camera, std::uint32_t rate, const FindPlan& plan,
                                    std::size_t attempt, const FindObserver& observer,
                                    const std::atomic<bool>& stopped) {
    for (const std::uint8_t address : plan.addresses) {
        if (stopped || camera.stopRequested())
            return FindEnd::stopped;
        observer.trying(attempt++);
        const std::optional<bool> answered = answersAt(camera, address);
        if (!answered)
            return camera.stopRequested() ? FindEnd::stopped : FindEnd::lineBusy;
        if (*answered)
            observer.found({plan.port, rate, address});
        if (*answered && plan.firstOnly)
            return FindEnd::complete;
    }
    return std::nullopt;
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

FindEnd findCameras(const FindPlan& plan, const FindObserver& observer, const std::atomic<bool>& stopped,
                    LineObserver* line) {
    std::size_t attempt = 0;
    for (const std::uint32_t rate : plan.rates) {
        if (stopped)
            return FindEnd::stopped;
        CameraSp camera(plan.port, rate);
        if (line != nullptr)
            camera.addLineObserver(*line);
        if (const auto end = tryAddresses(camera, rate, plan, attempt, observer, stopped))
            return *end;
        attempt += plan.addresses.size();
    }
    return FindEnd::complete;
}

FindEnd findCameras(CameraSp& camera, const FindPlan& plan, const FindObserver& observer,
                    const std::atomic<bool>& stopped) {
    return tryAddresses(camera, camera.baudRate(), plan, 0, observer, stopped).value_or(FindEnd::complete);
}

} // namespace service
