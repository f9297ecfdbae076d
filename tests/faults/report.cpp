#include "tests/faults/report.h"

#include "tests/faults/sample.h"

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

/// A column of the page of endings.
struct FaultColumn {
    const char* name;
    std::vector<std::string> kinds;
};

/// The last column takes every other kind.
const std::vector<FaultColumn>& faultColumns() {
    static const std::vector<FaultColumn> all{
        {"Fields not read", {"address", "command", "bad-check", "zero-check"}},
        {"Bytes in front", {"before"}},
        {"Late, in pieces", {"delay", "split", "stop-reading"}},
        {"No whole answer", {"silent", "late", "raw", "truncate", "stray", "glue"}},
        {"Wrong length", {"length"}},
        {"Device gone", {"hang-up", "upload-hang-up"}},
        {"Content, upload, restart", {}},
    };
    return all;
}

std::size_t columnOf(const std::string& fault) {
    const std::string kind = kindOf(fault);
    const auto column =
        std::find_if(faultColumns().begin(), faultColumns().end() - 1, [&kind](const FaultColumn& some) {
            return std::find(some.kinds.begin(), some.kinds.end(), kind) != some.kinds.end();
        });
    return static_cast<std::size_t>(column - faultColumns().begin());
}

std::string listed(const std::vector<std::string>& faults) {
    std::string text;
    for (const std::string& fault : faults)
        text += (text.empty() ? "" : ", ") + code(fault);
    return text;
}

/// The faults of one cell by ending; an ending that is not as expected is bold.
using Endings = std::map<std::string, std::vector<std::string>>;

std::string endingOf(const Seen& seen) {
    const std::string ending = seen.text.substr(0, seen.text.find(' '));
    return seen.asExpected ? ending : "**" + ending + "**";
}

/// The most frequent ending stands without its faults, unless all are to be named.
std::string cellText(const Endings& endings, bool nameAll) {
    if (endings.empty())
        return "-";
    const auto usual =
        std::max_element(endings.begin(), endings.end(), [](const auto& one, const auto& other) {
            return one.second.size() < other.second.size();
        });
    std::string text = nameAll ? "" : usual->first;
    for (const auto& [ending, faults] : endings) {
        if (nameAll || ending != usual->first)
            text += (text.empty() ? "" : "; ") + ending + ": " + listed(faults);
    }
    return text;
}

std::string endingsRow(const Command& command, const SeenRow& row) {
    std::vector<Endings> cells(faultColumns().size());
    for (const auto& [fault, seen] : row)
        cells[columnOf(fault)][endingOf(seen)].push_back(fault);
    std::string text = "|" + code(command.method) + (command.part.empty() ? "" : " " + command.part) + "|";
    for (std::size_t i = 0; i < cells.size(); ++i)
        text += cellText(cells[i], i + 1 == cells.size()) + "|";
    return text;
}

/// The faults behind each column but the last, whose cells name theirs.
std::string columnTable() {
    std::vector<std::set<std::string>> faults(faultColumns().size());
    for (const Command& command : commands()) {
        for (const auto& [fault, expected] : command.cells)
            faults[columnOf(fault)].insert(fault);
    }
    std::string text = "|Column|Faults|\n|---|---|\n";
    for (std::size_t i = 0; i + 1 < faults.size(); ++i)
        text += "|" + std::string(faultColumns()[i].name) + "|" +
                listed({faults[i].begin(), faults[i].end()}) + "|\n";
    return text;
}

std::string counted(const std::map<std::string, SeenRow>& rows) {
    std::size_t cells = 0;
    for (const auto& [name, row] : rows)
        cells += row.size();
    return std::to_string(rows.size()) + " rows, " + std::to_string(cells) + " cells";
}

