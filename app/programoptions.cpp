#include "app/programoptions.h"

#include <QCoreApplication>

#include <iostream>

ProgramOptions::ProgramOptions(QString program, const QString& description, QList<QCommandLineOption> own)
    : m_program(std::move(program)), m_own(std::move(own)),
      m_version(QStringLiteral("version"), QStringLiteral("Print the version.")),
      m_help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Print this.")) {
    m_parser.setApplicationDescription(description);
    m_parser.addOptions(all());
}

QList<QCommandLineOption> ProgramOptions::all() const {
    return m_own + QList<QCommandLineOption>{m_version, m_help};
}

bool ProgramOptions::answersOnTerminal(int argumentCount, char* arguments[]) {
    const QCoreApplication application(argumentCount, arguments);
    m_parser.parse(QCoreApplication::arguments());
    if (m_parser.isSet(m_help))
        std::cout << m_parser.helpText().toStdString() << std::flush;
    else if (m_parser.isSet(m_version))
        std::cout << m_program.toStdString() << " " CAMERA_TOOL_VERSION << std::endl;
    else
        return false;
    return true;
}

QString ProgramOptions::complaintOf(const QStringList& arguments) {
    const bool parsed = m_parser.parse(arguments);
    if (const QStringList names = m_parser.unknownOptionNames(); !names.isEmpty())
        return QStringLiteral("unknown option \"%1\"; see --help").arg(names.first());
    if (const QStringList words = m_parser.positionalArguments(); !words.isEmpty())
        return QStringLiteral("unknown argument \"%1\"; see --help").arg(words.first());
    for (const QCommandLineOption& option : m_own) {
        if (!option.valueName().isEmpty() && m_parser.isSet(option) && m_parser.value(option).isEmpty())
            return QStringLiteral("--%1 needs a value: %2").arg(option.names().first(), option.valueName());
    }
    if (!parsed)
        return QStringLiteral("an option lacks its value, or takes none; see --help");
    return {};
}

int ProgramOptions::refuse(const QString& sentence) const {
    constexpr int badCommandLine = 2;
    std::cerr << m_program.toStdString() << ": " << sentence.toStdString() << std::endl;
    return badCommandLine;
}
