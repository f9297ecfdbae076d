// Blanking of serial numbers in the traffic of a line.
#pragma once

#include "trace/linefollower.h"

namespace trace {

/// The item's bytes with every character of a serial number replaced by X: in the answer to its read, in the
/// request that writes it, and in JSON texts under the usual names. The size is the same; a right check code
/// is recomputed, a wrong one stays wrong.
[[nodiscard]] Bytes withoutSerials(const LineItem& item);

/// False when no item that begins with these bytes can carry a serial number.
[[nodiscard]] bool mayCarrySerial(Side from, ByteView beginning);

} // namespace trace
