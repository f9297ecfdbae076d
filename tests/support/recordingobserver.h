// Records the reports of a borrower.
#pragma once

#include "linkaccess/linkuse.h"

#include <QStringList>

struct RecordingObserver final : LinkUseObserver {
    int missing = 0;
    QStringList began;
    QStringList ended; ///< names with " ok" or " failed"
    UseOutcome last;

    void clientMissing() override { ++missing; }
    void useBegan(const std::shared_ptr<const LinkUse>& use) override { began.append(use->name); }
    void useEnded(const LinkUse& use, const UseOutcome& outcome) override {
        last = outcome;
        ended.append(use.name +
                     (outcome.report.succeeded() ? QStringLiteral(" ok") : QStringLiteral(" failed")));
    }
};
