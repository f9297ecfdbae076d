// What the windows write to the debug logger, by the beginnings of the lines.
#pragma once

#include "tests/support/debuglog.h"

/// Lines are compared without quotes and with single blanks.
class DebugLines {
public:
    [[nodiscard]] int count(const QString& start) const {
        const std::string wanted = start.simplified().toStdString();
        int found = 0;
        for (const std::string& line : m_log.all())
            found += line.starts_with(wanted) ? 1 : 0;
        return found;
    }
    [[nodiscard]] bool has(const QString& start) const { return count(start) > 0; }
    [[nodiscard]] std::vector<std::string> lines() const { return m_log.all(); }

private:
    DebugLog m_log;
};
