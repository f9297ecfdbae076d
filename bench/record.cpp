// Cost of the line's log: uploads without it, with it, and with its window open; the window at the line's
// full rate.
#include "aids/linerecordwindow.h"
#include "bench/farend.h"
#include "bench/lognowhere.h"
#include "bench/measure.h"
#include "bench/randomfile.h"
#include "bench/results.h"
#include "emulator/line/ptyfront.h"
#include "link/protocol/frame.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>
#include <functional>
#include <thread>
#include <time.h>

namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t baudRate = 460800;
constexpr std::uint32_t linePace = 46080; // bytes per second at that rate
constexpr double megabyte = 1 << 20;

double threadCpu() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// The window's thread while work runs on another one.
struct Cost {
    double seconds = 0;
    double processCpu = 0;
    double windowCpu = 0; ///< of the user-interface thread
};

Cost runBeside(const std::function<void()>& work) {
    const bench::Stopwatch watch;
    const double before = threadCpu();
    const std::unique_ptr<QThread> thread(QThread::create(work));
    QEventLoop loop;
    QObject::connect(thread.get(), &QThread::finished, &loop, &QEventLoop::quit);
    thread->start();
    loop.exec();
    thread->wait();
    return {watch.seconds(), watch.cpuSeconds(), threadCpu() - before};
}

enum class Log { none, closed, open };

/// One upload, in the way of the main window.
Cost upload(bench::FarEnd& farEnd, const std::string& file, Log log) {
    CameraSp camera(farEnd.portName(), baudRate);
    camera.setAppFilePath(file);
    QualityMark mark;
    LineWatch watch(Clock::system(), &mark, nullptr);
    std::unique_ptr<LineRecordWindow> window;
    if (log != Log::none)
        watch.linkOpened(camera, QStringLiteral("line"));
    if (log == Log::open) {
        window = std::make_unique<LineRecordWindow>(nullptr, &watch);
        window->show();
    }
    bool done = false;
    const Cost cost = runBeside([&] { done = camera.appUpdate(); });
    window.reset();
    watch.linkClosed();
    if (!done)
        throw std::runtime_error("the upload failed");
    return cost;
}

struct Sizes {
    std::uint32_t file = 32 << 20;
    std::uint32_t pacedFile = 512 << 10;
    int rounds = 7;
    int seconds = 10;
};

double medianOf(const std::vector<Cost>& costs, double Cost::*value) {
    std::vector<double> values;
    for (const Cost& cost : costs)
        values.push_back(cost.*value);
    return bench::median(values);
}

/// Uploads with and without by turns: the machine's mood is the same for both.
void compare(bench::Results& results, const std::string& words, bench::FarEnd& farEnd,
             const std::string& file, int rounds, Log log) {
    std::vector<Cost> without;
    std::vector<Cost> with;
    for (int round = 0; round < rounds; ++round) {
        without.push_back(upload(farEnd, file, Log::none));
        with.push_back(upload(farEnd, file, log));
    }
    const double cpuBefore = medianOf(without, &Cost::processCpu);
    const double cpu = medianOf(with, &Cost::processCpu);
    const double seconds = medianOf(with, &Cost::seconds);
    results.add({words + ": processor time without", cpuBefore * 1000, "ms", {}});
    results.add({words + ": processor time with", cpu * 1000, "ms", {}});
    if (log == Log::closed)
        results.add({words + ": processor time, of that without", cpu / cpuBefore, "x",
                     bench::Goal{bench::Goal::Kind::atMost, 1.01}});
    else
        results.add({words + ": processor time of the window's thread, of a core",
                     medianOf(with, &Cost::windowCpu) / seconds, "x",
                     bench::Goal{bench::Goal::Kind::atMost, 0.15}});
    results.add({words + ": rate, of that without", medianOf(without, &Cost::seconds) / seconds, "x",
                 bench::Goal{bench::Goal::Kind::atLeast, 0.99}});
}

