// Content without a pattern, the same in every run.
#pragma once

#include "link/protocol/bytes.h"

#include <algorithm>
#include <fstream>
#include <random>
#include <string>

namespace bench {

inline protocol::Bytes randomBytes(std::size_t size) {
    std::mt19937 source(1);
    protocol::Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&source] { return static_cast<std::uint8_t>(source()); });
    return bytes;
}

inline void writeRandomFile(const std::string& path, std::size_t size) {
    const protocol::Bytes content = randomBytes(size);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(size));
}

} // namespace bench
