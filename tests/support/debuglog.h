// What the windows say while a test runs.
#pragma once

#include <QtDebug>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

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

    [[nodiscard]] std::vector<std::string> all() const {
        const std::lock_guard lock(mutex());
        return lines();
    }
    [[nodiscard]] auto count(const std::string& line) const {
        const std::vector<std::string> present = all();
        return std::count(present.begin(), present.end(), line);
    }

private:
    static void take(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
        if (type != QtDebugMsg) // a warning of Qt itself
            return;
        QString line = message;
        line.remove('"');
        const std::lock_guard lock(mutex());
        lines().push_back(line.simplified().toStdString());
    }
    static std::mutex& mutex() {
        static std::mutex instance;
        return instance;
    }
    static std::vector<std::string>& lines() {
        static std::vector<std::string> instance;
        return instance;
    }

    QtMessageHandler m_before;
};
