#include "tests/cli/calledprogram.h"

#include "cli/commandline.h"
#include "link/diagnostics.h"
#include "tests/simulation/world/scheduler.h"

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <stdio_ext.h>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/common_interface_defs.h>
#endif

namespace clitest {

namespace {

/// Where the end of the process by a deadlock or a sanitizer is told.
void reportTo(int descriptor) {
    world::onDeadlock([descriptor] { ::dup2(descriptor, STDERR_FILENO); });
#ifdef __SANITIZE_ADDRESS__
    __sanitizer_set_report_fd(
        reinterpret_cast<void*>(std::intptr_t{descriptor})); // NOLINT: so it is declared
#endif
}

/// A standard stream, led to a file as long as this lives.
class LedStream {
public:
    LedStream(int number, const std::string& path, int flags)
        : m_number(number), m_before(::fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
        const int file = ::open(path.c_str(), flags | O_CLOEXEC, 0600);
        if (file < 0 || m_before < 0 || ::dup2(file, m_number) < 0)
            throw std::runtime_error("no stream " + path);
        ::close(file);
    }
    ~LedStream() {
        ::dup2(m_before, m_number);
        ::close(m_before);
    }
    LedStream(const LedStream&) = delete;
    LedStream& operator=(const LedStream&) = delete;

    [[nodiscard]] int before() const { return m_before; }

private:
    const int m_number;
    const int m_before; ///< the stream's file
};

/// Leads those that have a file.
class LedStreams {
public:
    explicit LedStreams(const Process::Streams& streams) {
        flush();
        lead(0, streams.in, O_RDONLY | O_NOCTTY);
        lead(1, streams.out, O_CREAT | O_WRONLY | O_TRUNC | O_NOCTTY);
        lead(2, streams.err, O_CREAT | O_WRONLY | O_TRUNC | O_NOCTTY);
        if (const auto& error = m_streams.back())
            reportTo(error->before()); // not to a file that nobody reads then
    }
    ~LedStreams() {
        flush();
        ::__fpurge(stdout); // what a full disk did not take ends with a process
        std::clearerr(stdout);
        std::cout.clear();
        std::cerr.clear();
        reportTo(STDERR_FILENO);
    }
    LedStreams(const LedStreams&) = delete;
    LedStreams& operator=(const LedStreams&) = delete;

private:
    static void flush() {
        std::cout.flush();
        std::fflush(stdout);
    }
    void lead(std::size_t number, const std::string& path, int flags) {
        if (!path.empty())
            m_streams.at(number).emplace(static_cast<int>(number), path, flags);
    }

    std::array<std::optional<LedStream>, 3> m_streams;
};

/// Gives the environment these values as long as it lives.
class ChangedEnvironment {
public:
    explicit ChangedEnvironment(const Process::Environment& changes) {
        for (const auto& [name, value] : changes) {
            const char* const before = std::getenv(name.c_str());
            m_before[name] = before == nullptr ? std::nullopt : std::optional<std::string>(before);
            ::setenv(name.c_str(), value.c_str(), 1);
        }
    }
    ~ChangedEnvironment() {
        for (const auto& [name, value] : m_before) {
            if (value)
                ::setenv(name.c_str(), value->c_str(), 1);
            else
                ::unsetenv(name.c_str());
        }
    }
    ChangedEnvironment(const ChangedEnvironment&) = delete;
    ChangedEnvironment& operator=(const ChangedEnvironment&) = delete;

private:
    std::map<std::string, std::optional<std::string>> m_before;
};

/// Gives back the other settings of the process that the program changes.
class KeptSettings {
public:
    KeptSettings() {
        for (std::size_t i = 0; i < changedSignals.size(); ++i)
            ::sigaction(changedSignals[i], nullptr, &m_actions[i]);
    }
    ~KeptSettings() {
        for (std::size_t i = 0; i < changedSignals.size(); ++i)
            ::sigaction(changedSignals[i], &m_actions[i], nullptr);
        qInstallMessageHandler(m_handler);
        diagnostics::setStream(m_diagnostics);
        std::cerr.flags(m_flags);
    }
    KeptSettings(const KeptSettings&) = delete;
    KeptSettings& operator=(const KeptSettings&) = delete;

private:
    static constexpr std::array changedSignals{SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ};

    std::array<struct sigaction, changedSignals.size()> m_actions{};
    const QtMessageHandler m_handler = qInstallMessageHandler(nullptr);
    std::ostream& m_diagnostics = diagnostics::stream();
    const std::ios::fmtflags m_flags = std::cerr.flags();
};

} // namespace

CalledProgram::CalledProgram(const std::string& program, std::vector<std::string> arguments,
                             const Process::Streams& streams, const Process::Environment& environment) {
    arguments.insert(arguments.begin(), program);
    std::vector<char*> words(arguments.size() + 1, nullptr);
    std::transform(arguments.begin(), arguments.end(), words.begin(),
                   [](std::string& word) { return word.data(); });
    int count = static_cast<int>(arguments.size());
    const ChangedEnvironment changed(environment);
    const KeptSettings kept;
    const LedStreams led(streams);
    m_code = cli::runCommandLine(count, words.data());
}

} // namespace clitest
