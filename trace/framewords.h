// Descriptions of the traffic of a line, for people.
#pragma once

#include "link/protocol/requests.h"
#include "trace/linefollower.h"

namespace trace {

/// Gives the words of another language for an English phrase; %1, %2 and so on stand for values.
using Phrasebook = std::string_view (*)(std::string_view english);
[[nodiscard]] constexpr std::string_view english(std::string_view phrase) {
    return phrase;
}

/// One line: the command, the lengths, the check code, and the content of the request or answer. The
/// picture-command offset is subtracted from codes.
[[nodiscard]] std::string wordsOf(const LineItem& item, std::uint8_t pictureOffset,
                                  Phrasebook phrasebook = &english);

/// Identity of the request in a frame or envelope; JSON types as the camera reads them.
[[nodiscard]] protocol::RequestKey requestKeyOf(const LineItem& item, std::uint8_t pictureOffset);

} // namespace trace
