#include "emulator/line/terminalowner.h"

#include <charconv>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <unistd.h>

namespace emulator {

namespace {

/// A decimal id; the largest number means "no change" to chown.
std::optional<std::uint32_t> idIn(const char* variable) {
    const char* const value = std::getenv(variable);
    const std::string_view text = value == nullptr ? std::string_view() : value;
    std::uint32_t id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() ||
        id == std::numeric_limits<std::uint32_t>::max())
        return std::nullopt;
    return id;
}

} // namespace

std::optional<TerminalOwner> sudoUser() {
    if (::geteuid() != 0)
        return std::nullopt;
    const auto user = idIn("SUDO_UID");
    const auto group = idIn("SUDO_GID");
    if (!user || !group || *user == 0)
        return std::nullopt;
    return TerminalOwner{*user, *group};
}

bool onlyRootOpensTerminals() {
    return ::geteuid() == 0 && !sudoUser();
}

} // namespace emulator
