#include "tests/faults/report.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

namespace faultmatrix {

namespace {

constexpr std::size_t columnsPerTable = 8;

std::string cellText(const Observation& observation) {
    std::string text =
        (observation.worked ? "works, " : "fails, ") + std::to_string(observation.took.count()) + " ms";
    return observation.asExpected ? text : "**" + text + "**";
}

} // namespace

void Report::add(const std::string& command, const std::string& fault, const Observation& observation) {
    if (!m_cells.contains(command))
        m_commands.push_back(command);
    m_cells[command][fault] = observation;
}

std::string Report::table(const std::vector<std::string>& faults) const {
    std::ostringstream text;
    text << "\n| Command |";
    for (const std::string& fault : faults)
        text << " `" << fault << "` |";
    text << "\n|---|";
    for (std::size_t i = 0; i < faults.size(); ++i)
        text << "---|";
    text << "\n";
    for (const std::string& command : m_commands) {
        const auto& row = m_cells.at(command);
        text << "| `" << command << "` |";
        for (const std::string& fault : faults) {
            const auto cell = row.find(fault);
            text << ' ' << (cell == row.end() ? std::string("-") : cellText(cell->second)) << " |";
        }
        text << "\n";
    }
    return text.str();
}

bool Report::write(const std::string& path) const {
    std::set<std::string> known;
    for (const auto& [command, row] : m_cells) {
        for (const auto& [fault, observation] : row)
            known.insert(fault);
    }
    const std::vector<std::string> faults(known.begin(), known.end());
    std::ofstream page(path);
    page << R"(# Reliability

Commands of the camera client against the faults of the virtual camera, over a pseudo-terminal with the real serial
library: what the command was seen to answer, and how long it took. "Works": the value, or the success, of a good
answer. A failure takes at most the command's tries times its time-out; after every cell the next good command works
(a device that hung up comes back first). A cell in bold was not as it must be; "-": not tried, mostly because the
fault says nothing to the command.

Answers are found behind garbage and in pieces, and their check code, address and command are not looked at: those
columns work on purpose. Uploads under faults are tried in `tests/updates`, picture transfers in `tests/pictures`.

The test of the matrix writes this page; [virtual-camera.md](virtual-camera.md) describes the faults:

    CAMERA_FAULT_REPORT=$PWD/docs/reliability.md build/dev/tests/faults/fault_tests
)";
    for (std::size_t at = 0; at < faults.size(); at += columnsPerTable) {
        const auto first = faults.begin() + static_cast<std::ptrdiff_t>(at);
        const auto count = std::min(columnsPerTable, faults.size() - at);
        page << table({first, first + static_cast<std::ptrdiff_t>(count)});
    }
    return page.good();
}

} // namespace faultmatrix
