// Reasons of failed commands.
#pragma once

#include "link/lineturn.h"

#include <cstdint>

/// How a command ended.
enum class CommandEnd : std::uint8_t {
    done,
    sent,         ///< the request was written; the command reads no answer
    empty,        ///< the camera answered without a value
    noPictures,   ///< the camera answered that it holds none
    noAnswer,     ///< nothing came
    unusable,     ///< incomplete answer, or the answer to another request
    refused,      ///< the camera answered with a failure
    portFailed,   ///< the serial library failed
    portNotOpen,  ///< no port was chosen when the link was opened
    stopped,      ///< the link is being closed, or endDownload() was called
    lineBusy,     ///< a whole job has the line
    fileUnusable, ///< a picture that could not be written
    failed,       ///< anything else
    // uploads
    fileMissing,      ///< the file could not be opened
    fileUnreadable,   ///< a directory, or a read that failed
    fileTooLarge,     ///< 2 GiB or more
    offsetBeyondFile, ///< resume offset behind the end of the file
    noVerdict,        ///< all sent, no verdict
    verdictBad,       ///< all sent, bad verdict
    writtenShort,     ///< the port did not take all bytes in time, and no good verdict came
    dataNotSupported, ///< second protocol: the camera asks for data packets, which are not sent
};

struct CommandReport {
    CommandEnd end = CommandEnd::done;
    LineUser busyWith = LineUser::none; ///< the job that has the line; for CommandEnd::lineBusy

    [[nodiscard]] bool succeeded() const { return end <= CommandEnd::noPictures; }
};

/// Collects the reports of this thread's commands: the first failure, else the last end. Scopes may nest.
class ReportScope {
public:
    ReportScope();
    ~ReportScope();
    ReportScope(const ReportScope&) = delete;
    ReportScope& operator=(const ReportScope&) = delete;

    [[nodiscard]] const CommandReport& report() const { return m_report; }

    /// Called at the end of each command.
    static void tell(const CommandReport& report);

private:
    CommandReport m_report;
    ReportScope* m_outer;
};
