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

#include <cstdio>
#include <functional>
#include <thread>
#include <time.h>

namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t linePace = 46080; // bytes per second at that rate
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

/// Uploads without and with the log by turns: the machine's load is the same for both.
void compare(bench::Results& results, const bench::FarEnd& farEnd, const std::string& file, int rounds,
             Log log) {
    std::vector<Cost> without;
    std::vector<Cost> with;
    for (int round = 0; round < rounds; ++round) {
        without.push_back(upload(farEnd, file, Log::none));
        with.push_back(upload(farEnd, file, log));
    }
    const double before = medianOf(without, &Cost::processCpu);
    const double after = medianOf(with, &Cost::processCpu);
    const double seconds = medianOf(with, &Cost::seconds);
    results.add({"processor time of the tool without", before * 1000, "ms", {}});
    results.add({"processor time of the tool with", after * 1000, "ms", {}});
    if (log == Log::closed)
        results.add({"processor time, of that without", after / before, "x",
                     bench::Goal{bench::Goal::Kind::atMost, 1.01}});
    else
        results.add({"more processor time, of a core", (after - before) / seconds, "x",
                     bench::Goal{bench::Goal::Kind::atMost, 0.15}});
    results.add({"rate, of that without", medianOf(without, &Cost::seconds) / seconds, "x",
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

void measure(bench::Results& results, int rounds, const bench::FarEnd& farEnd, const std::string& folder) {
    const std::string file = folder + "/image.bin";
    bench::writeRandomFile(file, uploadSize);
    results.section("The line's log, window closed");
    measureChunks(results);
    compare(results, farEnd, file, rounds, Log::closed);
    results.section("The log's window, open and following");
    compare(results, farEnd, file, rounds, Log::open);
    followFrames(results);
}

} // namespace

int main(int argc, char** argv) {
    // The far end comes first: this process has no threads yet.
    const auto restartAtOnce = [](emulator::PtyFront& front) {
        front.withCamera([](emulator::VirtualCamera& camera) { camera.settings().updateRestartTime = 0s; });
    };
    const bench::FarEnd farEnd(emulator::CameraType::ostra, linePace, restartAtOnce);
    QApplication application(argc, argv);
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Measures what the line's log and its window cost."));
    parser.addHelpOption();
    const QCommandLineOption rounds(QStringLiteral("rounds"), QStringLiteral("Uploads of each kind."),
                                    QStringLiteral("N"), QStringLiteral("5"));
    const QCommandLineOption csv(QStringLiteral("csv"), QStringLiteral("Write the figures to FILE."),
                                 QStringLiteral("FILE"));
    parser.addOptions({rounds, csv});
    parser.process(application);
    const QTemporaryDir folder;
    const bench::LogToNowhere quiet;
    bench::Results results;
    try {
        measure(results, parser.value(rounds).toInt(), farEnd, folder.path().toStdString());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "record_bench: %s\n", error.what());
        return 1;
    }
    if (parser.isSet(csv) && !results.writeCsv(parser.value(csv).toStdString()))
        return 1;
    std::fprintf(stderr, "%d figures miss their goal\n", results.missed());
    return 0;
}
