#include "tests/faults/report.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

namespace faultmatrix {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t columnsPerTable = 8;

struct Seen {
    std::string text; ///< of the cell
    bool asExpected = true;
};

using SeenRow = std::map<std::string, Seen>; ///< by fault

struct Family {
    std::string name;
    std::vector<const Command*> commands;
};

fs::path fileOf(const fs::path& folder, const Command& command) {
    return folder / (nameOf(command) + ".row");
}

/// Three lines a cell.
SeenRow readRow(const fs::path& file) {
    SeenRow row;
    std::ifstream in(file);
    std::string fault;
    std::string text;
    std::string mark;
    while (std::getline(in, fault) && std::getline(in, text) && std::getline(in, mark))
        row[fault] = {text, mark == "as expected"};
    return row;
}

std::vector<Family> families() {
    std::vector<Family> all;
    for (const Command& command : commands()) {
        if (all.empty() || all.back().name != command.family)
            all.push_back({command.family, {}});
        all.back().commands.push_back(&command);
    }
    return all;
}

/// Those of every command first, in the order of the common column; then the others.
std::vector<std::string> faultsOf(const Family& family) {
    std::set<std::string> common;
    for (const auto& [fault, expected] : frameColumn({}))
        common.insert(fault);
    std::set<std::string> own;
    for (const Command* command : family.commands) {
        for (const auto& [fault, expected] : command->cells) {
            if (!common.contains(fault))
                own.insert(fault);
        }
    }
    std::vector<std::string> faults(common.begin(), common.end());
    faults.insert(faults.end(), own.begin(), own.end());
    return faults;
}

std::string code(const std::string& text) {
    std::string shown;
    for (const char c : text) {
        if (c == '\x02')
            shown += "\\x02";
        else
            shown += c;
    }
    return "`" + shown + "`";
}

std::string table(const Family& family, const std::map<std::string, SeenRow>& rows,
                  const std::vector<std::string>& faults) {
    std::ostringstream text;
    text << "\n| Command |";
    for (const std::string& fault : faults)
        text << ' ' << code(fault) << " |";
    text << "\n|---|";
    for (std::size_t i = 0; i < faults.size(); ++i)
        text << "---|";
    text << "\n";
    for (const Command* command : family.commands) {
        const SeenRow& row = rows.at(nameOf(*command));
        const bool any = std::any_of(faults.begin(), faults.end(),
                                     [&row](const auto& fault) { return row.contains(fault); });
        if (!any)
            continue;
        text << "| " << code(command->method) << (command->part.empty() ? "" : " " + command->part) << " |";
        for (const std::string& fault : faults) {
            const auto cell = row.find(fault);
            const std::string shown = cell == row.end() ? "-" : cell->second.text;
            text << ' ' << (cell == row.end() || cell->second.asExpected ? shown : "**" + shown + "**")
                 << " |";
        }
        text << "\n";
    }
    return text.str();
}

/// One row for each different thing that a command logs.
std::string logTable(const Family& family) {
    std::ostringstream text;
    text << "\n| Command | Ends | Logs | At |\n|---|---|---|---|\n";
    for (const Command* command : family.commands) {
        std::map<std::pair<Ending, std::vector<std::string>>, std::vector<std::string>> ends;
        for (const auto& [fault, expected] : command->cells)
            ends[{expected.ending, expected.lines}].push_back(fault);
        for (const auto& [end, faults] : ends) {
            text << "| " << code(command->method) << (command->part.empty() ? "" : " " + command->part)
                 << " | " << nameOf(end.first) << " | ";
            for (std::size_t i = 0; i < end.second.size(); ++i)
                text << (i == 0 ? "" : "<br>") << code(end.second[i]);
            text << (end.second.empty() ? "nothing of its own" : "") << " | ";
            for (std::size_t i = 0; i < faults.size(); ++i)
                text << (i == 0 ? "" : ", ") << code(faults[i]);
            text << " |\n";
        }
    }
    return text.str();
}

std::string head(std::size_t rows, std::size_t cells) {
    return R"(# Reliability

Commands of the camera client against the faults of the virtual camera, over a pseudo-terminal with the real serial
library: )" +
           std::to_string(rows) + " rows, " + std::to_string(cells) + R"( cells, each in a process of its own.
The test of the matrix writes this page; [virtual-camera.md](virtual-camera.md) describes the faults:

    scripts/fault-matrix.sh

Every method of `CameraSp` that talks to a camera has its row; one that makes several exchanges has a row for each,
named behind the method. A cell says how the command was seen to end, and after how many milliseconds:

| Cell | Means |
|---|---|
| works | the value, or the success, that a good answer gives |
| other | it ends as if all were well, with another value or effect: what the camera sent, a picture that is not the stored one, an image that is not complete |
| fails | its own failure value: false, an empty text, an empty list, no file |
| waits | it reads on until the link is stopped, by intention; the test stops it, and it ends at once |
| - | the fault says nothing to the command |
| **bold** | not as it must be |

For every cell the test demands the ending, the log lines of the second table of the section, and none that the
command logs at its other endings; a time within the command's bound (tries times time-out, and the pauses); a log
line for each byte of garbage that is dropped; no file left by a failure (but by the last deletion of `takePic`, which
comes after the picture). After that a heartbeat and the same
command with a good answer have to work: at once, or, where the camera still takes bytes for missing upload data,
after its upload silence. A device that hung up comes back first, a camera that stays down is switched on again,
and an answer that was held back spoils the one heartbeat it comes in front of.

Answers are found behind garbage and in pieces, and their check code, address and command are not looked at: those
columns work on purpose. A picture transfer looks at nothing but the number of bytes and, in the first generation,
the result. `opDoor` reads no answer at all, so that every fault of one leaves it working: its cells show that the
camera noted the door and that the next command is not disturbed. An image's announcement answer is complete with
the first read: a second copy behind it (`glue`) is then taken for the verdict. Log lines are shown as patterns: `*` stands for any text.
)";
}

} // namespace

void storeRow(const fs::path& folder, const Command& command, const std::vector<Cell>& cells) {
    fs::create_directories(folder);
    std::ofstream out(fileOf(folder, command));
    for (const Cell& cell : cells)
        out << cell.fault << '\n'
            << nameOf(cell.ending) << ' ' << cell.took.count() << '\n'
            << (cell.complaints.empty() ? "as expected" : "not as expected") << '\n';
}

bool writePage(const fs::path& folder, const fs::path& page) {
    std::map<std::string, SeenRow> rows;
    std::size_t cells = 0;
    for (const Command& command : commands()) {
        rows[nameOf(command)] = readRow(fileOf(folder, command));
        cells += rows[nameOf(command)].size();
    }
    std::ofstream out(page);
    out << head(rows.size(), cells);
    for (const Family& family : families()) {
        out << "\n## " << family.name << "\n";
        const std::vector<std::string> faults = faultsOf(family);
        for (std::size_t at = 0; at < faults.size(); at += columnsPerTable) {
            const auto first = faults.begin() + static_cast<std::ptrdiff_t>(at);
            const auto count = std::min(columnsPerTable, faults.size() - at);
            out << table(family, rows, {first, first + static_cast<std::ptrdiff_t>(count)});
        }
        out << "\nWhat is logged:\n" << logTable(family);
    }
    return out.good();
}

} // namespace faultmatrix
