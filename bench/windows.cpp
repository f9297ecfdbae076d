// window_bench: measures the tool's windows. The tables go to standard output as Markdown.
#include "bench/lists.h"
#include "bench/starts.h"

#include <QApplication>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

namespace {

struct Options {
    bench::StartSettings starts;
    int listRounds = 200;
    std::string csv;
};

int run(int argc, char** argv, const Options& options) {
    bench::Results results;
    if (options.starts.rounds > 0)
        bench::measureStarts(results, options.starts);
    if (options.listRounds > 0) {
        const QApplication application(argc, argv); // not before the starts
        bench::measureLists(results, options.listRounds);
    }
    if (!options.csv.empty() && !results.writeCsv(options.csv)) {
        std::fprintf(stderr, "window_bench: cannot write %s\n", options.csv.c_str());
        return 1;
    }
    std::fprintf(stderr, "%d figures miss their goal\n", results.missed());
    return 0;
}

void addOptions(CLI::App& app, Options& o) {
    app.add_option("--programs", o.starts.programFolder, "folder of tool_window and bare_window")
        ->type_name("FOLDER");
    app.add_option("--starts", o.starts.rounds, "starts of each; 0 leaves them out")->type_name("COUNT");
    app.add_option("--idle", o.starts.idleSeconds, "idleness that is watched")->type_name("SECONDS");
    app.add_option("--lists", o.listRounds, "fillings of each list; 0 leaves them out")->type_name("COUNT");
    app.add_option("--csv", o.csv, "file for the figures")->type_name("FILE");
    for (CLI::Option* const option : app.get_options()) { // given twice, the last one counts
        if (option != app.get_help_ptr())
            option->take_last();
    }
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Measures the tool's windows.", "window_bench");
    Options options;
    addOptions(app, options);
    try {
        app.parse(argc, argv);
        return run(argc, argv, options);
    } catch (const CLI::CallForHelp&) {
        std::fputs(app.help().c_str(), stdout);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "window_bench: %s\n", error.what());
        return 1;
    }
}
