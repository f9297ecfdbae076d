#include "emulator/line/replayservice.h"

#include <algorithm>

namespace emulator {

bool serveReplay(ReplayCamera& camera, ByteLine& line, const std::function<bool()>& endAsked) {
    constexpr std::chrono::milliseconds glance{50};
    const auto start = std::chrono::steady_clock::now();
    const auto now = [start] {
        return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now() - start);
    };
    Bytes outgoing;
    while (!endAsked()) {
        protocol::append(outgoing, camera.takeDue(now()));
        if (!outgoing.empty()) {
            const auto written = line.write(outgoing, glance);
            if (!written)
                return false;
            outgoing.erase(outgoing.begin(), outgoing.begin() + static_cast<std::ptrdiff_t>(*written));
        }
        auto patience = outgoing.empty() ? glance : std::chrono::milliseconds(0);
        if (const auto due = camera.nextDue())
            patience = std::clamp(std::chrono::ceil<std::chrono::milliseconds>(*due - now()),
                                  std::chrono::milliseconds(0), patience);
        Bytes incoming;
        if (!line.read(incoming, patience))
            return false;
        if (!incoming.empty())
            camera.receive(incoming, now());
    }
    return true;
}

} // namespace emulator
