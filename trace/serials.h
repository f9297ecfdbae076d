// Serial numbers in what passes over a line, and how they are made unreadable.
#pragma once

#include "trace/linefollower.h"

namespace trace {

/// The item's bytes with every character of a serial number replaced by X: in the answer that reads it, in
/// the request that writes it, and in JSON texts under the names that devices are told apart by. The size is
/// the same; a check code that was right is right again, one that was wrong stays wrong.
[[nodiscard]] Bytes withoutSerials(const LineItem& item);

/// False when bytes that begin an item cannot carry a serial number, whatever follows.
[[nodiscard]] bool mayCarrySerial(Side from, ByteView beginning);

} // namespace trace
