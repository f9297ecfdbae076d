#include "tests/simulation/runner.h"

#include "tests/simulation/world/realcalls.h"
#include "tests/simulation/world/scheduler.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sstream>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace simulation {

namespace {

namespace fs = std::filesystem;

constexpr int longestMs = 60'000; // of real time

/// In memory where the system has it: thousands of sessions write their files.
fs::path scratchFolder() {
    const fs::path memory = "/dev/shm";
    const fs::path root = fs::is_directory(memory) ? memory : fs::temp_directory_path();
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "simulation-%08d", ::getpid()); // always as long
    return root / name.data();
}

std::string toText(const Outcome& outcome) {
    std::ostringstream text;
    text << outcome.hash << ' ' << outcome.seconds << ' ' << outcome.complaints.size() << '\n';
    for (const std::string& complaint : outcome.complaints)
        text << complaint << '\n';
    text << outcome.timeline;
    return text.str();
}

std::optional<Outcome> parseOutcome(const std::string& text) {
    std::istringstream in(text);
    Outcome outcome;
    std::size_t complaints = 0;
    if (!(in >> outcome.hash >> outcome.seconds >> complaints))
        return std::nullopt;
    std::string line;
    std::getline(in, line);
    for (std::size_t i = 0; i < complaints && std::getline(in, line); ++i)
        outcome.complaints.push_back(line);
    outcome.timeline.assign(std::istreambuf_iterator<char>(in), {});
    return outcome;
}

void writeAll(int descriptor, const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t count = ::write(descriptor, text.data() + done, text.size() - done);
        if (count <= 0)
            return;
        done += static_cast<std::size_t>(count);
    }
}

/// Output of the child. A child that writes nothing for too long is killed.
std::string readAll(int descriptor, pid_t child) {
    std::string text;
    std::array<char, 8192> buffer{};
    while (true) {
        pollfd ready{descriptor, POLLIN, 0};
        if (world::real::poll(&ready, 1, longestMs) <= 0)
            ::kill(child, SIGKILL);
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count <= 0)
            return text;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

int resultPipe = -1;

/// Ends a session that cannot go on: reports the complaint and the timeline so far.
[[noreturn]] void giveUp(const std::string& complaint) {
    Outcome outcome;
    outcome.complaints.push_back(complaint);
    outcome.hash = world::timelineHash();
    outcome.timeline = world::timeline();
    writeAll(resultPipe, toText(outcome));
    ::_exit(0);
}

/// Event loops are woken through counters of the kernel, which a child has in common with its parent and with
/// the sessions beside it: gives this process counters of its own.
void ownWakeUps() {
    constexpr int mostDescriptors = 64; // of a program that has only been warmed up
    std::array<char, 32> name{};
    for (int descriptor = 0; descriptor < mostDescriptors; ++descriptor) {
        std::snprintf(name.data(), name.size(), "/proc/self/fd/%d", descriptor);
        std::error_code closed;
        if (fs::read_symlink(name.data(), closed) != "anon_inode:[eventfd]")
            continue;
        const int own = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
        if (own < 0 || ::dup3(own, descriptor, O_CLOEXEC) < 0)
            giveUp("no counter for an event loop");
        ::close(own);
    }
}

[[noreturn]] void runChild(const Scenario& scenario, const View& view, const fs::path& folder) {
    ownWakeUps();
    fs::create_directories(folder / "work");
    fs::current_path(folder / "work");
    world::onDeadlock([] { giveUp("O4: every thread waits for ever: " + world::describeThreads()); });
    writeAll(resultPipe, toText(runSession(scenario, view)));
    ::_exit(0); // the rest belongs to the parent
}

} // namespace

Outcome runHere(const Scenario& scenario, const View& view) {
    const fs::path folder = scratchFolder();
    fs::create_directories(folder / "work");
    fs::current_path(folder / "work");
    Outcome outcome = runSession(scenario, view);
    fs::current_path("/");
    fs::remove_all(folder);
    return outcome;
}

Outcome runInChild(const Scenario& scenario, const View& view) {
    if (world::threadCount() > 1)
        throw std::logic_error("a child has only the thread that starts it");
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        throw std::runtime_error("no pipe for a session");
    std::fflush(nullptr);
    const fs::path folder = scratchFolder();
    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("no process for a session");
    if (child == 0) {
        ::close(ends[0]);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL); // no session outlives the program
        resultPipe = ends[1];
        runChild(scenario, view, folder);
    }
    ::close(ends[1]);
    const std::string text = readAll(ends[0], child);
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    if (auto outcome = parseOutcome(text); outcome && status == 0)
        return *outcome;
    Outcome crashed;
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) {
        crashed.complaints.emplace_back("O3: the session does not end in real time");
        return crashed;
    }
    crashed.complaints.push_back("O4: the program ends by " +
                                 (WIFSIGNALED(status) ? std::string(::strsignal(WTERMSIG(status)))
                                                      : "code " + std::to_string(WEXITSTATUS(status))));
    return crashed;
}

} // namespace simulation
