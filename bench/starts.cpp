#include "bench/starts.h"

#include "bench/firstpaint.h"
#include "bench/measure.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace bench {

namespace {

using namespace std::chrono_literals;

constexpr int paintLimitMs = 60000;
constexpr auto settling = 2s; ///< from the first paint until the program counts as idle
constexpr double megabyte = 1 << 20;

using Command = std::vector<std::string>;

/// A started window program; ended with the object.
class Started {
public:
    explicit Started(const Command& command) {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        const Stopwatch watch;
        m_child = ::fork();
        if (m_child == 0)
            become(command, ends[1]);
        ::close(ends[1]);
        pollfd wanted{ends[0], POLLIN, 0};
        char painted = 0;
        const bool told = ::poll(&wanted, 1, paintLimitMs) == 1 && ::read(ends[0], &painted, 1) == 1;
        m_seconds = watch.seconds();
        ::close(ends[0]);
        if (!told) {
            end();
            throw std::runtime_error(command.front() + " painted no window");
        }
    }
    ~Started() { end(); }
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;

    [[nodiscard]] double secondsToPaint() const { return m_seconds; }
    [[nodiscard]] std::string folder() const { return "/proc/" + std::to_string(m_child); }

private:
    [[noreturn]] static void become(const Command& command, int told) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::dup2(told, paintedDescriptor);
        const int nowhere = ::open("/dev/null", O_RDWR);
        ::dup2(nowhere, STDOUT_FILENO);
        ::dup2(nowhere, STDERR_FILENO);
        std::vector<char*> arguments;
        for (const std::string& word : command)
            arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        ::execv(arguments.front(), arguments.data());
        ::_exit(127);
    }
    void end() const {
        ::kill(m_child, SIGKILL);
        ::waitpid(m_child, nullptr, 0);
    }

    pid_t m_child = -1;
    double m_seconds = 0;
};

/// Processor time of all threads, in ms: more exact than the ticks of /proc/PID/stat.
double cpuMs(const Started& program) {
    double total = 0;
    for (const auto& thread : std::filesystem::directory_iterator(program.folder() + "/task")) {
        double nanoseconds = 0;
        std::ifstream(thread.path() / "schedstat") >> nanoseconds;
        total += nanoseconds / 1e6;
    }
    return total;
}

/// Resident memory by where it comes from, in MiB.
struct Memory {
    double all = 0;
    double fonts = 0; ///< mapped pages of font files
    double own = 0;   ///< in no file: the program's data, heap, stacks
};

Memory memoryOf(const Started& program) {
    std::ifstream mappings(program.folder() + "/smaps");
    Memory memory;
    bool font = false;
    for (std::string line; std::getline(mappings, line);) {
        std::istringstream words(line);
        std::string name;
        double kilobytes = 0;
        if (line.find(':') > line.find('-')) // "from-to rights offset device inode file"
            font = line.find("/fonts/") != std::string::npos;
        else if (words >> name >> kilobytes) {
            const double megabytes = kilobytes * 1024 / megabyte;
            memory.all += name == "Rss:" ? megabytes : 0;
            memory.fonts += name == "Rss:" && font ? megabytes : 0;
            memory.own += name == "Anonymous:" ? megabytes : 0;
        }
    }
    return memory;
}

struct Costs {
    double startMs = 0;
    Memory memory;
    double idleCpuMs = 0;
};

/// The programs take turns, so that what else the machine does meets all of them.
std::vector<Costs> measure(const std::vector<Command>& commands, const StartSettings& settings) {
    std::vector<std::vector<double>> startMs(commands.size());
    for (const Command& command : commands)
        const Started unmeasured(command); // the files come into the system's memory
    for (int round = 0; round < settings.rounds; ++round) {
        for (std::size_t i = 0; i < commands.size(); ++i)
            startMs[i].push_back(Started(commands[i]).secondsToPaint() * 1000);
    }
    std::vector<Costs> costs;
    for (std::size_t i = 0; i < commands.size(); ++i) {
        const Started program(commands[i]);
        std::this_thread::sleep_for(settling);
        const double before = cpuMs(program);
        if (before <= 0) // it has started: zero is no account at all
            throw std::runtime_error("this system does not tell processor times in /proc");
        std::this_thread::sleep_for(std::chrono::seconds(settings.idleSeconds));
        const double idle = cpuMs(program) - before;
        costs.push_back({median(startMs[i]), memoryOf(program), idle});
    }
    return costs;
}

