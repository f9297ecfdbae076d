#include "bench/exchanges.h"

#include "bench/farend.h"
#include "bench/measure.h"
#include "bench/plaincopy.h"
#include "emulator/line/ptyfront.h"
#include "link/camerasp.h"
#include "link/protocol/exchangetable.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

using namespace std::chrono_literals;

namespace bench {

namespace {

using emulator::CameraType;
using protocol::ExchangeRule;
namespace rules = protocol::rules;

constexpr double keptMs = 50; ///< timeout of a fresh link
constexpr double slowMs = 900;
constexpr double longMs = 1600;
constexpr auto bareSleep = 20ms;
constexpr std::size_t pictureSize = 100;
constexpr const char* emptyFile = "empty.bin";

/// One command. No answer below fills its last read, so that an exchange lasts one timeout of its rule.
struct Row {
    std::string name;
    double mandatedMs;
    bool (*works)(CameraSp& client);
    CameraType type = CameraType::ostra;
    std::chrono::milliseconds rest{0}; ///< until the camera is back
    std::size_t jsonPicture = 300;     ///< bytes; up to 500 are one piece
    bool writesPicture = false;
    int exchanges = 1; ///< the goal of processor time is for each
};

double mandated(const ExchangeRule& rule) {
    if (rule.reading == protocol::Reading::none)
        return 0;
    return rule.timeoutMs.value_or(keptMs) + rule.pauseAfterWriteMs;
}

Row row(const ExchangeRule& rule, bool (*works)(CameraSp& client), CameraType type = CameraType::ostra) {
    const bool writesPicture =
        rule.reading == protocol::Reading::blocks || rule.name == rules::quentaFirstChunk.name;
    return {std::string(rule.name), mandated(rule), works, type, 0ms, 300, writesPicture};
}

bool fetchesJsonPicture(CameraSp& client) {
    return client.getQuentaModbusPic(5) && std::filesystem::remove("5.jpg");
}

protocol::Bytes readGyroTest(CameraSp& client) {
    namespace gyro = protocol::gyro_test;
    return client.getCommonPropertyWithoutParse(gyro::property, code(protocol::Command::gyroTest),
                                                gyro::timeoutMs, gyro::readSize);
}

std::vector<Row> simpleRows() {
    using enum CameraType;
    return {
        row(rules::testHeartBeat, [](CameraSp& c) { return c.testHeartBeat(); }),
        row(rules::getSn, [](CameraSp& c) { return !c.getSn().empty(); }),
        row(rules::setSn, [](CameraSp& c) { return c.setSn("SHELF000001"); }),
        row(rules::resetToFactory, [](CameraSp& c) { return c.resetToFactory(); }),
        row(rules::rebootCamera, [](CameraSp& c) { return c.rebootCamera(); }),
        row(rules::setCommonProperty, [](CameraSp& c) { return c.setCommonProperty(15, {30}, 3); }),
        row(rules::getCommonProperty, [](CameraSp& c) { return !c.getCommonProperty(15, 2).empty(); }),
        {"getCommonPropertyWithoutParse, 50 ms", protocol::gyro_test::timeoutMs,
         [](CameraSp& c) { return !readGyroTest(c).empty(); }},
        row(rules::getPropertyValue, [](CameraSp& c) { return !c.getAppVersion().empty(); }),
        row(rules::getQvVersion, [](CameraSp& c) { return !c.getQvVersion().empty(); }),
        row(rules::getModelInfo, [](CameraSp& c) { return !c.getModelInfo().empty(); }),
        row(rules::opDoor,
            [](CameraSp& c) {
                c.opDoor(true);
                return true;
            }),
        row(rules::originCapture, [](CameraSp& c) { return c.originCapture(); }),
        row(rules::getOriginPicInfos, [](CameraSp& c) { return !c.getOriginPicInfos().empty(); }),
        row(rules::delOriginPic, [](CameraSp& c) { return c.delOriginPic(1); }),
        row(
            rules::captureV1, [](CameraSp& c) { return c.captureV1(); }, salesDynamic),
        row(
            rules::getPicInfosV1, [](CameraSp& c) { return !c.getPicInfosV1().empty(); }, salesDynamic),
        row(
            rules::delPicV1, [](CameraSp& c) { return c.delPicV1(1, 0, 0); }, salesDynamic),
        row(rules::getOriginTargetPic,
            [](CameraSp& c) {
                c.getOriginTargetPic(5, 100);
                return std::filesystem::remove("5.jpg");
            }),
        row(
            rules::getTargetPicV1,
            [](CameraSp& c) {
                c.getTargetPicV1(5, 100);
                return std::filesystem::remove("5.jpg");
            },
            salesDynamic),
        row(
            rules::quentaProperty, [](CameraSp& c) { return !c.getQuentaModbusProperty({}).empty(); },
            quenta),
        row(
            rules::quentaFirstChunk, [](CameraSp& c) { return fetchesJsonPicture(c); }, quenta),
        {"getQuentaModbusPic first and later chunk: 2 exchanges",
         mandated(rules::quentaFirstChunk) + mandated(rules::quentaLaterChunk),
         [](CameraSp& c) { return fetchesJsonPicture(c); }, quenta, 0ms, 1000, true, 2},
    };
}

/// Several exchanges and their pauses; the empty file leaves no data to send. An image's announcement
/// answer fills its read of 15 bytes and returns at once. takePic's picture is one that the camera draws.
std::vector<Row> longRows() {
    return {
        {"takePic: 5 exchanges, 4 pauses", 5 * 1000 + 4 * 1000,
         [](CameraSp& c) { return c.takePic() && std::filesystem::remove("a.jpg"); }},
        {"appUpdate, empty file: pause, verdict", 2000 + 1000,
         [](CameraSp& c) {
             c.setAppFilePath(emptyFile);
             return c.appUpdate();
         }},
        {"firewareUpdate, empty file: pause", 2000,
         [](CameraSp& c) {
             c.setFirewareFilePath(emptyFile);
             return c.firewareUpdate();
         },
         CameraType::ostra, 3s},
        {"modelUpdate, empty file: announcement, pause, verdict", 1000 + 2000 + 1000,
         [](CameraSp& c) {
             c.setModelNameAndPath("model", emptyFile);
             return c.modelUpdate();
         }},
        {"appUpdateV1: 5 announcements, pause, 11 closing packets", 5 * 1000 + 1000 + 11 * 200,
         [](CameraSp& c) { return c.appUpdateV1("app.bin", emptyFile); }, CameraType::salesDynamic},
    };
}

void prepare(emulator::PtyFront& front, std::size_t jsonPicture) {
    front.withCamera([jsonPicture](emulator::VirtualCamera& camera) {
        camera.state().pictures = {emulator::makePicture(5, emulator::Bytes(pictureSize, 7))};
        camera.state().jsonPicture = emulator::Bytes(jsonPicture, 7);
        camera.settings().holdsAnnouncedImage = true;
    });
}

struct Times {
    std::vector<double> excessMs; ///< beyond what is mandated, sorted
    std::vector<double> sleepMs;  ///< the same of sleeps between the exchanges: delay of the machine itself
    double cpuMs = 0;             ///< per exchange
    int failures = 0;
};

/// The value within which 99 of 100 lie; the worst one of fewer than 100. Sorted values.
double within99(const std::vector<double>& sorted) {
    const std::size_t rank = (sorted.size() * 99 + 99) / 100; // rounded up
    return sorted[rank - 1];
}

Times measure(const Row& row, int rounds) {
    const FarEnd camera(row.type, 0, [&row](emulator::PtyFront& front) { prepare(front, row.jsonPicture); });
    CameraSp client(camera.portName(), baudRate);
    client.setSlaveAddress(emulator::settingsForType(row.type).address);
    row.works(client); // not counted: first use of memory and files
    Times times;
    const Stopwatch all;
    for (int round = 0; round < rounds; ++round) {
        std::this_thread::sleep_for(row.rest);
        const Stopwatch one;
        times.failures += row.works(client) ? 0 : 1;
        times.excessMs.push_back(one.seconds() * 1000 - row.mandatedMs);
        const Stopwatch bare;
        std::this_thread::sleep_for(bareSleep);
        times.sleepMs.push_back((Seconds(bare.seconds()) - Seconds(bareSleep)).count() * 1000);
    }
    times.cpuMs = all.cpuSeconds() * 1000 / rounds;
    std::sort(times.excessMs.begin(), times.excessMs.end());
    std::sort(times.sleepMs.begin(), times.sleepMs.end());
    return times;
}

/// Processor time in ms of what a picture command does with its file and this table with it afterwards, each
/// time after a sleep like an exchange's.
double bareFileCpuMs(int rounds) {
    const std::string content(pictureSize, 'p');
    const Stopwatch all;
    for (int round = 0; round < rounds; ++round) {
        std::this_thread::sleep_for(bareSleep);
        std::ofstream("bare.part", std::ios::binary) << content;
        std::filesystem::rename("bare.part", "bare.jpg");
        std::filesystem::remove("bare.jpg");
    }
    const double both = all.cpuSeconds();
    const Stopwatch sleeps;
    for (int round = 0; round < rounds; ++round)
        std::this_thread::sleep_for(bareSleep);
    return (both - sleeps.cpuSeconds()) * 1000 / rounds;
}

constexpr double medianGoalMs = 1;
constexpr double worstGoalMs = 5;
constexpr double cpuGoalMs = 0.3;

/// Counts for the sentences below the table.
struct Misses {
    int worst = 0;             ///< rules of which 99 of 100 do not keep the goal
    int worstWithSleeps = 0;   ///< those of them whose sleeps were as late
    int cpu = 0;               ///< rules that take more processor time than the goal
    int cpuWithoutTheFile = 0; ///< those of them that would without a picture file's cost
};

void report(Results& results, const Row& row, int rounds, double fileCpuMs, Misses& misses) {
    const Times times = measure(row, rounds);
    // Uploads and takePic are several exchanges with pauses between them: no goals.
    const bool single = row.mandatedMs < longMs;
    const auto goal = [single](double limit) {
        return single ? std::optional<Goal>({Goal::Kind::atMost, limit}) : std::nullopt;
    };
    const double worst = within99(times.excessMs);
    const double worstSleep = within99(times.sleepMs);
    if (single && worst > worstGoalMs) {
        ++misses.worst;
        misses.worstWithSleeps += worstSleep > worstGoalMs ? 1 : 0;
    }
    const double cpuGoal = cpuGoalMs * row.exchanges;
    if (single && times.cpuMs > cpuGoal) {
        ++misses.cpu;
        misses.cpuWithoutTheFile += !row.writesPicture || times.cpuMs - fileCpuMs > cpuGoal ? 1 : 0;
    }
    results.addRow(row.name,
                   {{"mandated", row.mandatedMs, "ms", {}},
                    {"median beyond it", times.excessMs[times.excessMs.size() / 2], "ms", goal(medianGoalMs)},
                    {"99 of 100 within", worst, "ms", goal(worstGoalMs)},
                    {"99 of 100 bare sleeps within", worstSleep, "ms", {}},
                    {"processor time", times.cpuMs, "ms", goal(cpuGoal)},
                    {"failures", static_cast<double>(times.failures), "", Goal{Goal::Kind::atMost, 0}},
                    {"exchanges", static_cast<double>(rounds), "", {}}});
}

std::string explanation(const Misses& misses, double fileCpuMs) {
    char fileCost[16];
    std::snprintf(fileCost, sizeof fileCost, "%.3f", fileCpuMs);
    std::string text =
        "The processor time of picture commands includes writing and removing their file: done bare, "
        "that takes " +
        std::string(fileCost) + " ms here.";
    if (misses.cpu > 0)
        text += " Of the " + std::to_string(misses.cpu) + " rules beyond the goal of processor time " +
                std::to_string(misses.cpu - misses.cpuWithoutTheFile) + " keep it when that is taken off.";
    const int unexplained = misses.worst - misses.worstWithSleeps;
    if (misses.worstWithSleeps > 0)
        text += " In " + std::to_string(misses.worstWithSleeps) + " of the " + std::to_string(misses.worst) +
                " rules that miss 5 ms the bare sleeps beside them miss it too: there the machine woke late "
                "whoever slept.";
    if (unexplained > 0)
        text += " In " + std::to_string(unexplained) + " of the " + std::to_string(misses.worst) +
                " rules that miss 5 ms the bare sleeps beside them keep it: a late moment that met only the "
                "exchanges, "
                "or a cost of theirs.";
    return text;
}

} // namespace

void measureExchanges(Results& results, int rounds, const std::string& namePart) {
    results.section("One exchange of each rule");
    std::ofstream(emptyFile).flush();
    results.columns({"Rule", "Mandated, ms", "Median beyond it, ms (goal 1)", "99 of 100 within, ms (goal 5)",
                     "99 of 100 bare sleeps within, ms", "Processor time, ms (goal 0.3 an exchange)",
                     "Failures", "Exchanges"});
    const double fileCpuMs = bareFileCpuMs(rounds);
    Misses misses;
    const auto wanted = [&namePart](const Row& row) { return row.name.find(namePart) != std::string::npos; };
    for (const Row& row : simpleRows()) {
        if (wanted(row))
            report(results, row, row.mandatedMs < slowMs ? rounds : std::max(1, rounds / 5), fileCpuMs,
                   misses);
    }
    for (const Row& row : longRows()) {
        if (wanted(row))
            report(results, row, std::max(1, rounds / 20), fileCpuMs, misses);
    }
    results.remark(
        "A read that is not filled lasts its timeout: one of the rule's timeouts, and the pause "
        "where it has one, is what an answered exchange takes. The bare sleeps of 20 ms between the "
        "exchanges show how late the machine itself wakes a process at that time. With fewer than 100 "
        "exchanges \"99 of 100\" is the worst one.");
    results.remark(explanation(misses, fileCpuMs));
}

} // namespace bench
