#include "link/runcommand.h"

#include "link/diagnostics.h"
#include "link/guarded.h"

#include <stdexcept>

namespace {

struct LineBusy : std::runtime_error {
    LineBusy() : std::runtime_error("line is busy") {}
};

bool isDownloadEnded() {
    try {
        throw;
    } catch (const DownloadEnded&) {
        return true;
    } catch (...) {
        return false;
    }
}

CommandEnd endOfException() {
    try {
        throw;
    } catch (const LineBusy&) {
        return CommandEnd::lineBusy;
    } catch (const LinkStopped&) {
        return CommandEnd::stopped;
    } catch (const DownloadEnded&) {
        return CommandEnd::stopped;
    } catch (const serial::PortNotOpenedException&) {
        return CommandEnd::portNotOpen;
    } catch (const serial::SerialException&) {
        return CommandEnd::portFailed;
    } catch (const serial::IOException&) {
        return CommandEnd::portFailed;
    } catch (const protocol::ShortAnswer&) {
        return CommandEnd::unusable;
    } catch (...) {
        return CommandEnd::failed;
    }
}

} // namespace

FailureLog::FailureLog(const char* text) : ownLine([text] { diagnostics::line(text); }) {}

RunningCommand::~RunningCommand() {
    if (!m_failed)
        m_report.end = m_line.end();
    ReportScope::tell(m_report);
}

void RunningCommand::begin() {
    switch (m_turn.refusal()) {
    case LineTurn::Refusal::none:
        break;
    case LineTurn::Refusal::busy:
        throw LineBusy();
    case LineTurn::Refusal::stopped:
        throw LinkStopped();
    }
    m_line.setEnd(CommandEnd::done);
}

void RunningCommand::fail(const FailureLog& log) {
    m_failed = true;
    m_report = {endOfException(), m_turn.busyWith()};
    diagnostics::line(log.exceptionTag, exceptionText());
    if (isDownloadEnded())
        m_line.discardRest();
    const bool thrownByPort = m_report.end == CommandEnd::portFailed ||
                              m_report.end == CommandEnd::portNotOpen || m_report.end == CommandEnd::failed;
    if (thrownByPort && log.ownLine)
        log.ownLine();
}
