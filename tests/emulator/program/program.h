// The virtual-camera program as a process.
#pragma once

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace emulatortest {

/// The program with its output in two files of the working directory: "out" and "err", or with a prefix of
/// those names.
class Program {
public:
    explicit Program(std::vector<std::string> arguments, const std::string& prefix = {}) {
        const std::string out = prefix + "out";
        const std::string err = prefix + "err";
        arguments.insert(arguments.begin(), VIRTUAL_CAMERA_PROGRAM);
        std::vector<char*> pointers;
        for (std::string& argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
        const int failed =
            posix_spawn(&m_process, VIRTUAL_CAMERA_PROGRAM, &actions, nullptr, pointers.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (failed != 0)
            m_process = -1;
    }
    ~Program() {
        if (m_process > 0) {
            ::kill(m_process, SIGKILL);
            ::waitpid(m_process, nullptr, 0);
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

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
    pid_t m_process = -1;
};

} // namespace emulatortest
