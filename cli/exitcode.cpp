#include "cli/exitcode.h"

namespace cli {

ExitCode exitCodeOf(CommandEnd end) {
    switch (end) {
    case CommandEnd::done:
    case CommandEnd::sent:
    case CommandEnd::empty:
    case CommandEnd::noPictures:
        return ExitCode::done;
    case CommandEnd::noAnswer:
        return ExitCode::noAnswer;
    case CommandEnd::portFailed:
    case CommandEnd::portNotOpen:
        return ExitCode::portFailed;
    case CommandEnd::stopped:
        return ExitCode::interrupted;
    case CommandEnd::fileUnusable:
    case CommandEnd::fileMissing:
    case CommandEnd::fileUnreadable:
    case CommandEnd::fileTooLarge:
        return ExitCode::file;
    case CommandEnd::unusable:
    case CommandEnd::refused:
    case CommandEnd::lineBusy:
    case CommandEnd::failed:
    case CommandEnd::offsetBeyondFile:
    case CommandEnd::noVerdict:
    case CommandEnd::verdictBad:
    case CommandEnd::writtenShort:
    case CommandEnd::dataNotSupported:
        break;
    }
    return ExitCode::refused;
}

} // namespace cli
