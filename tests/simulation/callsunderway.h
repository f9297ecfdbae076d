// How long a call of the serial library may still last.
#pragma once

#include "tests/simulation/world/scheduler.h"

#include <cstdint>
#include <map>
#include <string>

namespace simulation {

/// The last call of each port: closing waits for those that have not returned.
class CallsUnderWay {
public:
    void called(const std::string& port, const std::string& call);
    /// A read has brought bytes.
    void ended(const std::string& port);
    /// For so long after this moment a call may last.
    [[nodiscard]] world::Time longest(world::Time from) const;

private:
    struct Port {
        world::Time began{0};
        world::Time longest{0};
        std::uint32_t timeoutMs = 0;
    };
    std::map<std::string, Port> m_ports;
};

} // namespace simulation
