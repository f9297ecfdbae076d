// What the program says while a test runs.
#pragma once

#include "link/diagnostics.h"

#include <QStringList>
#include <QtLogging>

#include <iostream>
#include <mutex>
#include <sstream>
#include <string>

/// Collects the lines of Qt's debug logger, from any thread, without their quotes and with single blanks.
class DebugLog {
public:
    DebugLog() {
        lines().clear();
        m_before = qInstallMessageHandler(&DebugLog::take);
    }
    ~DebugLog() { qInstallMessageHandler(m_before); }
    DebugLog(const DebugLog&) = delete;
    DebugLog& operator=(const DebugLog&) = delete;

    [[nodiscard]] QStringList all() const {
        const std::lock_guard lock(mutex());
        return lines();
    }
    [[nodiscard]] qsizetype count(const QString& line) const { return all().count(line); }

private:
    static void take(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message) {
        QString line = message.simplified();
        line.remove('"');
        const std::lock_guard lock(mutex());
        lines().append(line.trimmed());
    }
    static std::mutex& mutex() {
        static std::mutex instance;
        return instance;
    }
    static QStringList& lines() {
        static QStringList instance;
        return instance;
    }

    QtMessageHandler m_before;
};

/// Collects standard output.
class OutputLog {
public:
    OutputLog() : m_before(exchange(m_text.rdbuf())) {}
    ~OutputLog() { exchange(m_before); }
    OutputLog(const OutputLog&) = delete;
    OutputLog& operator=(const OutputLog&) = delete;

    [[nodiscard]] bool hasLine(const std::string& line) const {
        const std::lock_guard lock(diagnostics::lineMutex());
        return ('\n' + m_text.str()).find('\n' + line + '\n') != std::string::npos;
    }

private:
    static std::streambuf* exchange(std::streambuf* buffer) {
        const std::lock_guard lock(diagnostics::lineMutex());
        return std::cout.rdbuf(buffer);
    }

    std::ostringstream m_text;
    std::streambuf* m_before;
};
