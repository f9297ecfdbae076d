#include "tests/simulation/runner.h"

#include "tests/simulation/world/scheduler.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace simulation {

namespace {

namespace fs = std::filesystem;

constexpr unsigned int longestSeconds = 60; // of real time

/// In memory where the system has it: thousands of sessions write their files.
fs::path scratchRoot() {
    const fs::path memory = "/dev/shm";
    return fs::is_directory(memory) ? memory : fs::temp_directory_path();
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

std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 8192> buffer{};
    for (ssize_t count = 0; (count = ::read(descriptor, buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), static_cast<std::size_t>(count));
    return text;
}

int resultPipe = -1;

/// What a session that cannot go on leaves: its reason and its timeline.
[[noreturn]] void giveUp(const std::string& complaint) {
    Outcome outcome;
    outcome.complaints.push_back(complaint);
    outcome.hash = world::timelineHash();
    outcome.timeline = world::timeline();
    writeAll(resultPipe, toText(outcome));
    ::_exit(0);
}

[[noreturn]] void runChild(const Scenario& scenario, const View& view, const fs::path& folder) {
    fs::create_directories(folder / "work");
    fs::current_path(folder / "work");
    ::alarm(view.pace > 0 ? 0 : longestSeconds);
    std::signal(SIGALRM, [](int) { giveUp("O3: the session does not end; " + world::describeThreads()); });
    world::onDeadlock([] { giveUp("O4: every thread waits for ever: " + world::describeThreads()); });
    writeAll(resultPipe, toText(runSession(scenario, view)));
    ::_exit(0); // the rest belongs to the parent
}

} // namespace

Outcome runInChild(const Scenario& scenario, const View& view) {
    if (world::threadCount() > 1)
        throw std::logic_error("a child has only the thread that starts it");
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        throw std::runtime_error("no pipe for a session");
    std::fflush(nullptr);
    const fs::path folder = scratchRoot() / ("simulation-" + std::to_string(::getpid()));
    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("no process for a session");
    if (child == 0) {
        ::close(ends[0]);
        resultPipe = ends[1];
        runChild(scenario, view, folder);
    }
    ::close(ends[1]);
    const std::string text = readAll(ends[0]);
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    if (auto outcome = parseOutcome(text); outcome && status == 0)
        return *outcome;
    Outcome crashed;
    crashed.complaints.push_back("O4: the program ends by " +
                                 (WIFSIGNALED(status) ? std::string(::strsignal(WTERMSIG(status)))
                                                      : "code " + std::to_string(WEXITSTATUS(status))));
    return crashed;
}

} // namespace simulation
