// The matrix as a page: what each command was seen to do at each fault.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace faultmatrix {

struct Observation {
    bool worked = false;
    bool asExpected = true; ///< outcome, time, and what came after it
    std::chrono::milliseconds took{0};
};

/// Rows in the order in which they were added.
class Report {
public:
    void add(const std::string& command, const std::string& fault, const Observation& observation);
    /// Markdown; false when the file cannot be written.
    [[nodiscard]] bool write(const std::string& path) const;

private:
    [[nodiscard]] std::string table(const std::vector<std::string>& faults) const;

    std::vector<std::string> m_commands;
    std::map<std::string, std::map<std::string, Observation>> m_cells; ///< by command, by fault
};

} // namespace faultmatrix
