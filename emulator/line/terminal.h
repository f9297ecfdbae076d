// Terminal settings that the fronts share. Unix only.
#pragma once

#include <cstdint>
#include <optional>

namespace emulator {

/// 8 data bits, no parity, nothing interpreted; at the rate, when one is given and known.
/// False when the descriptor is no terminal.
bool makeRaw(int descriptor, std::optional<std::uint32_t> baudRate);

/// The output rate of the terminal; nothing for an unusual one.
[[nodiscard]] std::optional<std::uint32_t> terminalSpeed(int descriptor);

} // namespace emulator
