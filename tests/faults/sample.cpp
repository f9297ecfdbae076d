#include "tests/faults/sample.h"

#include <algorithm>
#include <set>

using namespace std::chrono_literals;

namespace faultmatrix {

namespace {

constexpr std::size_t oneOf = 11; // cells of a row
constexpr std::size_t rowStep = 3;
constexpr auto longCommand = 20s;

/// Cells of long commands that end by no answer take up to four minutes.
bool takesLong(const Command& command, const std::string& fault) {
    static const std::set<std::string> unanswered{"silent", "late",   "glue",       "raw",  "truncate",
                                                  "stray",  "length", "no-verdict", "stall"};
    return command.longest >= longCommand && unanswered.contains(kindOf(fault));
}

/// Faults in the order of the row; the long ones only where there is no other.
std::vector<std::string> candidates(const Command& command) {
    std::vector<std::string> faults;
    for (const auto& [fault, expected] : command.cells) {
        if (!takesLong(command, fault))
            faults.push_back(fault);
    }
    if (faults.empty())
        faults.push_back(command.cells.begin()->first);
    return faults;
}

std::set<std::string> chosen(std::size_t row, const std::vector<std::string>& faults) {
    std::set<std::string> some;
    for (std::size_t column = (row * rowStep) % std::min(oneOf, faults.size()); column < faults.size();
         column += oneOf)
        some.insert(faults[column]);
    return some;
}

/// The cells of a kind are spread over the rows: the search starts at another row for each.
void addKind(const std::string& kind, std::size_t firstRow, std::vector<std::set<std::string>>& sample) {
    const auto isOfKind = [&kind](const std::string& fault) { return kindOf(fault) == kind; };
    for (const auto& some : sample) {
        if (std::any_of(some.begin(), some.end(), isOfKind))
            return;
    }
    for (std::size_t i = 0; i < sample.size(); ++i) {
        const std::size_t row = (firstRow + i) % sample.size();
        const std::vector<std::string> faults = candidates(commands()[row]);
        const auto found = std::find_if(faults.begin(), faults.end(), isOfKind);
        if (found == faults.end())
            continue;
        sample[row].insert(*found);
        return;
    }
}

std::vector<Command> sampled() {
    std::vector<std::set<std::string>> sample;
    for (std::size_t row = 0; row < commands().size(); ++row)
        sample.push_back(chosen(row, candidates(commands()[row])));
    std::size_t firstRow = 0;
    for (const auto& info : emulator::faultKinds())
        addKind(std::string(info.name), firstRow++, sample);
    std::vector<Command> result = commands();
    for (std::size_t row = 0; row < result.size(); ++row)
        std::erase_if(result[row].cells, [&](const auto& cell) { return !sample[row].contains(cell.first); });
    return result;
}

} // namespace

std::string kindOf(const std::string& fault) {
    return fault.substr(0, fault.find('='));
}

const std::vector<Command>& sampledCommands() {
    static const std::vector<Command> all = sampled();
    return all;
}

} // namespace faultmatrix
