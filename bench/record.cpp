// Cost of the line's log: uploads without it, with it, and with its window open; the window at the line's
// full rate.
#include "aids/linerecordwindow.h"
#include "app/mainwindow.h"
#include "bench/farend.h"
#include "bench/lognowhere.h"
#include "bench/measure.h"
#include "bench/plaincopy.h"
#include "bench/randomfile.h"
#include "bench/results.h"
#include "emulator/line/ptyfront.h"
#include "link/protocol/uploads.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDebug>
#include <QEventLoop>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QThread>

#include <cmath>
#include <cstdio>
#include <functional>
#include <numeric>
#include <thread>
#include <time.h>

namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t linePace = 46080; // bytes per second at that rate
constexpr int fastness = 10;              // of the other line
constexpr std::uint32_t uploadSize = 512 << 10;
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

/// Meets the file dialog and the result's box of an upload.
class Answers {
public:
    explicit Answers(QString file) : m_file(std::move(file)) {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { answer(); });
        m_timer.start(50ms);
    }
    [[nodiscard]] const QString& result() const { return m_result; }

private:
    void answer() {
        QWidget* const modal = QApplication::activeModalWidget();
        if (auto* const dialog = qobject_cast<QFileDialog*>(modal)) {
            dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(m_file);
            QMetaObject::invokeMethod(dialog, "accept");
        } else if (auto* const box = qobject_cast<QMessageBox*>(modal)) {
            m_result = box->text();
            box->accept();
        }
    }

    QString m_file;
    QString m_result;
    QTimer m_timer;
};

enum class Log { none, closed, open };

/// The mark of an undisturbed link: what it costs to paint is not the log's.
void showGoodSignal(const MainWindow& window) {
    service::RecentExchanges recent;
    for (const auto role : {service::Judgement::Role::request, service::Judgement::Role::answer})
        recent.add({.role = role}, 0);
    window.findChild<QualityMark*>()->showSignal(recent);
}

/// One upload by the main window, from the press of the button to the result.
Cost upload(const bench::FarEnd& farEnd, const std::string& file, Log log) {
    MainWindow window;
    window.show();
    const auto press = [&window](const char* name) {
        window.findChild<QPushButton*>(QLatin1String(name))->click();
    };
    auto* const ports = window.findChild<QComboBox*>(QStringLiteral("sel_ports"));
    ports->addItem(QString::fromStdString(farEnd.portName()));
    ports->setCurrentText(QString::fromStdString(farEnd.portName()));
    press("btn_open");
    if (log == Log::none) {
        window.findChild<LineWatch*>()->linkClosed();
        showGoodSignal(window);
    }
    if (log == Log::open)
        window.findChild<QAction*>(QStringLiteral("actionLineRecord"))->trigger();
    const Answers answers(QString::fromStdString(file));
    press("btn_apppath");
    const bench::Stopwatch watch;
    const double before = threadCpu();
    press("btn_appupdate");
    while (answers.result().isEmpty())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (answers.result() != QStringLiteral("升级已完成，结果:true"))
        throw std::runtime_error("the upload failed: " + answers.result().toStdString());
    return {watch.seconds(), watch.cpuSeconds(), threadCpu() - before};
}

double medianOf(const std::vector<Cost>& costs, double Cost::*value) {
    std::vector<double> values;
    for (const Cost& cost : costs)
        values.push_back(cost.*value);
    return bench::median(values);
}

/// Uploads without the log and with it, by turns: the machine's load is the same for both.
struct Compared {
    std::vector<Cost> without;
    std::vector<Cost> with;
};

Compared compare(const bench::FarEnd& farEnd, const std::string& file, int rounds, Log log) {
    Compared costs;
    for (int round = 0; round < rounds; ++round) {
        // Who goes first changes.
        if (round % 2 != 0)
            costs.with.push_back(upload(farEnd, file, log));
        costs.without.push_back(upload(farEnd, file, Log::none));
        if (round % 2 == 0)
            costs.with.push_back(upload(farEnd, file, log));
    }
    return costs;
}

double medianCpu(bench::Results& results, const std::vector<Cost>& costs, const char* what) {
    const double seconds = medianOf(costs, &Cost::processCpu);
    results.add({std::string("processor time of the tool ") + what, seconds * 1000, "ms", {}});
    return seconds;
}

/// Of a difference of few hundredths the mean of many pairs tells, and its standard error.
void showClosedCost(bench::Results& results, const Compared& costs) {
    const double without = medianCpu(results, costs.without, "without");
    medianCpu(results, costs.with, "with");
    const auto pairs = static_cast<double>(costs.with.size());
    std::vector<double> more;
    for (std::size_t i = 0; i < costs.with.size(); ++i)
        more.push_back((costs.with[i].processCpu - costs.without[i].processCpu) / without);
    const double mean = std::accumulate(more.begin(), more.end(), 0.0) / pairs;
    double squares = 0;
    for (const double value : more)
        squares += (value - mean) * (value - mean);
    results.add(
        {"processor time, of that without", 1 + mean, "x", bench::Goal{bench::Goal::Kind::atMost, 1.01}});
    results.add({"its standard error", std::sqrt(squares / pairs / (pairs - 1)), "x", {}});
}

