// line_bench: measures the camera client on a line. The tables go to standard output as Markdown.
#include "bench/exchanges.h"
#include "bench/lognowhere.h"
#include "bench/senders.h"
#include "bench/transfers.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;

struct Options {
    bench::TransferSizes sizes{200000, 4 << 20};
    int exchanges = 100;
    std::string rule;                 ///< a part of the names of the rules to measure; empty: all
    std::uint32_t largest = 64 << 20; ///< bytes of the largest upload
    std::string csv;
    bench::Sender sender; ///< no program: the client in this process is measured
};

void addOptions(CLI::App& app, Options& o) {
    const CLI::Range anyCount(0, std::numeric_limits<int>::max());
    app.add_option("--picture", o.sizes.picture, "size of the picture that is downloaded")
        ->type_name("BYTES");
    app.add_option("--file", o.sizes.file, "size of the file that is uploaded")->type_name("BYTES");
    app.add_option_function<std::uint32_t>(
           "--pace",
           [&o](std::uint32_t pace) {
               o.sizes.pace = pace;
               o.sizes.fastPace = pace * 10;
           },
           "speed of the line")
        ->type_name("BYTES_PER_SECOND");
    app.add_option("--rounds", o.sizes.rounds, "transfers of each")->type_name("N")->check(anyCount);
    app.add_option("--exchanges", o.exchanges, "exchanges of each rule")->type_name("N")->check(anyCount);
    app.add_option("--rule", o.rule, "only exchanges whose name contains the text")->type_name("TEXT");
    app.add_option("--largest", o.largest, "size of the largest upload")->type_name("BYTES");
    app.add_option_function<std::string>(
           "--csv", [&o](const std::string& path) { o.csv = fs::absolute(path).string(); },
           "file for the figures")
        ->type_name("FILE");
    CLI::Option* const sender =
        app.add_option("--sender", o.sender.program,
                       "measure uploads by another program, nothing else; a word of the command that starts "
                       "upload_sender with its port, repeated for each word")
            ->type_name("WORD")
            ->allow_extra_args(false);
    CLI::Option* const link =
        app.add_option_function<std::string>(
               "--sender-link",
               [&o](const std::string& path) { o.sender.link = fs::absolute(path).string(); },
               "path at which upload_sender looks for that port")
            ->type_name("PATH");
    sender->needs(link);
    link->needs(sender);
    for (CLI::Option* const option : app.get_options()) { // given twice, the last one counts
        if (option != sender && option != app.get_help_ptr())
            option->take_last();
    }
}

/// Pictures and files are written into a directory that disappears.
class WorkingDirectory {
public:
    WorkingDirectory() {
        std::string pattern = (fs::temp_directory_path() / "camera-bench-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("no directory to work in");
        m_path = pattern;
        fs::current_path(m_path);
    }
    ~WorkingDirectory() {
        std::error_code ignored;
        fs::current_path(m_path.parent_path(), ignored);
        fs::remove_all(m_path, ignored);
    }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
    fs::path m_path;
};

void measureClient(bench::Results& results, const Options& options) {
    if (options.sizes.picture > 0)
        bench::measureDownloads(results, options.sizes);
    if (options.exchanges > 0)
        bench::measureExchanges(results, options.exchanges, options.rule);
    if (options.sizes.file > 0) {
        bench::measureUploads(results, options.sizes);
        bench::measureAdapter(results, options.sizes);
    }
    if (options.largest > 0)
        bench::measureUploadGrowth(results, options.largest);
}

int run(const Options& options) {
    const WorkingDirectory directory;
    const bench::LogToNowhere quiet;
    bench::Results results;
    if (options.sender.program.empty())
        measureClient(results, options);
    else
        bench::measureSender(results, options.sender, options.sizes);
    if (!options.csv.empty() && !results.writeCsv(options.csv))
        throw std::runtime_error("cannot write " + options.csv);
    std::fprintf(stderr, "%d figures miss their goal\n", results.missed());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Measures the camera client on a line. 0 exchanges, a picture, file or largest file of 0 "
                 "bytes: that part is left out.",
                 "line_bench");
    Options options;
    addOptions(app, options);
    try {
        app.parse(argc, argv);
        return run(options);
    } catch (const CLI::CallForHelp&) {
        std::fputs(app.help().c_str(), stdout);
        return 0;
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "line_bench: %s\n%s", error.what(), app.help().c_str());
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "line_bench: %s\n", error.what());
        return 1;
    }
}
