// window_bench: measures the tool's windows. The tables go to standard output as Markdown.
#include "bench/lists.h"
#include "bench/starts.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>
#include <stdexcept>

namespace {

struct Options {
    bench::StartSettings starts;
    int listRounds = 200;
    QString csv;
};

int run(int argc, char** argv, const Options& options) {
    bench::Results results;
    if (options.starts.rounds > 0)
        bench::measureStarts(results, options.starts);
    if (options.listRounds > 0) {
        const QApplication application(argc, argv); // not before the starts
        bench::measureLists(results, options.listRounds);
    }
    if (!options.csv.isEmpty() && !results.writeCsv(options.csv.toStdString())) {
        std::fprintf(stderr, "window_bench: cannot write %s\n", qPrintable(options.csv));
        return 1;
    }
    std::fprintf(stderr, "%d figures miss their goal\n", results.missed());
    return 0;
}

Options parse(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.addOptions({{"programs", "Folder of tool_window and bare_window.", "folder", "."},
                       {"starts", "Starts of each; 0 leaves them out.", "count", "11"},
                       {"idle", "Idleness that is watched, in seconds.", "seconds", "5"},
                       {"lists", "Fillings of each list; 0 leaves them out.", "count", "200"},
                       {"csv", "File for the figures.", "file"}});
    if (!parser.parse(arguments))
        throw std::invalid_argument(parser.errorText().toStdString());
    Options options;
    options.starts = {parser.value("programs").toStdString(), parser.value("starts").toInt(),
                      parser.value("idle").toInt()};
    options.listRounds = parser.value("lists").toInt();
    options.csv = parser.value("csv");
    return options;
}

} // namespace

int main(int argc, char** argv) {
    try {
        QStringList arguments;
        for (int i = 0; i < argc; ++i)
            arguments << QString::fromLocal8Bit(argv[i]);
        return run(argc, argv, parse(arguments));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "window_bench: %s\n", error.what());
        return 1;
    }
}