/// Frames as dense as the line can carry them, in chunks of a few ms.
void followFrames(bench::Results& results, int seconds) {
    using protocol::Bytes;
    const Bytes request = protocol::buildFrame(0x01, Bytes{0}, 1);
    const Bytes answer = protocol::buildFrame(0x01, Bytes{1}, 1);
    const auto perStep = static_cast<int>(linePace / 200 / (request.size() + answer.size()));
    QualityMark mark;
    LineWatch watch(Clock::system(), &mark, nullptr);
    CameraSp camera(std::string(), baudRate);
    watch.linkOpened(camera, QStringLiteral("line"));
    LineRecordWindow window(nullptr, &watch);
    window.show();
    service::LineRecord& record = watch.log()->record;
    const Cost cost = runBeside([&] {
        auto next = std::chrono::steady_clock::now();
        for (int step = 0; step < seconds * 200; ++step) {
            for (int i = 0; i < perStep; ++i) {
                record.sending(request, Clock::system().now());
                record.received(answer, Clock::system().now(), Clock::system().now());
            }
            next += 5ms;
            std::this_thread::sleep_until(next);
        }
    });
    results.add(
        {"heartbeats, rows a second", static_cast<double>(watch.log()->rows.end()) / cost.seconds, "", {}});
    results.add({"heartbeats: processor time of the window's thread, of a core",
                 cost.windowCpu / cost.seconds, "x", bench::Goal{bench::Goal::Kind::atMost, 0.15}});
    watch.linkClosed();
}

void measure(bench::Results& results, const Sizes& sizes, bench::FarEnd& fast, bench::FarEnd& paced,
             const std::string& folder) {
    const std::string large = folder + "/large.bin";
    const std::string small = folder + "/small.bin";
    bench::writeRandomFile(large, sizes.file);
    bench::writeRandomFile(small, sizes.pacedFile);

    results.section("Uploads with the log, window closed");
    compare(results, "line as fast as it goes", fast, large, sizes.rounds, Log::closed);
    compare(results, "46080 bytes/s", paced, small, std::min(sizes.rounds, 3), Log::closed);
    const bench::PeakMemory memory;
    static_cast<void>(upload(fast, large, Log::none));
    const auto without = static_cast<double>(memory.growthBytes());
    static_cast<void>(upload(fast, large, Log::closed));
    results.add({"peak memory beyond that without",
                 (static_cast<double>(memory.growthBytes()) - without) / megabyte, "MiB",
                 bench::Goal{bench::Goal::Kind::atMost, 18}});

    results.section("The log's window, open and following");
    compare(results, "upload at 46080 bytes/s", paced, small, std::min(sizes.rounds, 3), Log::open);
    followFrames(results, sizes.seconds);
}

} // namespace

int main(int argc, char** argv) {
    // The far ends come first: this process has no threads yet.
    const auto restartAtOnce = [](emulator::PtyFront& front) {
        front.withCamera([](emulator::VirtualCamera& camera) { camera.settings().updateRestartTime = 0s; });
    };
    bench::FarEnd fast(emulator::CameraType::ostra, 0, restartAtOnce);
    bench::FarEnd paced(emulator::CameraType::ostra, linePace, restartAtOnce);
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Measures what the line's log and its window cost."));
    parser.addHelpOption();
    const QCommandLineOption rounds(QStringLiteral("rounds"), QStringLiteral("Uploads of each kind."),
                                    QStringLiteral("N"), QStringLiteral("7"));
    const QCommandLineOption csv(QStringLiteral("csv"), QStringLiteral("Write the figures to FILE."),
                                 QStringLiteral("FILE"));
    parser.addOptions({rounds, csv});
    parser.process(application);
    Sizes sizes;
    sizes.rounds = parser.value(rounds).toInt();
    const QTemporaryDir folder;
    const bench::LogToNowhere quiet;
    bench::Results results;
    try {
        measure(results, sizes, fast, paced, folder.path().toStdString());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "record_bench: %s\n", error.what());
        return 1;
    }
    if (parser.isSet(csv) && !results.writeCsv(parser.value(csv).toStdString()))
        return 1;
    std::fprintf(stderr, "%d figures miss their goal\n", results.missed());
    return 0;
}
