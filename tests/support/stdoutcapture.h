// Captures standard output.
#pragma once

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

/// Diverts std::cout for as long as it lives and restores its number base at the end.
class StdoutCapture {
public:
    StdoutCapture() : m_saved(std::cout.rdbuf(m_text.rdbuf())), m_flags(std::cout.flags()) {}
    ~StdoutCapture() {
        std::cout.rdbuf(m_saved);
        std::cout.flags(m_flags);
    }
    StdoutCapture(const StdoutCapture&) = delete;
    StdoutCapture& operator=(const StdoutCapture&) = delete;

    [[nodiscard]] std::string text() const { return m_text.str(); }

    /// Complete lines so far.
    [[nodiscard]] std::vector<std::string> lines() const {
        std::vector<std::string> result;
        std::istringstream in(m_text.str());
        for (std::string line; std::getline(in, line);)
            result.push_back(line);
        return result;
    }

    [[nodiscard]] bool has(const std::string& line) const {
        for (const std::string& each : lines()) {
            if (each == line)
                return true;
        }
        return false;
    }

private:
    std::ostringstream m_text;
    std::streambuf* m_saved;
    std::ios::fmtflags m_flags;
};