void showOpenCost(bench::Results& results, const Compared& costs) {
    const double without = medianCpu(results, costs.without, "without");
    const double with = medianCpu(results, costs.with, "with");
    const double seconds = medianOf(costs.with, &Cost::seconds);
    results.add({"more processor time, of a core", (with - without) / seconds, "x",
                 bench::Goal{bench::Goal::Kind::atMost, 0.15}});
    results.add({"rate, of that without", medianOf(costs.without, &Cost::seconds) / seconds, "x",
                 bench::Goal{bench::Goal::Kind::atLeast, 0.99}});
}

/// Processor time of the log for each chunk of an upload: on the thread of the exchange, and later on the
/// window's.
void measureChunks(bench::Results& results) {
    constexpr int chunks = 60000; // twice what the record holds
    constexpr int batch = 1000;
    const protocol::Bytes chunk = bench::randomBytes(protocol::rawChunkSize);
    service::LineLog log({}, Clock::Time{});
    const protocol::Bytes announcement =
        protocol::buildAnnouncement(chunks * protocol::rawChunkSize, protocol::Bytes(protocol::digestSize));
    log.record.add(trace::Side::tool, protocol::buildFrame(0x1B, announcement, 1), {});
    log.record.add(trace::Side::camera, protocol::buildFrame(0x1B, protocol::Bytes(5), 1), {});
    double adding = 0;
    double decoding = 0;
    for (int sent = 0; sent < chunks; sent += batch) {
        const double began = threadCpu();
        for (int i = 0; i < batch; ++i)
            log.record.sending(chunk, Clock::Time{1s});
        const double added = threadCpu();
        log.rows.update(1s);
        adding += added - began;
        decoding += threadCpu() - added;
    }
    results.add({"a chunk of 512 bytes into the record", adding / chunks * 1e9, "ns", {}});
    results.add({"a chunk of 512 bytes decoded", decoding / chunks * 1e9, "ns", {}});
    const auto resident = static_cast<double>(bench::residentBytes());
    const service::LineLog other({}, Clock::Time{});
    results.add({"memory of an empty log",
                 (static_cast<double>(bench::residentBytes()) - resident) / megabyte, "MiB",
                 bench::Goal{bench::Goal::Kind::atMost, 1}});
}

/// Frames as dense as the line can carry them, in chunks of a few ms.
void followFrames(bench::Results& results) {
    constexpr int seconds = 10;
    using protocol::Bytes;
    const Bytes request = protocol::buildFrame(0x01, Bytes{0}, 1);
    const Bytes answer = protocol::buildFrame(0x01, Bytes{1}, 1);
    const auto perStep = static_cast<int>(linePace / 200 / (request.size() + answer.size()));
    QualityMark mark;
    LineWatch watch(Clock::system(), &mark, nullptr);
    CameraSp camera(std::string(), bench::baudRate);
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

struct FarEnds {
    bench::FarEnd real;
    bench::FarEnd fast; ///< the log takes its largest share where nothing else waits
};

void measure(bench::Results& results, int rounds, const FarEnds& farEnds, const std::string& folder) {
    const std::string file = folder + "/image.bin";
    bench::writeRandomFile(file, uploadSize);
    results.section("The line's log, window closed");
    measureChunks(results);
    showClosedCost(results, compare(farEnds.fast, file, rounds * fastness, Log::closed));
    results.section("The log's window, open and following");
    showOpenCost(results, compare(farEnds.real, file, rounds, Log::open));
    followFrames(results);
}

} // namespace

int main(int argc, char** argv) {
    // The far ends come first: this process has no threads yet.
    const auto restartAtOnce = [](emulator::PtyFront& front) {
        front.withCamera([](emulator::VirtualCamera& camera) { camera.settings().updateRestartTime = 0s; });
    };
    const FarEnds farEnds{{emulator::CameraType::ostra, linePace, restartAtOnce},
                          {emulator::CameraType::ostra, fastness * linePace, restartAtOnce}};
    QApplication application(argc, argv);
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Measures what the line's log and its window cost."));
    parser.addHelpOption();
    const QCommandLineOption rounds(
        QStringLiteral("rounds"), QStringLiteral("Uploads of each kind; ten times as many on the fast line."),
        QStringLiteral("N"), QStringLiteral("5"));
    const QCommandLineOption csv(QStringLiteral("csv"), QStringLiteral("Write the figures to FILE."),
                                 QStringLiteral("FILE"));
    parser.addOptions({rounds, csv});
    parser.process(application);
    const QTemporaryDir folder;
    const bench::LogToNowhere quiet;
    bench::Results results;
    try {
        measure(results, parser.value(rounds).toInt(), farEnds, folder.path().toStdString());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "record_bench: %s\n", error.what());
        return 1;
    }
    if (parser.isSet(csv) && !results.writeCsv(parser.value(csv).toStdString()))
        return 1;
    std::fprintf(stderr, "%d figures miss their goal\n", results.missed());
    return 0;
}
