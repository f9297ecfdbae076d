// How commands ended, beside their results.
#pragma once

#include "link/lineturn.h"

#include <cstdint>

/// How a command ended.
enum class CommandEnd : std::uint8_t {
    done,
    sent,         ///< no answer is read: the request was written, no more is known
    empty,        ///< the camera answered without a value
    noPictures,   ///< the camera answered that it holds none
    noAnswer,     ///< nothing came
    unusable,     ///< something came, but no whole answer, or the answer to another question
    refused,      ///< the camera answered with a failure
    portFailed,   ///< the serial library failed
    portNotOpen,  ///< no port was chosen when the link was opened
    stopped,      ///< the link is being closed, or the transfer was ended for another
    lineBusy,     ///< a whole job has the line
    fileUnusable, ///< a picture that could not be written
    failed,       ///< anything else
    // uploads
    fileMissing,      ///< the file could not be opened
    fileUnreadable,   ///< a directory, or a read that failed
    fileTooLarge,     ///< 2 GiB or more
    offsetBeyondFile, ///< the camera wants to go on behind the file's end
    noVerdict,        ///< all sent, the camera did not say how it ended
    verdictBad,       ///< all sent, the camera calls it bad
    dataNotSupported, ///< second protocol: the camera asks for data packets, which are not sent
};

struct CommandReport {
    CommandEnd end = CommandEnd::done;
    LineUser busyWith = LineUser::none; ///< the job that has the line; for CommandEnd::lineBusy

    [[nodiscard]] bool succeeded() const { return end <= CommandEnd::noPictures; }
};

/// Keeps the first failure of all commands that this thread runs while it lives, else the end of the last
/// one. Scopes may nest: each hears of every command.
class ReportScope {
public:
    ReportScope();
    ~ReportScope();
    ReportScope(const ReportScope&) = delete;
    ReportScope& operator=(const ReportScope&) = delete;

    [[nodiscard]] const CommandReport& report() const { return m_report; }

    /// A command of this thread has ended. Called by the commands.
    static void tell(const CommandReport& report);

private:
    CommandReport m_report;
    ReportScope* m_outer;
};
