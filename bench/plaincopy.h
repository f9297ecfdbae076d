// The bare program that an upload is compared with.
#pragma once

#include "link/protocol/bytes.h"
#include "link/protocol/commands.h"

#include <cstddef>
#include <string>

namespace bench {

inline constexpr std::uint32_t baudRate = 460800;

struct PlainCopy {
    protocol::Command command; ///< of the announcement
    std::size_t step;          ///< bytes of a write
    bool flushes;              ///< before each write
};

/// The client's announcement and its pause of 2 s, then the bytes by the client's library, and nothing else.
/// The bytes may still be on the line when this returns.
void copyPlainly(const PlainCopy& copy, const std::string& portName, const protocol::Bytes& content);

} // namespace bench
