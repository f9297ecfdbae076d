// The program's code as a call in the test's process: what it waits for takes virtual time.
#pragma once

#include "tests/support/process.h"

namespace clitest {

/// In place of a Process. The constructor returns when the program has ended. It cannot be interrupted, nor
/// told to speak Chinese: the rest of the process would stay so.
class CalledProgram {
public:
    CalledProgram(const std::string& program, std::vector<std::string> arguments,
                  const Process::Streams& streams, const Process::Environment& environment);

    [[nodiscard]] int wait() const { return m_code; }

private:
    int m_code = -1;
};

} // namespace clitest
