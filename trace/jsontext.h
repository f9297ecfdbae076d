// The little JSON that the camera reads.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace trace {

/// Every number, text and literal of a JSON object by its path ("cmdType", "info.offset", "list.0"), as text;
/// nothing when the text is not one well-formed object.
[[nodiscard]] std::optional<std::map<std::string, std::string>> readJsonObject(std::string_view text);

/// The value at the path as a whole number.
[[nodiscard]] std::optional<long long> jsonNumber(const std::map<std::string, std::string>& values,
                                                  const std::string& path);

} // namespace trace
