// Decoders without client or line, as functions of the input alone.
#pragma once

#include "link/protocol/bytes.h"

#include <string_view>

namespace fuzz {

/// Runs the target of this name; a broken rule ends the process as a finding: what is encoded again equals
/// what was decoded, and the pieces in which bytes come change nothing.
void runTarget(std::string_view name, protocol::ByteView input);

} // namespace fuzz
