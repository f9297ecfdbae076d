// A program as a process of its own. Unix only.
#pragma once

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <vector>

extern char** environ;

/// A running program; killed by the destructor if it still runs.
class Process {
public:
    /// Files of the three standard streams; empty: that of the test. Output files are made anew.
    struct Streams {
        std::string in;
        std::string out = "out";
        std::string err = "err";
    };
    using Environment = std::map<std::string, std::string>; ///< changes to that of the test

    Process(const std::string& program, std::vector<std::string> arguments, const Streams& streams,
            const Environment& environment = {}) {
        arguments.insert(arguments.begin(), program);
        std::vector<std::string> variables = changedEnvironment(environment);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        addStream(actions, 0, streams.in, O_RDONLY | O_NOCTTY);
        addStream(actions, 1, streams.out, O_CREAT | O_WRONLY | O_TRUNC | O_NOCTTY);
        addStream(actions, 2, streams.err, O_CREAT | O_WRONLY | O_TRUNC | O_NOCTTY);
        const int failed = posix_spawn(&m_process, program.c_str(), &actions, nullptr,
                                       pointers(arguments).data(), pointers(variables).data());
        posix_spawn_file_actions_destroy(&actions);
        if (failed != 0)
            m_process = -1;
    }
    ~Process() {
        if (m_process > 0) {
            ::kill(m_process, SIGKILL);
            ::waitpid(m_process, nullptr, 0);
        }
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void signal(int number) const { ::kill(m_process, number); }
    /// The exit code; -1 for an end by a signal.
    int wait() {
        int status = 0;
        ::waitpid(m_process, &status, 0);
        m_process = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    static std::string text(const std::string& file) {
        std::ostringstream text;
        text << std::ifstream(file).rdbuf();
        return text.str();
    }

private:
    static void addStream(posix_spawn_file_actions_t& actions, int number, const std::string& path,
                          int flags) {
        if (!path.empty())
            posix_spawn_file_actions_addopen(&actions, number, path.c_str(), flags, 0600);
    }
    static std::vector<std::string> changedEnvironment(const Environment& changes) {
        std::vector<std::string> all;
        for (char** variable = environ; *variable != nullptr; ++variable) {
            const std::string text = *variable;
            if (!changes.contains(text.substr(0, text.find('='))))
                all.push_back(text);
        }
        for (const auto& [name, value] : changes)
            all.push_back(name + "=" + value);
        return all;
    }
    static std::vector<char*> pointers(std::vector<std::string>& texts) {
        std::vector<char*> all;
        for (std::string& text : texts)
            all.push_back(text.data());
        all.push_back(nullptr);
        return all;
    }

    pid_t m_process = -1;
};
