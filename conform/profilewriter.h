// The profile of an examined camera.
#pragma once

#include "conform/checks.h"
#include "trace/profile.h"

namespace conform {

/// Least, median and 95 % of the delays, the values, and what differs; differences that the virtual camera
/// cannot repeat are remarks.
[[nodiscard]] trace::Profile profileOf(const Evidence& evidence, const std::vector<Result>& results);

} // namespace conform
