// The lines of Qt's message handler.
#pragma once

#include <QStringList>
#include <QtDebug>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

/// Collects the lines as long as it lives, from any thread. One at a time.
class DebugLog {
public:
    DebugLog() : m_previous(qInstallMessageHandler(&DebugLog::keep)) {
        const std::lock_guard lock(s_mutex);
        s_lines.clear();
    }
    ~DebugLog() { qInstallMessageHandler(m_previous); }
    DebugLog(const DebugLog&) = delete;
    DebugLog& operator=(const DebugLog&) = delete;

    /// Lines as written, warnings included.
    [[nodiscard]] static QStringList lines() {
        QStringList all;
        for (const Line& line : kept())
            all.append(line.text);
        return all;
    }
    /// Lines of qDebug(), plain.
    [[nodiscard]] static std::vector<std::string> plainLines() {
        std::vector<std::string> all;
        for (const Line& line : kept()) {
            if (line.type == QtDebugMsg)
                all.push_back(plain(line.text).toStdString());
        }
        return all;
    }
    /// Number of lines that equal this one when both are plain.
    [[nodiscard]] static qsizetype count(const QString& line) {
        return countIf([wanted = plain(line)](const QString& each) { return each == wanted; });
    }
    [[nodiscard]] static bool has(const QString& line) { return count(line) > 0; }
    /// Number of plain lines that start like this.
    [[nodiscard]] static qsizetype countStarts(const QString& start) {
        return countIf([wanted = plain(start)](const QString& each) { return each.startsWith(wanted); });
    }
    [[nodiscard]] static bool hasStart(const QString& start) { return countStarts(start) > 0; }

    /// Without quotes, with single blanks.
    [[nodiscard]] static QString plain(QString line) { return line.remove(QLatin1Char('"')).simplified(); }

private:
    struct Line {
        QtMsgType type;
        QString text;
    };

    static void keep(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
        const std::lock_guard lock(s_mutex);
        s_lines.push_back({type, text});
    }
    static std::vector<Line> kept() {
        const std::lock_guard lock(s_mutex);
        return s_lines;
    }
    template <typename Condition>
    static qsizetype countIf(Condition condition) {
        const std::vector<Line> all = kept();
        return std::count_if(all.begin(), all.end(),
                             [&condition](const Line& line) { return condition(plain(line.text)); });
    }

    static inline std::mutex s_mutex;
    static inline std::vector<Line> s_lines;

    QtMessageHandler m_previous;
};
