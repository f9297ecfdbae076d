#include "tests/simulation/callsunderway.h"

#include "tests/simulation/protocoljudge.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace simulation {

namespace {
constexpr world::Time sendingTime = 200ms; // of what the adapter has taken
}

void CallsUnderWay::called(const std::string& port, const std::string& call) {
    if (call == "close")
        return;
    Port& state = m_ports[port];
    state.began = world::now();
    state.longest = 0s;
    if (call.starts_with("open ") || call.starts_with("setTimeout "))
        state.timeoutMs = numbersOf(call).at(1);
    else if (call.starts_with("read "))
        state.longest = std::chrono::milliseconds(state.timeoutMs);
    else
        state.longest = sendingTime;
}

void CallsUnderWay::ended(const std::string& port) {
    m_ports[port].longest = world::now() - m_ports[port].began;
}

world::Time CallsUnderWay::longest(world::Time from) const {
    world::Time longest{0};
    for (const auto& [name, port] : m_ports)
        longest = std::max(longest, port.began + port.longest - from);
    return longest;
}

} // namespace simulation
