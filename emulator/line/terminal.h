// Terminal settings. Unix only.
#pragma once

#include <cstdint>
#include <optional>

namespace emulator {

/// Sets raw mode, 8 data bits, no parity, and the rate if there is a known one. False when the descriptor is
/// no terminal.
bool makeRaw(int descriptor, std::optional<std::uint32_t> baudRate);

/// The output rate of the terminal; nothing for an unusual one.
[[nodiscard]] std::optional<std::uint32_t> terminalSpeed(int descriptor);

} // namespace emulator
