// Checks of all answers.
#include "conform/checkfunctions.h"

#include <algorithm>
#include <map>

namespace conform {

namespace {

/// Answers to one request in which the deviation was looked for.
struct Count {
    int seen = 0;
    int deviating = 0;
    std::map<std::string, int> forms;
    const Exchange* first = nullptr;

    [[nodiscard]] bool always() const { return 2 * deviating >= seen; }
    [[nodiscard]] std::string usualForm() const {
        return std::max_element(forms.begin(), forms.end(),
                                [](const auto& a, const auto& b) { return a.second < b.second; })
            ->first;
    }
};

Count countOf(const Evidence& evidence, const std::string_view name, Deviation deviation) {
    Count count;
    for (const Exchange* const exchange : evidence.named(name)) {
        if (!exchange->isAnswered() && deviation != &noAnswer)
            continue;
        ++count.seen;
        const auto form = deviation(*exchange, inspect(*exchange));
        if (!form)
            continue;
        ++count.deviating;
        ++count.forms[*form];
        if (count.first == nullptr)
            count.first = exchange;
    }
    return count;
}

void addCount(Finding& finding, const std::string& name, const Count& count) {
    const std::string form = count.usualForm();
    finding.outcome = Outcome::different;
    if (finding.detail.empty()) // its proof is that of a good answer
        finding.proof = count.first;
    finding.detail += (finding.detail.empty() ? "" : ", ") + name + ' ' + form;
    if (count.deviating < count.seen)
        finding.detail += ' ' + std::to_string(count.deviating) + '/' + std::to_string(count.seen);
    if (count.always())
        finding.profile.emplace_back("fault", form + '@' + name);
}

} // namespace

bool isAny(const ReadingRequest& /*request*/) {
    return true;
}

bool hasForm(const ReadingRequest& request) {
    return request.family != Family::gyro;
}

bool hasId(const ReadingRequest& request) {
    return request.hasId();
}

bool isHeartbeat(const ReadingRequest& request) {
    return request.family == Family::heartbeat;
}

Finding everyAnswer(const Evidence& evidence, Deviation deviation,
                    bool (*concerns)(const ReadingRequest& request)) {
    Finding finding;
    for (const ReadingRequest& request : evidence.requests) {
        if (!concerns(request))
            continue;
        const Count count = countOf(evidence, request.name, deviation);
        if (count.deviating > 0) {
            addCount(finding, std::string(request.name), count);
        } else if (count.seen > 0 && finding.outcome == Outcome::notSeen) {
            finding.outcome = Outcome::good;
            finding.proof = exampleOf(evidence, request.name);
        }
    }
    return finding;
}

} // namespace conform
