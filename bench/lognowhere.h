// Formats the client's log and drops it.
#pragma once

#include <fstream>
#include <iostream>

namespace bench {

/// Diverts std::cout for as long as it lives.
class LogToNowhere {
public:
    LogToNowhere() : m_nowhere("/dev/null"), m_saved(std::cout.rdbuf(m_nowhere.rdbuf())) {}
    ~LogToNowhere() { std::cout.rdbuf(m_saved); }
    LogToNowhere(const LogToNowhere&) = delete;
    LogToNowhere& operator=(const LogToNowhere&) = delete;

private:
    std::ofstream m_nowhere;
    std::streambuf* m_saved;
};

} // namespace bench
