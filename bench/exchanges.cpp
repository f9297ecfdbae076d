#include "bench/exchanges.h"

#include "bench/farend.h"
#include "bench/measure.h"
#include "emulator/ptyfront.h"
#include "link/camerasp.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

using namespace std::chrono_literals;

namespace bench {

namespace {

using emulator::CameraType;
using protocol::ExchangeRule;
namespace rules = protocol::rules;

constexpr std::uint32_t baudRate = 460800;
constexpr double keptMs = 50; ///< time-out of a fresh link
constexpr double slowMs = 900;
constexpr double uploadMs = 1600;
constexpr auto bareSleep = 20ms;
constexpr const char* emptyFile = "empty.bin";

/// One command. No answer below fills its last read, so that an exchange lasts one time-out of its rule.
struct Row {
    std::string name;
    double mandatedMs;
    bool (*works)(CameraSp& client);
    CameraType type = CameraType::ostra;
    std::chrono::milliseconds rest{0}; ///< until the camera is back
};

double mandated(const ExchangeRule& rule) {
    if (rule.reading == protocol::Reading::none)
        return 0;
    return (rule.timeoutMs == protocol::kept ? keptMs : rule.timeoutMs) + rule.pauseAfterWriteMs;
}

Row row(const ExchangeRule& rule, bool (*works)(CameraSp& client), CameraType type = CameraType::ostra) {
    return {std::string(rule.name), mandated(rule), works, type};
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
        {"getCommonPropertyWithoutParse, 50 ms", 50,
         [](CameraSp& c) { return !c.getCommonPropertyWithoutParse(3, 0x0F, 50, 100).empty(); }},
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
            rules::quentaFirstChunk, [](CameraSp& c) { return c.getQuentaModbusPic(1); }, quenta),
    };
}

/// Several exchanges and their pauses; the empty file leaves no data to send. An image's announcement
/// answer fills its read of 15 bytes and returns at once.
std::vector<Row> uploadRows() {
    return {
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

void prepare(emulator::PtyFront& front) {
    front.withCamera([](emulator::VirtualCamera& camera) {
        camera.state().pictures = {emulator::makePicture(5, emulator::Bytes(100, 7))};
        camera.state().jsonPicture = emulator::Bytes(300, 7);
        camera.settings().holdsAnnouncedImage = true;
    });
}

struct Times {
    std::vector<double> excessMs; ///< beyond what is mandated, sorted
    std::vector<double> sleepMs;  ///< the same of a sleep between the exchanges: the machine's own lateness
    double cpuMs = 0;             ///< per exchange
    int failures = 0;
};

Times measure(const Row& row, int rounds) {
    const FarEnd camera(row.type, 0, &prepare);
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

void report(Results& results, const Row& row, int rounds) {
    const Times times = measure(row, rounds);
    const auto size = times.excessMs.size();
    // Uploads are several exchanges with pauses between them: no goals.
    const bool single = row.mandatedMs < uploadMs;
    const auto goal = [single](double limit) {
        return single ? std::optional<Goal>({Goal::Kind::atMost, limit}) : std::nullopt;
    };
    results.addRow(row.name,
                   {{"mandated", row.mandatedMs, "ms", {}},
                    {"median beyond it", times.excessMs[size / 2], "ms", goal(1)},
                    {"99 of 100 within", times.excessMs[size * 99 / 100], "ms", goal(5)},
                    {"99 of 100 bare sleeps within", times.sleepMs[size * 99 / 100], "ms", {}},
                    {"processor time", times.cpuMs, "ms", goal(0.3)},
                    {"failures", static_cast<double>(times.failures), "", Goal{Goal::Kind::atMost, 0}},
                    {"exchanges", static_cast<double>(rounds), "", {}}});
}

} // namespace

void measureExchanges(Results& results, int rounds) {
    results.section("One exchange of each rule");
    std::ofstream(emptyFile).flush();
    results.columns({"Rule", "Mandated, ms", "Median beyond it, ms (goal 1)", "99 of 100 within, ms (goal 5)",
                     "99 of 100 bare sleeps within, ms", "Processor time each, ms (goal 0.3)", "Failures",
                     "Exchanges"});
    for (const Row& row : simpleRows())
        report(results, row, row.mandatedMs < slowMs ? rounds : std::max(1, rounds / 5));
    for (const Row& row : uploadRows())
        report(results, row, std::max(1, rounds / 20));
    results.remark(
        "A read that is not filled lasts its time-out: one of the rule's time-outs, and the pause "
        "where it has one, is what an answered exchange takes. The bare sleeps of 20 ms between the "
        "exchanges show how late the machine itself wakes a process at that time. The processor time "
        "of picture commands includes writing and removing their file. With fewer than 100 exchanges "
        "\"99 of 100\" is the worst one.");
}

} // namespace bench
