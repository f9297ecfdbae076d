// simulate: runs simulated sessions from seeds.
#include "app/application.h"
#include "tests/simulation/runner.h"
#include "tests/simulation/workplace.h"
#include "tests/simulation/world/scheduler.h"

#include <CLI/CLI.hpp>
#include <array>
#include <atomic>
#include <cstdio>
#include <new>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace simulation;

namespace {

struct Options {
    std::uint64_t first = 1;
    std::uint64_t sessions = 100;
    unsigned int jobs = std::max(1U, std::thread::hardware_concurrency());
    std::uint64_t seed = 0;
    std::string scenario;
    std::string commit;
    std::string profile;
    bool noShrinking = false;
    bool stopAtFirst = false;
    bool window = false;
    double pace = 1;
};

struct Totals {
    std::uint64_t sessions = 0;
    std::uint64_t failed = 0;
    double seconds = 0;
    std::uint64_t hash = 0; ///< the sum of the sessions'
};

/// One write: several processes share the output.
void print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

std::string hashText(std::uint64_t hash) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(hash));
    return text.data();
}

std::string describe(const Outcome& outcome) {
    std::string text;
    for (const std::string& complaint : outcome.complaints)
        text += "  " + complaint + '\n';
    return text;
}

std::string counterexample(const Options& options, std::uint64_t seed, const Outcome& outcome) {
    std::string text = "seed " + std::to_string(seed);
    if (!options.commit.empty())
        text += ", commit " + options.commit;
    text += '\n' + describe(outcome);
    if (options.noShrinking)
        return text;
    const Scenario shortest = shrunk(seed, outcome);
    return text + "  in " + std::to_string(shortest.steps.size()) + " steps: --scenario \"" +
           toText(shortest) + "\"\n";
}

bool follow(const std::string& profile) {
    try {
        followProfile(emulator::loadCameraProfile(profile));
        return true;
    } catch (const trace::ProfileError& error) {
        std::fprintf(stderr, "simulate: %s\n", error.what());
        return false;
    }
}

using Counter = std::atomic<std::uint64_t>;

/// Sessions that the jobs have begun, in memory that they share.
Counter& begunSessions() {
    static void* const place =
        ::mmap(nullptr, sizeof(Counter), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (place == MAP_FAILED)
        throw std::runtime_error("no memory for several processes");
    static Counter* const counter = new (place) Counter(0);
    return *counter;
}

Totals runShare(const Options& options, unsigned int share) {
    world::stayOnProcessor(share);
    startServers();
    Totals totals;
    for (std::uint64_t i = begunSessions()++; i < options.sessions; i = begunSessions()++) {
        const std::uint64_t seed = options.first + i;
        const Outcome outcome = runInChild(scenarioOf(seed));
        ++totals.sessions;
        totals.seconds += outcome.seconds;
        totals.hash += outcome.hash;
        if (outcome.complaints.empty())
            continue;
        ++totals.failed;
        print(counterexample(options, seed, outcome));
        if (options.stopAtFirst)
            break;
    }
    return totals;
}

Totals runAll(const Options& options) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        throw std::runtime_error("no pipe");
    begunSessions() = 0; // the jobs inherit it
    for (unsigned int share = 0; share < options.jobs; ++share) {
        if (::fork() == 0) {
            const Totals totals = runShare(options, share);
            const bool written = ::write(ends[1], &totals, sizeof(totals)) == sizeof(totals);
            ::_exit(written ? 0 : 1);
        }
    }
    ::close(ends[1]);
    Totals all;
    for (Totals part; ::read(ends[0], &part, sizeof(part)) == sizeof(part);) {
        all.sessions += part.sessions;
        all.failed += part.failed;
        all.seconds += part.seconds;
        all.hash += part.hash;
    }
    while (::wait(nullptr) > 0) {
    }
    return all;
}

/// Shows one session; its code is 1 if a rule was broken.
int showOne(const Options& options, const Scenario& scenario) {
    print(toText(scenario) + '\n');
    Outcome outcome;
    if (options.window) {
        Scenario painted = scenario;
        painted.paints = true;
        outcome = runHere(painted, {true, options.pace});
    } else {
        startServers();
        outcome = runInChild(scenario, {true});
    }
    print(outcome.timeline + describe(outcome) + "hash " + hashText(outcome.hash) + '\n');
    return outcome.complaints.empty() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    CLI::App program("Runs simulated sessions of the tool and checks what must hold in each.");
    Options options;
    program.add_option("--sessions", options.sessions, "number of sessions, a seed each")
        ->capture_default_str();
    program.add_option("--first", options.first, "first seed")->capture_default_str();
    program.add_option("--jobs", options.jobs, "sessions at a time")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    auto* const seed = program.add_option("--seed", options.seed, "show the session of this seed");
    program.add_option("--scenario", options.scenario, "show this session, as a counterexample prints it")
        ->excludes(seed);
    program.add_flag("--window", options.window,
                     "show it in its windows, whose threads change who goes next");
    program.add_option("--pace", options.pace, "so many times as fast as real time, with --window")
        ->capture_default_str();
    program.add_option("--commit", options.commit, "name of the tested commit, for counterexamples");
    program.add_option("--profile", options.profile, "cameras as this profile describes them");
    program.add_flag("--no-shrinking", options.noShrinking, "print counterexamples as they come");
    program.add_flag("--stop", options.stopAtFirst, "end at the first failure");
    CLI11_PARSE(program, argc, argv);
    if (!options.profile.empty() && !follow(options.profile))
        return 2;
    std::optional<Scenario> shown;
    if (!options.scenario.empty()) {
        shown = parseScenario(options.scenario);
        if (!shown) {
            std::fprintf(stderr, "simulate: this is no scenario: %s\n", options.scenario.c_str());
            return 2;
        }
    } else if (seed->count() > 0) {
        shown = scenarioOf(options.seed);
    }

    prepareProcess(argv, options.window);
    const Application application(argc, argv);
    warmUp();
    if (shown)
        return showOne(options, *shown);
    const Totals totals = runAll(options);
    print(std::to_string(totals.sessions) + " sessions, " +
          std::to_string(static_cast<long long>(totals.seconds)) + " s of virtual time, " +
          std::to_string(totals.failed) + " failed, hash " + hashText(totals.hash) + '\n');
    return totals.failed == 0 && totals.sessions == options.sessions ? 0 : 1;
}