constexpr Goal startGoal{Goal::Kind::atMost, 1.5};
constexpr Goal idleGoal{Goal::Kind::atMost, 10}; // ms: one tick of the system's accounting

std::string millisecondsText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f ms", value);
    return text;
}

std::string megabytesText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f MiB", value);
    return text;
}

/// Where the tool's memory beyond another program's comes from.
std::string difference(const Memory& tool, const Memory& other) {
    const double all = tool.all - other.all;
    const double fonts = tool.fonts - other.fonts;
    const double own = tool.own - other.own;
    return megabytesText(all) + ": " + megabytesText(own) + " of its own, " + megabytesText(fonts) +
           " pages of font files, " + megabytesText(all - own - fonts) + " more pages of libraries";
}

void reportMemory(Results& results, const Memory& bare, const Memory& withText, const Memory& tool) {
    results.add({"resident memory when idle, a bare window", bare.all, "MiB", {}});
    results.add({"resident memory when idle, with a line of Chinese", withText.all, "MiB", {}});
    results.add({"resident memory when idle, the tool", tool.all, "MiB", {}});
    results.add({"resident memory: the tool, of the bare window", tool.all / bare.all, "x", startGoal});
    results.add(
        {"resident memory: the tool, of the window with Chinese", tool.all / withText.all, "x", startGoal});
    results.add({"memory of its own when idle, a bare window", bare.own, "MiB", {}});
    results.add({"memory of its own when idle, the tool", tool.own, "MiB", {}});
}

} // namespace

void measureStarts(Results& results, const StartSettings& settings) {
    const auto program = [&settings](const char* name) { return settings.programFolder + '/' + name; };
    const std::vector<Command> commands{
        {program("bare_window")}, {program("bare_window"), "智能货架相机"}, {program("tool_window")}};
    const std::vector<Costs> costs = measure(commands, settings);
    const Costs& bare = costs[0];
    const Costs& withText = costs[1];
    const Costs& tool = costs[2];

    results.section("Start and idleness of the tool");
    results.add({"start to the first painted window, a bare window", bare.startMs, "ms", {}});
    results.add({"start to the first painted window, with a line of Chinese", withText.startMs, "ms", {}});
    results.add({"start to the first painted window, the tool", tool.startMs, "ms", {}});
    results.add({"start: the tool, of the bare window", tool.startMs / bare.startMs, "x", startGoal});
    results.add(
        {"start: the tool, of the window with Chinese", tool.startMs / withText.startMs, "x", startGoal});
    reportMemory(results, bare.memory, withText.memory, tool.memory);
    const std::string idle = "processor time in " + std::to_string(settings.idleSeconds) + " s of idleness, ";
    results.add({idle + "a bare window", bare.idleCpuMs, "ms", {}});
    results.add({idle + "the tool", tool.idleCpuMs, "ms", idleGoal});
    if (tool.startMs > bare.startMs * startGoal.limit)
        results.remark("Of the tool's " + millisecondsText(tool.startMs - bare.startMs) +
                       " beyond the bare window, a first line of Chinese alone takes " +
                       millisecondsText(withText.startMs - bare.startMs) +
                       ": its font is found and opened. The rest is the window's own widgets.");
    const char* const platform = std::getenv("QT_QPA_PLATFORM");
    results.remark(
        "The tool is its own main with a second source that reports the first painted window; the bare "
        "program is an empty window of the same size with the same source. Qt platform: " +
        std::string(platform != nullptr ? platform : "the default") + "; medians of " +
        std::to_string(settings.rounds) +
        " starts in turns, the files in the system's memory from a start before. Resident memory counts the "
        "pages of libraries and fonts in full, whoever else uses them. The tool beyond the bare window: " +
        difference(tool.memory, bare.memory) +
        ". Beyond the window with Chinese: " + difference(tool.memory, withText.memory) + '.');
}

} // namespace bench
