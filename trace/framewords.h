// What passes over a line, in words for people.
#pragma once

#include "trace/linefollower.h"
#include "trace/requests.h"

namespace trace {

/// One line: the command, the lengths, the check code, and what a request asks or an answer says. Codes 06 to
/// 09 are recognised with the picture-command offset added.
[[nodiscard]] std::string wordsOf(const LineItem& item, std::uint8_t pictureOffset);

/// The request that a frame or envelope carries, told apart as the camera does.
[[nodiscard]] RequestKey requestKeyOf(const LineItem& item, std::uint8_t pictureOffset);

} // namespace trace
