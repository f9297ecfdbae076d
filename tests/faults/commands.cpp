// Common cells of the rows.
#include "tests/faults/command.h"

#include <ostream>

namespace faultmatrix {

std::string nameOf(const Command& command) {
    return command.part.empty() ? command.method : command.method + " (" + command.part + ")";
}

std::ostream& operator<<(std::ostream& out, const Command& command) {
    return out << nameOf(command);
}

const char* nameOf(Ending ending) {
    switch (ending) {
    case Ending::works:
        return "works";
    case Ending::otherValue:
        return "other";
    case Ending::fails:
        return "fails";
    case Ending::endless:
        return "waits";
    }
    return "";
}

Column frameColumn(const Lines& lines) {
    const Expected good{Ending::works, lines.good, {}};
    const Expected unanswered{Ending::fails, lines.unanswered, {}};
    const Expected lost{Ending::fails, lines.whenLost(), {}};
    return {
        {"silent", unanswered},
        {"delay=60", good},
        {"late", unanswered},
        {"glue", unanswered},
        {"raw=414243", unanswered},
        {"truncate=1", unanswered},
        {"truncate=6", unanswered},
        {"stray=1", unanswered},
        {"before=33", good},
        {"before=AA", good},
        {"before=AA33", good},
        {"before=335A00AA", good},
        {"split=1,60", good},
        {"split=9,60", good},
        {"length=+1", unanswered},
        {"length=-1", unanswered},
        {"length=0xFFFFFFFF", unanswered},
        {"bad-check", good},
        {"zero-check", good},
        {"address=0x55", good},
        {"command=0x21", good},
        {"hang-up=0", lost},
        {"hang-up=5", lost},
        {"stop-reading=300", good},
    };
}

Column with(Column column, const Column& changed) {
    for (const auto& [fault, expected] : changed)
        column[fault] = expected;
    return column;
}

Column without(Column column, const std::vector<std::string>& faults) {
    for (const std::string& fault : faults)
        column.erase(fault);
    return column;
}

const std::vector<Command>& commands() {
    static const std::vector<Command> all = [] {
        std::vector<Command> rows;
        for (const auto& part : {statusCommands(), pictureCommands(), jsonCommands(), uploadCommands()})
            rows.insert(rows.end(), part.begin(), part.end());
        return rows;
    }();
    return all;
}

} // namespace faultmatrix