std::string endingsHead(const std::map<std::string, SeenRow>& rows) {
    return R"(# Reliability

How each command of the camera client ends under each fault of the [virtual camera](virtual-camera.md#faults):
)" + counted(rows) +
           R"(. The fault matrix writes this page, in virtual time or with the real serial library:

    scripts/fault-matrix.sh [--real-time]

Times and log lines of each cell are in `out/fault-matrix/times.md` afterwards.

|Ending|Meaning|
|---|---|
|works|the value or success of a good answer|
|other|looks like success, with another value or effect: what the camera sent, a different picture, an incomplete image|
|fails|the command's failure value: false, empty text, empty list, no file|
|waits|intended: reads until the link is stopped, then ends at once|
|-|no fault of the column applies|

A cell gives the usual ending, then the exceptions with their faults. The last column names every fault. A **bold**
ending violates the test. A command with several exchanges has a row for each.

The test also checks the log lines, the time limit (tries times timeout, plus pauses) and that a failure leaves no file;
only the last deletion of `takePic` comes after the picture. Then a heartbeat and the same command with a good answer
must work: at once, or after the upload silence where the camera still expects upload data. First, a lost device
comes back and a camera that stays down is switched on. An answer that was held back spoils one heartbeat.

The client finds answers behind garbage and in pieces, and ignores their check code, address and command. A picture
transfer checks only the number of bytes and, in the first generation, the result. `opDoor` reads no answer, so no
fault affects it. The first read completes the answer to an image announcement; the client takes a second copy
(`glue`) for the verdict.

)" + columnTable();
}

/// Findings of tests/updates/slowline_test.cpp.
constexpr const char* slowLines = R"(
## Slow lines

At 9600 baud, in virtual time:

|Transfer|Time|
|---|---|
|uploads and pictures of 20000 bytes|20.8 s longer than without a rate, the time of their bytes|
|JSON picture|1.03 times its bytes' time|
|second protocol, file held|8.5 s, 0.3 s longer|
|first-generation list|at most 16 pictures come within its ten reads of 50 ms; V1 lists come whole|

A write waits at most 1 s; 512 bytes take 0.53 s. Neither a queue that takes what fits nor a Linux terminal, writable
below 256 waiting bytes, cuts one; system images and models wait for an empty queue. A queue that is refilled only when
nearly empty, as a pseudo-terminal's, cuts application images, which fail. After a short write a system image's result
stays true, but status bar and `shelf-camera` tell the failure.
)";

std::string timesHead(const std::map<std::string, SeenRow>& rows) {
    return "# Fault matrix: endings, times in ms, log lines\n\n" + counted(rows) +
           ". docs/reliability.md explains the endings. In log lines, * stands for any text.\n";
}

std::string endingsPage(const std::map<std::string, SeenRow>& rows) {
    std::string text = endingsHead(rows);
    for (const Family& family : families()) {
        text += "\n## " + family.name + "\n\n|Command|";
        for (const FaultColumn& column : faultColumns())
            text += std::string(column.name) + "|";
        text += "\n|---|";
        for (std::size_t i = 0; i < faultColumns().size(); ++i)
            text += "---|";
        text += "\n";
        for (const Command* command : family.commands)
            text += endingsRow(*command, rows.at(nameOf(*command))) + "\n";
    }
    return text + slowLines;
}

std::string timesPage(const std::map<std::string, SeenRow>& rows) {
    std::string text = timesHead(rows);
    for (const Family& family : families()) {
        text += "\n## " + family.name + "\n";
        const std::vector<std::string> faults = faultsOf(family);
        for (std::size_t at = 0; at < faults.size(); at += columnsPerTable) {
            const auto first = faults.begin() + static_cast<std::ptrdiff_t>(at);
            const auto count = std::min(columnsPerTable, faults.size() - at);
            text += table(family, rows, {first, first + static_cast<std::ptrdiff_t>(count)});
        }
        text += "\nLog lines:\n" + logTable(family);
    }
    return text;
}

bool write(const fs::path& file, const std::string& text) {
    std::ofstream out(file);
    out << text;
    out.close();
    return out.good();
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
    for (const Command& command : commands())
        rows[nameOf(command)] = readRow(fileOf(folder, command));
    const bool timesWritten = write(page, timesPage(rows));
    return write(page.parent_path() / endingsFile, endingsPage(rows)) && timesWritten;
}

} // namespace faultmatrix
