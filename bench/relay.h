// A line with a file-transfer program of lrzsz at each end.
#pragma once

#include "bench/farend.h"

namespace bench {

/// A paced line whose far end is another program's standard input and output. Counts what the near end sends.
class PacedRelay final : public ChildProcess {
public:
    /// `receiver`: program and arguments, started in the directory.
    PacedRelay(const std::vector<std::string>& receiver, const std::string& directory,
               std::uint32_t bytesPerSecond);
};

/// Whether a program of this name is found.
[[nodiscard]] bool isInstalled(const std::string& program);

} // namespace bench
