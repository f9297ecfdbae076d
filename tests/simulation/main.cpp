// simulate: runs sessions from seeds; see README.md.
#include "app/application.h"
#include "tests/simulation/runner.h"

#include <CLI/CLI.hpp>

#include <cstdio>

using namespace simulation;

int main(int argc, char** argv) {
    CLI::App options("Runs simulated sessions of the tool and checks the rules that must hold in each.");
    std::uint64_t first = 1;
    std::uint64_t sessions = 100;
    bool timeline = false;
    options.add_option("--first", first, "first seed");
    options.add_option("--sessions", sessions, "number of seeds");
    options.add_flag("--timeline", timeline, "print the timelines");
    bool shrink = false;
    options.add_flag("--shrink", shrink, "shorten the scenarios that fail");
    CLI11_PARSE(options, argc, argv);
    qputenv("QT_NO_GLIB", "1");
    qputenv("QT_HASH_SEED", "0");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const Application application(argc, argv);
    warmUp();
    std::uint64_t failures = 0;
    double seconds = 0;
    for (std::uint64_t seed = first; seed < first + sessions; ++seed) {
        const Scenario scenario = scenarioOf(seed);
        const Outcome outcome = runInChild(scenario, {timeline});
        seconds += outcome.seconds;
        if (timeline)
            std::printf("%s\n%s", toText(scenario).c_str(), outcome.timeline.c_str());
        if (outcome.complaints.empty())
            continue;
        ++failures;
        std::printf("seed %llu: %s\n", static_cast<unsigned long long>(seed), toText(scenario).c_str());
        for (const std::string& complaint : outcome.complaints)
            std::printf("  %s\n", complaint.c_str());
        if (shrink)
            std::printf("  shrunk: %s\n", toText(shrunk(seed, outcome)).c_str());
    }
    std::printf("%llu sessions, %.0f s of virtual time, %llu failed\n", static_cast<unsigned long long>(sessions),
                seconds, static_cast<unsigned long long>(failures));
    return failures == 0 ? 0 : 1;
}
