// The rows of the fault matrix: commands and their expected result for each fault.
#pragma once

#include "link/camerasp.h"
#include "tests/support/testfront.h"

#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace faultmatrix {

using std::chrono::milliseconds;

enum class Ending {
    works,      ///< the value, or the success, that a good answer gives
    otherValue, ///< it ends as if all were well, but with another value or effect
    fails,      ///< its own failure value
    endless,    ///< it waits until the link is stopped
};

/// Expected result of a cell.
struct Expected {
    Ending ending = Ending::works;
    /// Patterns of the shell; each fits a line of the log. No line fits another pattern of the row.
    std::vector<std::string> lines;
    /// In place of the command's bound.
    std::optional<milliseconds> within;
};

/// By fault, as the virtual camera takes it.
using Column = std::map<std::string, Expected>;

/// Objects that a command uses.
struct Bench {
    CameraSp& client;
    TestFront& front;
    std::uint8_t id;        ///< of the stored picture, the only one
    std::string updateFile; ///< path; empty for commands that are no uploads
};

struct Command {
    std::string method;  ///< of CameraSp
    std::string part;    ///< the exchange that is struck, of a command that has several; else empty
    std::string family;  ///< heading on the page
    std::string request; ///< as the virtual camera calls it, with the occurrence that is struck
    emulator::CameraType type = emulator::CameraType::ostra;
    std::function<Ending(Bench&)> run;
    milliseconds longest{0}; ///< bound of every cell
    Column cells;
    std::vector<std::string> goodLines;
    /// Time after which an endless command is stopped.
    milliseconds patience{1500};
    bool dropsGarbage = true; ///< logs each byte in front of an answer
    bool leavesFile = false;  ///< even when it fails
    bool takesLate = false;   ///< a later request of the same command takes the held-back answer
    bool uploads = false;
};

/// For messages of the test.
std::ostream& operator<<(std::ostream& out, const Command& command);
/// "takePic (read)"
[[nodiscard]] std::string nameOf(const Command& command);
[[nodiscard]] const char* nameOf(Ending ending);

/// In the order of the page.
[[nodiscard]] const std::vector<Command>& commands();

// Each in a source of its own.
[[nodiscard]] std::vector<Command> statusCommands();
[[nodiscard]] std::vector<Command> pictureCommands();
[[nodiscard]] std::vector<Command> jsonCommands();
[[nodiscard]] std::vector<Command> uploadCommands();

/// Log lines of success, of an incomplete answer, of a vanished device.
struct Lines {
    std::vector<std::string> good;
    std::vector<std::string> unanswered;
    std::vector<std::string> lost{}; ///< empty: the exception's line and the unanswered command's

    [[nodiscard]] std::vector<std::string> whenLost() const {
        if (!lost.empty())
            return lost;
        std::vector<std::string> all{"command failed:*"};
        all.insert(all.end(), unanswered.begin(), unanswered.end());
        return all;
    }
};

/// What every command that waits for a whole frame does. Answers are found behind garbage and in pieces;
/// check code, address and command of an answer are not looked at.
[[nodiscard]] Column frameColumn(const Lines& lines);
/// The first column with the cells of the second put in or replaced.
[[nodiscard]] Column with(Column column, const Column& changed);
/// Without the cells of these faults.
[[nodiscard]] Column without(Column column, const std::vector<std::string>& faults);

[[nodiscard]] inline Ending endingOf(bool success) {
    return success ? Ending::works : Ending::fails;
}

/// An empty value is a failure.
template <typename Value>
[[nodiscard]] Ending endingOf(const Value& value, const Value& good) {
    return value == good ? Ending::works : value.empty() ? Ending::fails : Ending::otherValue;
}

} // namespace faultmatrix
