// The output of shelf-camera.
#pragma once

#include "cli/exitcode.h"

#include <QJsonObject>
#include <QString>

#include <mutex>

namespace cli {

/// How a command ended on one port.
struct Result {
    ExitCode code = ExitCode::done;
    QJsonObject fields; ///< for --json, beside those of every object
    QString text;       ///< for people, whole lines without the last line end; may be empty
    QString error;      ///< what failed and what to do next; empty on success
};

[[nodiscard]] Result failure(ExitCode code, const QString& error);

/// Standard output and standard error; any thread, whole lines.
class Output {
public:
    Output(bool json, bool showsProgress) : m_json(json), m_showsProgress(showsProgress) {}

    [[nodiscard]] bool isJson() const { return m_json; }

    /// A result: one JSON object, or the text on standard output and the error on standard error. `head`
    /// begins the object; `label` begins each text line when several ports are used.
    void result(const QJsonObject& head, const QString& label, const Result& result);
    /// One object, only with --json; a line of text, only without.
    void object(const QJsonObject& object);
    void line(const QString& text);
    void error(const QString& text);
    /// Replaces the progress line of the terminal; empty: removes it.
    void progress(const QString& text);

    /// A reader of standard output has gone, or the disk is full.
    [[nodiscard]] bool failed() const;

private:
    void clearProgress();
    void write(const QString& text);

    const bool m_json;
    const bool m_showsProgress;
    mutable std::mutex m_mutex; // guards everything below
    bool m_progressShown = false;
    bool m_failed = false;
};

} // namespace cli
