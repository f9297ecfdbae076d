// Uses of the link by windows, for the owner of the link.
#pragma once

#include "link/clock.h"
#include "link/commandreport.h"

#include <QString>

#include <memory>

/// One command or job over the link while it runs. May be destroyed without a call of useEnded().
struct LinkUse {
    QString name; ///< shown to the technician, in the infinitive; empty: not shown
    Clock::Time began;
    bool blocking; ///< runs on the user-interface thread: no events are processed until it ends
};

/// How a use ended.
struct UseOutcome {
    CommandReport report;
    bool partly = false; ///< some values were read although the report is a failure
    QString text = {};   ///< replaces the words of the report; may be empty
};

/// Observes borrowers. User-interface thread; outlives the borrowers.
class LinkUseObserver {
public:
    LinkUseObserver() = default;
    LinkUseObserver(const LinkUseObserver&) = delete;
    LinkUseObserver& operator=(const LinkUseObserver&) = delete;

    /// A command failed because no link is open.
    virtual void clientMissing() = 0;
    /// The use lasts until useEnded or until its last owner releases it: useEnded is not called if the window
    /// died or the link was closed.
    virtual void useBegan(const std::shared_ptr<const LinkUse>& use) = 0;
    virtual void useEnded(const LinkUse& use, const UseOutcome& outcome) = 0;

protected:
    ~LinkUseObserver() = default;
};

/// The outcome of a job. A result may give its own words by `QString outcomeText(const CommandReport&)
/// const`.
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
