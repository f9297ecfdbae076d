// The jobs of a batch that are done, kept in a file.
#pragma once

#include <QFile>
#include <QString>

#include <mutex>
#include <set>

namespace cli {

/// Any thread. Each finished job reaches the disk before the next one starts.
class BatchState {
public:
    /// Reads what the file tells; an empty path keeps nothing. Throws UsageError when the file cannot be
    /// used or belongs to another job list.
    BatchState(const QString& path, const QByteArray& jobList);

    [[nodiscard]] bool isDone(int line) const { return m_done.contains(line); }
    /// False when the file cannot be written.
    [[nodiscard]] bool noteDone(int line);

private:
    void read(const QByteArray& head);

    QFile m_file;
    std::mutex m_mutex; // guards m_file
    std::set<int> m_done;
};

} // namespace cli
