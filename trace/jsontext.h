// Reading of the JSON texts that cameras take.
#pragma once

#include "link/protocol/requests.h"

#include <map>

namespace trace {

/// Every number, text and literal of a JSON object by its path ("cmdType", "info.offset", "list.0"), as text;
/// nothing for a text that is not one well-formed object.
[[nodiscard]] std::optional<std::map<std::string, std::string>> readJsonObject(std::string_view text);

/// The integer at the path.
[[nodiscard]] std::optional<long long> jsonNumber(const std::map<std::string, std::string>& values,
                                                  const std::string& path);

/// Identity of the request with this text: its detail is "cmdType".
[[nodiscard]] protocol::RequestKey jsonRequestKey(protocol::ByteView text);

} // namespace trace
