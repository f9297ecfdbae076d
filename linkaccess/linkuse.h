// What the owner of the link is told about the use that windows make of it.
#pragma once

#include "link/clock.h"
#include "link/commandreport.h"

#include <QString>

#include <memory>

/// One command or job over the link while it runs. May be destroyed without a call of useEnded().
struct LinkUse {
    QString name; ///< what the technician calls it, in the infinitive; empty: not worth telling
    Clock::Time began;
    bool blocking; ///< runs on the user-interface thread: no events are processed until it ends
};

/// How a use ended.
struct UseOutcome {
    CommandReport report;
    bool partly = false; ///< of several values at least one was read, although the report tells a failure
    QString text = {};   ///< says it in place of the report; may be empty
};

/// Follows what borrowers do. User-interface thread only; outlives the borrowers that it follows.
class LinkUseObserver {
public:
    LinkUseObserver() = default;
    LinkUseObserver(const LinkUseObserver&) = delete;
    LinkUseObserver& operator=(const LinkUseObserver&) = delete;

    /// A command was asked for although no link is open; it has failed.
    virtual void clientMissing() = 0;
    /// The use lasts until useEnded, or until its last owner drops it: a job whose window died, or whose link
    /// was closed, ends without a word.
    virtual void useBegan(const std::shared_ptr<const LinkUse>& use) = 0;
    virtual void useEnded(const LinkUse& use, const UseOutcome& outcome) = 0;

protected:
    ~LinkUseObserver() = default;
};

/// The outcome of a job with this result. A result that has words of its own gives them as
/// `QString outcomeText(const CommandReport&) const`.
template <typename Result>
[[nodiscard]] UseOutcome outcomeOf(const Result& result, const CommandReport& report) {
    UseOutcome outcome{report};
    if constexpr (requires { result.outcomeText(report); }) {
        outcome.text = result.outcomeText(report);
    } else if constexpr (requires { result.front().empty(); }) {
        for (const auto& value : result)
            outcome.partly = outcome.partly || (!report.succeeded() && !value.empty());
    }
    return outcome;
}
