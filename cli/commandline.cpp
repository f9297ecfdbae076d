#include "cli/commandline.h"

#include "cli/english.h"
#include "cli/program.h"
#include "cli/system.h"
#include "language/language.h"
#include "link/diagnostics.h"

#include <QGuiApplication>

#include <iostream>
#include <streambuf>

namespace cli {

namespace {

/// Takes everything and keeps nothing.
class Nowhere final : public std::streambuf {
protected:
    int_type overflow(int_type letter) override { return traits_type::not_eof(letter); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

void ignoreMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

std::vector<std::string> argumentsOf(const QStringList& all) {
    std::vector<std::string> arguments;
    for (const QString& argument : all.mid(1))
        arguments.push_back(argument.toStdString());
    return arguments;
}

/// A PDF needs fonts, and with them a plugin of the platform.
std::unique_ptr<QCoreApplication> makeApplication(int& count, char** arguments) {
    for (int i = 1; i < count; ++i) {
        if (QString::fromLocal8Bit(arguments[i]).endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive)) {
            drawWithoutDisplay();
            return std::make_unique<QGuiApplication>(count, arguments);
        }
    }
    return std::make_unique<QCoreApplication>(count, arguments);
}

int run(const Options& options) {
    static Nowhere nowhere;
    static std::ostream silence(&nowhere);
    diagnostics::setStream(options.verbose ? std::cerr : silence);
    if (options.verbose)
        qInstallMessageHandler(nullptr);
    switch (options.action) {
    case Options::Action::help:
        std::cout << options.help.toStdString() << std::flush;
        return 0;
    case Options::Action::version:
        std::cout << "shelf-camera " CAMERA_TOOL_VERSION << std::endl;
        return 0;
    case Options::Action::run:
        break;
    }
    return static_cast<int>(runProgram(options));
}

} // namespace

int runCommandLine(int& count, char** arguments) {
    prepareConsole();
    watchForInterrupts();
    qInstallMessageHandler(&ignoreMessage);
    const auto application = makeApplication(count, arguments);
    language::Texts english(englishTexts());
    if (language::speaksChinese())
        language::chooseChinese();
    else
        QCoreApplication::installTranslator(&english);
    try {
        const Options options = parseOptions(argumentsOf(QCoreApplication::arguments()));
        if (options.writesDocument())
            QCoreApplication::removeTranslator(&english);
        return run(options);
    } catch (const UsageError& error) {
        std::cerr << "shelf-camera: " << error.what() << std::endl;
        return static_cast<int>(ExitCode::usage);
    }
}

} // namespace cli
