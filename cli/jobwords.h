// The words of a job.
#pragma once

#include <QString>

#include <string>
#include <vector>

namespace cli {

/// Of a line of a job file; quotes keep blanks together, three are a quote.
[[nodiscard]] std::vector<std::string> jobWords(const QString& line);

} // namespace cli
