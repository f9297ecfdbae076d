// How a started window program tells that it has painted.
#pragma once

namespace bench {

/// Programs that firstpaint.cpp is linked into write one byte to this descriptor when their first window has
/// been painted and the event loop goes on.
inline constexpr int paintedDescriptor = 3;

} // namespace bench
