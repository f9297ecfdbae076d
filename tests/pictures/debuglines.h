// What the windows write to the debug logger.
#pragma once

#include <QDebug>
#include <QString>

#include <mutex>
#include <string>
#include <vector>

/// Collects Qt's messages for as long as it lives; any thread may log.
class DebugLines {
public:
    DebugLines() {
        s_current = this;
        m_before = qInstallMessageHandler(&DebugLines::take);
    }
    ~DebugLines() {
        qInstallMessageHandler(m_before);
        s_current = nullptr;
    }
    DebugLines(const DebugLines&) = delete;
    DebugLines& operator=(const DebugLines&) = delete;

    /// How many lines begin with the text, blanks in front of both left aside.
    [[nodiscard]] int count(const QString& start) const {
        const std::lock_guard lock(m_mutex);
        int found = 0;
        for (const QString& line : m_lines)
            found += line.trimmed().startsWith(start.trimmed()) ? 1 : 0;
        return found;
    }
    [[nodiscard]] bool has(const QString& start) const { return count(start) > 0; }

    [[nodiscard]] std::vector<std::string> lines() const {
        const std::lock_guard lock(m_mutex);
        std::vector<std::string> texts;
        for (const QString& line : m_lines)
            texts.push_back(line.simplified().toStdString());
        return texts;
    }

private:
    static void take(QtMsgType, const QMessageLogContext&, const QString& text) {
        const std::lock_guard lock(s_current->m_mutex);
        s_current->m_lines.push_back(text);
    }

    inline static DebugLines* s_current = nullptr;
    mutable std::mutex m_mutex;
    std::vector<QString> m_lines;
    QtMessageHandler m_before = nullptr;
};
