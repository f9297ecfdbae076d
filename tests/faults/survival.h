// Commands on bad lines: how often they succeed, fail or give a wrong value, and what the mark of the line's
// quality says.
#pragma once

#include "tests/faults/command.h"

#include <filesystem>

namespace faultmatrix {

/// Ends of the runs of one command on one line.
struct Survival {
    unsigned works = 0;
    unsigned fails = 0;      ///< those that wait until they are stopped among them
    unsigned wrong = 0;      ///< ends as if all were well
    unsigned wrongShown = 0; ///< of them, those that the mark shows as disturbed

    unsigned singleBits = 0; ///< runs in which one bit of a framed answer changed, and nothing else
    unsigned named = 0;      ///< of them, those that the mark shows as disturbed
    unsigned cleanRuns = 0;  ///< in which nothing changed
    unsigned cleanExchanges = 0;
    unsigned alarms = 0; ///< clean runs that the mark does not show as good

    Survival& operator+=(const Survival& other);
    bool operator==(const Survival&) const = default;
};

/// The first row of each method.
[[nodiscard]] const std::vector<const Command*>& methods();
[[nodiscard]] const Command& methodNamed(const std::string& method);
/// An upload whose verdict compares the digest.
[[nodiscard]] bool hasDigestVerdict(const Command& command);

/// Runs the command so many times, each with a new camera and client. The line as --line takes it; every run
/// has another seed, the same in every call. Uses the working directory.
[[nodiscard]] Survival survive(const Command& command, const std::string& line, unsigned runs);

/// Every command on all lines, as a page. False when it cannot be written.
[[nodiscard]] bool writeSurvivalPage(const std::filesystem::path& page,
                                     const std::vector<const Command*>& commands, unsigned runs);

} // namespace faultmatrix
