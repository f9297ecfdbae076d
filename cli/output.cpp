#include "cli/output.h"

#include <QJsonDocument>

#include <cstdio>

namespace cli {

namespace {

QString labelled(const QString& label, const QString& text) {
    if (label.isEmpty())
        return text;
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString& line : lines)
        line.prepend(label + QLatin1String(": "));
    return lines.join(QLatin1Char('\n'));
}

void writeError(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}

} // namespace

Result failure(ExitCode code, const QString& error) {
    return {code, {}, {}, error};
}

void Output::result(const QJsonObject& head, const QString& label, const Result& result) {
    if (m_json) {
        QJsonObject all = head;
        all.insert(QLatin1String("ok"), result.code == ExitCode::done);
        all.insert(QLatin1String("code"), static_cast<int>(result.code));
        for (auto field = result.fields.begin(); field != result.fields.end(); ++field)
            all.insert(field.key(), field.value());
        if (!result.error.isEmpty())
            all.insert(QLatin1String("error"), result.error);
        object(all);
        return;
    }
    if (!result.text.isEmpty())
        line(labelled(label, result.text));
    if (!result.error.isEmpty())
        error(labelled(label, result.error));
}

void Output::object(const QJsonObject& object) {
    if (m_json)
        write(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
}

void Output::line(const QString& text) {
    if (!m_json)
        write(text);
}

void Output::error(const QString& text) {
    const std::lock_guard lock(m_mutex);
    clearProgress();
    writeError(text + QLatin1Char('\n'));
}

void Output::progress(const QString& text) {
    if (!m_showsProgress)
        return;
    const std::lock_guard lock(m_mutex);
    clearProgress();
    if (text.isEmpty())
        return;
    writeError(text);
    m_progressShown = true;
}

bool Output::failed() const {
    const std::lock_guard lock(m_mutex);
    return m_failed;
}

void Output::clearProgress() {
    if (m_progressShown)
        writeError(QStringLiteral("\r\033[K"));
    m_progressShown = false;
}

void Output::write(const QString& text) {
    const std::lock_guard lock(m_mutex);
    clearProgress();
    const QByteArray bytes = text.toUtf8() + '\n';
    const auto size = static_cast<std::size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) != size || std::fflush(stdout) != 0)
        m_failed = true;
}

} // namespace cli
