// Times of a line, and what happens on it, told to people.
#pragma once

#include <chrono>
#include <string>

namespace trace {

/// Microseconds since an origin of the caller's choice; never runs back.
using Time = std::chrono::microseconds;

/// One line for people.
struct Event {
    enum class Kind { received, answered, noted };

    Time at{0};
    Kind kind = Kind::noted;
    std::string text;
};

} // namespace trace
