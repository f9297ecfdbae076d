// Who may open a pseudo-terminal of this process: terminalowner_unix.cpp, terminalowner_windows.cpp.
#pragma once

#include <cstdint>
#include <optional>

namespace emulator {

struct TerminalOwner {
    std::uint32_t user;
    std::uint32_t group;
};

/// The person who started this program by sudo. Nothing without sudo, for root, and for a damaged
/// environment.
[[nodiscard]] std::optional<TerminalOwner> sudoUser();

/// True for root without sudo.
[[nodiscard]] bool onlyRootOpensTerminals();

} // namespace emulator
