// line_bench: measures the camera client on a line. The tables go to standard output as Markdown.
#include "bench/exchanges.h"
#include "bench/lognowhere.h"
#include "bench/senders.h"
#include "bench/transfers.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;

constexpr const char* usage =
    "usage: line_bench [--picture BYTES] [--file BYTES] [--pace BYTES_PER_SECOND] [--rounds N]\n"
    "                  [--exchanges N] [--rule TEXT] [--largest BYTES] [--csv FILE]\n"
    "       line_bench --sender WORD... --sender-link PATH [--file BYTES] [--pace BYTES_PER_SECOND]\n"
    "                  [--rounds N] [--csv FILE]\n"
    "--rule: only exchanges whose name contains the text\n"
    "0 exchanges, a picture, file or largest file of 0 bytes: that part is left out\n"
    "--sender: measures uploads by another program, nothing else; a word of the command that starts\n"
    "          upload_sender with its port, repeated for each word\n"
    "--sender-link: path at which upload_sender looks for that port\n";

struct Options {
    bench::TransferSizes sizes{200000, 4 << 20};
    int exchanges = 100;
    std::string rule;                 ///< a part of the names of the rules to measure; empty: all
    std::uint32_t largest = 64 << 20; ///< bytes of the largest upload
    std::string csv;
    bench::Sender sender; ///< no program: the client in this process is measured
};

std::uint32_t numberIn(const std::string& text) {
    std::size_t used = 0;
    const unsigned long number = std::stoul(text, &used);
    if (used != text.size() || number > UINT32_MAX)
        throw std::invalid_argument(text);
    return static_cast<std::uint32_t>(number);
}

Options parse(const std::vector<std::string>& arguments) {
    Options options;
    const std::map<std::string, std::function<void(const std::string&)>> known{
        {"--picture", [&](const std::string& t) { options.sizes.picture = numberIn(t); }},
        {"--file", [&](const std::string& t) { options.sizes.file = numberIn(t); }},
        {"--pace",
         [&](const std::string& t) {
             options.sizes.pace = numberIn(t);
             options.sizes.fastPace = options.sizes.pace * 10;
         }},
        {"--rounds", [&](const std::string& t) { options.sizes.rounds = static_cast<int>(numberIn(t)); }},
        {"--exchanges", [&](const std::string& t) { options.exchanges = static_cast<int>(numberIn(t)); }},
        {"--rule", [&](const std::string& t) { options.rule = t; }},
        {"--largest", [&](const std::string& t) { options.largest = numberIn(t); }},
        {"--csv", [&](const std::string& t) { options.csv = fs::absolute(t).string(); }},
        {"--sender", [&](const std::string& t) { options.sender.program.push_back(t); }},
        {"--sender-link", [&](const std::string& t) { options.sender.link = fs::absolute(t).string(); }},
    };
    for (std::size_t i = 0; i < arguments.size(); i += 2) {
        const auto option = known.find(arguments[i]);
        if (option == known.end() || i + 1 == arguments.size())
            throw std::invalid_argument(arguments[i]);
        option->second(arguments[i + 1]);
    }
    if (options.sender.program.empty() != options.sender.link.empty())
        throw std::invalid_argument("--sender and --sender-link belong together");
    return options;
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
    if (options.sizes.file > 0)
        bench::measureUploads(results, options.sizes);
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
    try {
        return run(parse({argv + 1, argv + argc}));
    } catch (const std::invalid_argument& error) {
        std::fprintf(stderr, "line_bench: %s\n%s", error.what(), usage);
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "line_bench: %s\n", error.what());
        return 1;
    }
}
