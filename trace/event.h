// Time and events of a line.
#pragma once

#include <chrono>
#include <string>

namespace trace {

/// Microseconds since an origin of the caller's choice; never decreases.
using Time = std::chrono::microseconds;

/// One event as a line for people.
struct Event {
    enum class Kind { received, answered, noted };

    Time at{0};
    Kind kind = Kind::noted;
    std::string text;
};

} // namespace trace
