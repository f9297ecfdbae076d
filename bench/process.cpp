#include "bench/process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

void become(const std::vector<std::string>& program, int input, int output) {
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    const int nowhere = ::open("/dev/null", O_WRONLY);
    ::dup2(nowhere, STDERR_FILENO);
    std::vector<char*> arguments;
    for (const std::string& word : program)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    ::execvp(arguments.front(), arguments.data());
    ::_exit(127);
}

int runOn(const std::vector<std::string>& program, const std::string& file) {
    const int child = ::fork();
    if (child == 0) {
        const int both = ::open(file.c_str(), O_RDWR | O_NOCTTY);
        become(program, both, both);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace bench
