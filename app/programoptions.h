// The command line of a program with windows.
#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>

/// The program's own options beside -h, --help and --version.
class ProgramOptions {
public:
    ProgramOptions(QString program, const QString& description, QList<QCommandLineOption> own);

    /// Prints help or version and needs no display. False if neither is asked for.
    [[nodiscard]] bool answersOnTerminal(int argumentCount, char* arguments[]);
    /// In the order of the help.
    [[nodiscard]] QList<QCommandLineOption> all() const;
    /// Reads the arguments, the program's name first. Empty, or why they cannot be used.
    [[nodiscard]] QString complaintOf(const QStringList& arguments);
    /// Prints the sentence. Returns the exit code for a bad command line.
    [[nodiscard]] int refuse(const QString& sentence) const;

    [[nodiscard]] bool isSet(const QCommandLineOption& option) const { return m_parser.isSet(option); }
    [[nodiscard]] QString value(const QCommandLineOption& option) const { return m_parser.value(option); }

private:
    QString m_program;
    QList<QCommandLineOption> m_own;
    QCommandLineOption m_version;
    QCommandLineOption m_help;
    QCommandLineParser m_parser;
};
