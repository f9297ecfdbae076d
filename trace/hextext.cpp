#include "trace/hextext.h"

#include "link/protocol/frame.h"

namespace trace {

std::string hexText(protocol::ByteView bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size() && i < longestHexText; ++i)
        text.append(i == 0 ? "" : " ").append(protocol::paddedHexText(bytes.range(i, i + 1)));
    if (bytes.size() > longestHexText)
        text += " ... (" + std::to_string(bytes.size()) + " bytes)";
    return text;
}

} // namespace trace
