#include "cli/batchstate.h"

#include "cli/options.h"

#include <QCoreApplication>
#include <QCryptographicHash>

namespace cli {

namespace {

QString stateWords(const char* text) {
    return QCoreApplication::translate("BatchState", text);
}

[[noreturn]] void refuseState(const QString& text) {
    throw UsageError(text.toStdString());
}

} // namespace

BatchState::BatchState(const QString& path, const QByteArray& jobList) : m_file(path) {
    if (path.isEmpty())
        return;
    const QByteArray digest = QCryptographicHash::hash(jobList, QCryptographicHash::Sha256).toHex();
    const QByteArray head = "shelf-camera batch " + digest + '\n';
    if (!m_file.open(QIODevice::ReadWrite))
        refuseState(stateWords("状态文件不能写入：%1").arg(path));
    if (m_file.size() > 0)
        read(head);
    else if (m_file.write(head) != head.size() || !m_file.flush())
        refuseState(stateWords("状态文件不能写入：%1").arg(path));
}

void BatchState::read(const QByteArray& head) {
    if (m_file.readLine() != head)
        refuseState(stateWords("状态文件属于另一个任务文件：%1").arg(m_file.fileName()));
    qint64 complete = m_file.pos();
    while (!m_file.atEnd()) {
        const QByteArray line = m_file.readLine();
        if (!line.endsWith('\n')) // the last one, of an interrupted write
            break;
        m_done.insert(line.trimmed().toInt());
        complete = m_file.pos();
    }
    if (!m_file.resize(complete) || !m_file.seek(complete))
        refuseState(stateWords("状态文件不能写入：%1").arg(m_file.fileName()));
    if (m_done.contains(0))
        refuseState(stateWords("状态文件已损坏：%1").arg(m_file.fileName()));
}

bool BatchState::noteDone(int line) {
    if (!m_file.isOpen())
        return true;
    const std::lock_guard lock(m_mutex);
    const QByteArray text = QByteArray::number(line) + '\n';
    return m_file.write(text) == text.size() && m_file.flush();
}

} // namespace cli
