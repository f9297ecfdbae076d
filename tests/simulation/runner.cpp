#include "tests/simulation/runner.h"

#include "tests/simulation/world/realcalls.h"
#include "tests/simulation/world/scheduler.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <optional>
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

int resultPipe = -1;

void writeOutcome(const Outcome& outcome);

/// Ends a session that cannot go on: reports the complaint and the timeline so far.
[[noreturn]] void giveUp(const std::string& complaint) {
    Outcome outcome;
    outcome.complaints.push_back(complaint);
    outcome.hash = world::timelineHash();
    outcome.timeline = world::timeline();
    writeOutcome(outcome);
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

/// Head of a message in the pipe of results.
struct MessageHead {
    enum Kind : std::uint32_t { outcome, end } kind = end;
    std::uint32_t size = 0; ///< of the outcome's text, or how the process ended, as by waitpid()
};

void writeOutcome(const Outcome& outcome) {
    const std::string text = toText(outcome);
    const MessageHead head{MessageHead::outcome, static_cast<std::uint32_t>(text.size())};
    writeAll(resultPipe, std::string(reinterpret_cast<const char*>(&head), sizeof(head)) + text);
}

bool readAll(int descriptor, char* bytes, std::size_t size) {
    for (std::size_t done = 0; done < size;) {
        pollfd ready{descriptor, POLLIN, 0};
        if (world::real::poll(&ready, 1, longestMs) <= 0)
            return false;
        const ssize_t count = ::read(descriptor, bytes + done, size - done);
        if (count <= 0)
            return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

/// A line of the request.
std::string readLine(int descriptor) {
    std::string line;
    for (char byte = 0; ::read(descriptor, &byte, 1) == 1 && byte != '\n';)
        line += byte;
    return line;
}

/// The request: timeline or not, folder, scenario.
[[noreturn]] void runChild(int requests) {
    const View view{readLine(requests) == "timeline"};
    const fs::path folder = readLine(requests);
    const auto scenario = parseScenario(readLine(requests));
    ownWakeUps();
    fs::create_directories(folder / "work");
    fs::current_path(folder / "work");
    world::onDeadlock([] { giveUp("O4: every thread waits for ever: " + world::describeThreads()); });
    writeOutcome(runSession(scenario.value(), view));
    ::_exit(0); // the rest belongs to the parent
}

/// A process with a prepared window: each session with its camera type is a child of it.
class ForkServer {
public:
    explicit ForkServer(protocol::CameraType type) : m_type(type) { start(); }
    ForkServer(const ForkServer&) = delete;
    ForkServer& operator=(const ForkServer&) = delete;
    ~ForkServer() { stop(); }

    [[nodiscard]] Outcome run(const Scenario& scenario, const View& view, const fs::path& folder);

private:
    void start();
    void stop();
    [[noreturn]] void serve(int requests, int results) const;

    protocol::CameraType m_type;
    pid_t m_process = -1;
    int m_requests = -1; ///< write end
    int m_results = -1;  ///< read end
};

void ForkServer::start() {
    std::array<int, 2> requests{};
    std::array<int, 2> results{};
    if (::pipe(requests.data()) != 0 || ::pipe(results.data()) != 0)
        throw std::runtime_error("no pipe for a session");
    std::fflush(nullptr);
    m_process = ::fork();
    if (m_process < 0)
        throw std::runtime_error("no process for sessions");
    if (m_process == 0) {
        ::close(requests[1]);
        ::close(results[0]);
        serve(requests[0], results[1]);
    }
    ::close(requests[0]);
    ::close(results[1]);
    m_requests = requests[1];
    m_results = results[0];
}

void ForkServer::stop() {
    ::close(m_requests);
    ::close(m_results);
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
}

/// Keeps nothing of a request: all sessions find the same memory.
void ForkServer::serve(int requests, int results) const {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ownWakeUps();
    resultPipe = results;
    prepareWindow(m_type);
    for (char go = 0; ::read(requests, &go, 1) == 1;) {
        MessageHead head;
        const pid_t child = ::fork();
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL); // no session outlives the program
            runChild(requests);
        }
        int status = -1;
        ::waitpid(child, &status, 0);
        head.size = static_cast<std::uint32_t>(status);
        if (child < 0 || ::write(results, &head, sizeof(head)) != sizeof(head))
            break;
    }
    ::_exit(0);
}

Outcome crashed(const std::string& complaint) {
    Outcome outcome;
    outcome.complaints.push_back(complaint);
    return outcome;
}

Outcome ForkServer::run(const Scenario& scenario, const View& view, const fs::path& folder) {
    std::ostringstream request;
    request << '!' << (view.timeline ? "timeline" : "") << '\n'
            << folder.string() << '\n'
            << scenario << '\n';
    writeAll(m_requests, request.str());
    std::optional<Outcome> outcome;
    MessageHead head;
    while (readAll(m_results, reinterpret_cast<char*>(&head), sizeof(head))) {
        if (head.kind == MessageHead::outcome) {
            std::string text(head.size, '\0');
            if (readAll(m_results, text.data(), text.size()))
                outcome = parseOutcome(text);
            continue;
        }
        const int status = static_cast<int>(head.size);
        if (outcome && status == 0)
            return *outcome;
        return crashed("O4: the program ends by " + (WIFSIGNALED(status)
                                                         ? std::string(::strsignal(WTERMSIG(status)))
                                                         : "code " + std::to_string(WEXITSTATUS(status))));
    }
    stop();
    start();
    return crashed("O3: the session does not end in real time, or its window cannot be made");
}

std::map<protocol::CameraType, ForkServer>& servers() {
    static auto* const instance =
        new std::map<protocol::CameraType, ForkServer>; // they end with this process
    return *instance;
}

} // namespace

void startServers() {
    if (world::threadCount() > 1)
        throw std::logic_error("a child has only the thread that starts it");
    using enum protocol::CameraType;
    for (const protocol::CameraType type : {ostra, dorvel, salesStatic, quenta, salesDynamic})
        servers().try_emplace(type, type);
}

Outcome runHere(const Scenario& scenario, const View& view) {
    const fs::path folder = scratchFolder();
    fs::create_directories(folder / "work");
    fs::current_path(folder / "work");
    prepareWindow(scenario.type);
    Outcome outcome = runSession(scenario, view);
    fs::current_path("/");
    fs::remove_all(folder);
    return outcome;
}

Outcome runInChild(const Scenario& scenario, const View& view) {
    const fs::path folder = scratchFolder();
    Outcome outcome = servers().at(scenario.type).run(scenario, view, folder);
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    return outcome;
}

} // namespace simulation
