// Scenarios from seeds, and shorter ones from failing ones, by RapidCheck.
#include "tests/simulation/runner.h"
#include "tests/simulation/workplace.h"

#include <algorithm>
#include <array>
#include <rapidcheck.h>

namespace simulation {

namespace {

constexpr int mostSteps = 30;
constexpr std::uint32_t paintingOneOf = 60;
constexpr int mostShrinkingRuns = 1500;

/// Of the whole range, whatever the size of the scenario.
rc::Gen<std::uint32_t> numberBelow(std::uint32_t limit) {
    return rc::gen::resize(rc::kNominalSize, rc::gen::inRange<std::uint32_t>(0, limit));
}

unsigned int weightOf(const StepKindInfo& info, Focus focus) {
    return info.weight * (focus != Focus::nothing && info.focus == focus ? focusFactor : 1);
}

rc::Gen<StepKind> kindGenerator(Focus focus) {
    std::uint32_t weights = 0;
    for (const StepKindInfo& info : stepKinds())
        weights += weightOf(info, focus);
    return rc::gen::map(numberBelow(weights), [focus](std::uint32_t number) {
        for (const StepKindInfo& info : stepKinds()) {
            const unsigned int weight = weightOf(info, focus);
            if (number < weight)
                return info.kind;
            number -= weight;
        }
        return StepKind::wait;
    });
}

/// Mostly quick, sometimes in the middle of something, sometimes long after.
rc::Gen<std::uint32_t> pauseGenerator() {
    return rc::gen::mapcat(numberBelow(10), [](std::uint32_t kind) {
        return numberBelow(kind < 5 ? 60 : kind < 9 ? 1500 : 15000);
    });
}

rc::Gen<Step> stepGenerator(Focus focus) {
    return rc::gen::build<Step>(rc::gen::set(&Step::kind, rc::gen::noShrink(kindGenerator(focus))),
                                rc::gen::set(&Step::pauseMs, pauseGenerator()),
                                rc::gen::set(&Step::choice, numberBelow(5000)),
                                rc::gen::set(&Step::detail, numberBelow(5000)));
}

/// Few faults.
Scenario arranged(Scenario scenario) {
    std::size_t faults = 0;
    std::erase_if(scenario.steps,
                  [&faults](const Step& step) { return infoOf(step.kind).fault && ++faults > mostFaults; });
    return scenario;
}

rc::Gen<std::vector<Step>> stepsGenerator() {
    return rc::gen::mapcat(rc::gen::noShrink(numberBelow(focuses)), [](std::uint32_t focus) {
        return rc::gen::resize(
            mostSteps, rc::gen::container<std::vector<Step>>(stepGenerator(static_cast<Focus>(focus))));
    });
}

rc::Gen<Scenario> scenarioGenerator() {
    return rc::gen::map(
        rc::gen::build<Scenario>(
            rc::gen::set(&Scenario::seed,
                         rc::gen::noShrink(rc::gen::resize(rc::kNominalSize,
                                                           rc::gen::inRange<std::uint64_t>(0, 1U << 30U)))),
            rc::gen::set(&Scenario::type,
                         rc::gen::noShrink(rc::gen::element(
                             protocol::CameraType::ostra, protocol::CameraType::ostra,
                             protocol::CameraType::dorvel, protocol::CameraType::quenta,
                             protocol::CameraType::salesDynamic, protocol::CameraType::salesDynamic))),
            rc::gen::set(&Scenario::preemption, rc::gen::element<std::uint32_t>(0, 0, 40, 200)),
            rc::gen::set(&Scenario::paints, rc::gen::map(numberBelow(paintingOneOf),
                                                         [](std::uint32_t number) { return number == 1; })),
            rc::gen::set(&Scenario::steps, stepsGenerator())),
        &arranged);
}

rc::Shrinkable<Scenario> shrinkableOf(std::uint64_t seed) {
    return scenarioGenerator()(rc::Random(seed), mostSteps);
}

/// Without a link there is little to see.
Scenario withLink(Scenario scenario) {
    if (const emulator::CameraProfile* const profile = followedProfile())
        scenario.type = profile->settings.type;
    scenario.steps.insert(scenario.steps.begin(), Step{StepKind::link, 150, 0, 0});
    return scenario;
}

std::string ruleOf(const Outcome& outcome) {
    return outcome.complaints.empty()
               ? std::string()
               : outcome.complaints.front().substr(0, outcome.complaints.front().find(':'));
}

} // namespace

Scenario scenarioOf(std::uint64_t seed) {
    return withLink(shrinkableOf(seed).value());
}

Scenario shrunk(std::uint64_t seed, const Outcome& failure) {
    const std::string rule = ruleOf(failure);
    rc::Shrinkable<Scenario> shortest = shrinkableOf(seed);
    int runs = 0;
    for (bool shorter = true; shorter;) {
        shorter = false;
        auto candidates = shortest.shrinks();
        while (auto candidate = candidates.next()) {
            if (++runs > mostShrinkingRuns)
                return withLink(shortest.value());
            if (ruleOf(runInChild(withLink(candidate->value()))) == rule) {
                shortest = *candidate;
                shorter = true;
                break;
            }
        }
    }
    return withLink(shortest.value());
}

} // namespace simulation
