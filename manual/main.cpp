// Writes the manual page or the bash completion of one program to standard output.
#include "cli/english.h"
#include "manual/programs.h"

#include <QCoreApplication>
#include <QDate>

#include <CLI/CLI.hpp>
#include <iostream>

namespace {

int usage() {
    std::cerr << "usage: camera-manual man PROGRAM [DATE] | bash PROGRAM" << std::endl;
    return 2;
}

int write(const manual::Program& program, const QStringList& words) {
    if (const std::string bad = manual::badExample(program); !bad.empty()) {
        std::cerr << "an example: " << bad << std::endl;
        return 1;
    }
    if (words.value(1) == QLatin1String("bash")) {
        std::cout << manual::bashCompletion(*program.app, program.values);
    } else {
        manual::ManualText text = program.text;
        text.version = CAMERA_TOOL_VERSION;
        text.date = words.value(3, QDate::currentDate().toString(Qt::ISODate)).toStdString();
        std::cout << manual::manualPage(*program.app, text);
    }
    return std::cout.flush() ? 0 : 1;
}

} // namespace

int main(int count, char** arguments) {
    const QCoreApplication application(count, arguments);
    language::Texts english(cli::englishTexts());
    QCoreApplication::installTranslator(&english);
    const QStringList words = QCoreApplication::arguments();
    if (words.value(1) != QLatin1String("man") && words.value(1) != QLatin1String("bash"))
        return usage();
    for (const manual::Program& program : manual::programs()) {
        if (words.value(2).toStdString() == program.app->get_name())
            return write(program, words);
    }
    return usage();
}
