#include "tests/simulation/scenario.h"

#include <algorithm>
#include <ostream>
#include <sstream>

namespace simulation {

const std::vector<StepKindInfo>& stepKinds() {
    using enum Focus;
    static const std::vector<StepKindInfo> kinds = {
        {StepKind::link, "link", 10, false, links},
        {StepKind::press, "press", 40, false},
        {StepKind::menu, "menu", 14, false},
        {StepKind::type, "type", 6, false, uploads},
        {StepKind::row, "row", 10, false, pictures},
        {StepKind::front, "front", 8, false},
        {StepKind::close, "close", 4, false},
        {StepKind::capture, "capture", 8, false, pictures},
        {StepKind::upload, "upload", 8, false, uploads},
        {StepKind::port, "port", 3, false, links},
        {StepKind::aid, "aid", 8, false},
        {StepKind::use, "use", 36, false, pictures},
        {StepKind::status, "status", 4, false},
        {StepKind::drag, "drag", 4, false},
        {StepKind::replug, "replug", 2, true, links},
        {StepKind::wait, "wait", 8, false, uploads},
        {StepKind::closeProgram, "close-program", 1, false},
        {StepKind::flip, "flip", 3, true},
        {StepKind::drop, "drop", 3, true},
        {StepKind::repeat, "repeat", 2, true},
        {StepKind::latency, "latency", 2, true},
        {StepKind::fault, "fault", 6, true},
        {StepKind::trouble, "trouble", 12, true},
        {StepKind::reboot, "reboot", 2, true},
        {StepKind::pull, "pull", 2, true},
        {StepKind::plug, "plug", 4, false},
        {StepKind::fail, "fail", 2, true},
        {StepKind::clog, "clog", 1, true, uploads},
        {StepKind::obstruct, "obstruct", 1, true, pictures},
    };
    return kinds;
}

const StepKindInfo& infoOf(StepKind kind) {
    return stepKinds().at(static_cast<std::size_t>(kind));
}

std::string toText(const Step& step) {
    return std::string(infoOf(step.kind).name) + ' ' + std::to_string(step.choice) + ' ' +
           std::to_string(step.detail) + " +" + std::to_string(step.pauseMs);
}

std::string toText(const Scenario& scenario) {
    std::string text = "type=" + std::to_string(static_cast<int>(scenario.type)) +
                       " order=" + std::to_string(scenario.seed) +
                       " preemption=" + std::to_string(scenario.preemption) +
                       " paints=" + (scenario.paints ? "1" : "0");
    for (const Step& step : scenario.steps)
        text += "; " + toText(step);
    return text;
}

namespace {

std::optional<Step> parseStep(const std::string& text) {
    std::istringstream words(text);
    std::string name;
    std::string pause;
    Step step;
    if (!(words >> name >> step.choice >> step.detail >> pause) || pause.size() < 2 || pause.front() != '+')
        return std::nullopt;
    const auto& kinds = stepKinds();
    const auto kind =
        std::find_if(kinds.begin(), kinds.end(), [&name](const auto& each) { return each.name == name; });
    if (kind == kinds.end())
        return std::nullopt;
    step.kind = kind->kind;
    step.pauseMs = static_cast<std::uint32_t>(std::strtoul(pause.c_str() + 1, nullptr, 10));
    return step;
}

} // namespace

std::optional<Scenario> parseScenario(const std::string& text) {
    std::istringstream parts(text);
    std::string part;
    Scenario scenario;
    std::getline(parts, part, ';');
    int type = 0;
    unsigned long long order = 0;
    unsigned int preemption = 0;
    int paints = 0;
    if (std::sscanf(part.c_str(), "type=%d order=%llu preemption=%u paints=%d", &type, &order, &preemption,
                    &paints) != 4)
        return std::nullopt;
    scenario.paints = paints != 0;
    scenario.type = static_cast<protocol::CameraType>(type);
    scenario.seed = order;
    scenario.preemption = preemption;
    while (std::getline(parts, part, ';')) {
        const auto step = parseStep(part);
        if (!step)
            return std::nullopt;
        scenario.steps.push_back(*step);
    }
    return scenario;
}

std::ostream& operator<<(std::ostream& out, const Scenario& scenario) {
    return out << toText(scenario);
}

} // namespace simulation
