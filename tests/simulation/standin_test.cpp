// The stand-in of the serial line against the real library: the same exchanges on both, call by call.
//
// Compiled twice. In real time it is a program that plays the named exchanges over pseudo-terminals, each in
// a process of its own, and writes what it saw. In virtual time the test plays them on the stand-in, runs
// that program and compares. The linker leads the link's calls of the library here, in both.
#include "link/camerasp.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/testfront.h"

#include <serial/serial.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using emulator::CameraType;
using emulator::VirtualCamera;
using protocol::Bytes;
using std::chrono::milliseconds;

namespace {

using Lines = std::vector<std::string>;

std::string hex(protocol::ByteView bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        std::array<char, 4> digits{};
        std::snprintf(digits.data(), digits.size(), "%02X ", byte);
        text += digits.data();
    }
    return text;
}

// --- calls of the library ----------------------------------------------------------------------------------

Lines& calls() {
    static Lines all;
    return all;
}

/// The library's own source file and line are no behaviour.
std::string reasonOf(const std::exception& error) {
    const std::string text = error.what();
    return text.substr(0, text.find(", file "));
}

template <typename Function>
auto recorded(const std::string& call, Function&& function) {
    try {
        return std::forward<Function>(function)();
    } catch (const std::exception& error) {
        calls().push_back(call + " throws " + reasonOf(error));
        throw;
    }
}

} // namespace

// The linker's names for the functions that replace the library's, and for those behind them.
// NOLINTBEGIN(readability-identifier-naming)
void real_setTimeout(serial::Serial*,
                     serial::Timeout&) asm("__real__ZN6serial6Serial10setTimeoutERNS_7TimeoutE");
void wrap_setTimeout(serial::Serial*,
                     serial::Timeout&) asm("__wrap__ZN6serial6Serial10setTimeoutERNS_7TimeoutE");
void real_flush(serial::Serial*) asm("__real__ZN6serial6Serial5flushEv");
void wrap_flush(serial::Serial*) asm("__wrap__ZN6serial6Serial5flushEv");
void real_flushInput(serial::Serial*) asm("__real__ZN6serial6Serial10flushInputEv");
void wrap_flushInput(serial::Serial*) asm("__wrap__ZN6serial6Serial10flushInputEv");
std::size_t real_write(serial::Serial*, const std::uint8_t*,
                       std::size_t) asm("__real__ZN6serial6Serial5writeEPKhm");
std::size_t wrap_write(serial::Serial*, const std::uint8_t*,
                       std::size_t) asm("__wrap__ZN6serial6Serial5writeEPKhm");
std::size_t real_read(serial::Serial*, Bytes&,
                      std::size_t) asm("__real__ZN6serial6Serial4readERSt6vectorIhSaIhEEm");
std::size_t wrap_read(serial::Serial*, Bytes&,
                      std::size_t) asm("__wrap__ZN6serial6Serial4readERSt6vectorIhSaIhEEm");
// NOLINTEND(readability-identifier-naming)

void wrap_setTimeout(serial::Serial* port, serial::Timeout& timeout) {
    const std::string call = "setTimeout " + std::to_string(timeout.inter_byte_timeout) + ' ' +
                             std::to_string(timeout.read_timeout_constant) + ' ' +
                             std::to_string(timeout.read_timeout_multiplier) + ' ' +
                             std::to_string(timeout.write_timeout_constant) + ' ' +
                             std::to_string(timeout.write_timeout_multiplier);
    recorded(call, [&] { real_setTimeout(port, timeout); });
    calls().push_back(call);
}

void wrap_flush(serial::Serial* port) {
    recorded("flush", [&] { real_flush(port); });
    calls().push_back("flush");
}

void wrap_flushInput(serial::Serial* port) {
    recorded("flushInput", [&] { real_flushInput(port); });
    calls().push_back("flushInput");
}

std::size_t wrap_write(serial::Serial* port, const std::uint8_t* data, std::size_t size) {
    const std::string call = "write " + hex(Bytes(data, data + size));
    const std::size_t written = recorded(call, [&] { return real_write(port, data, size); });
    calls().push_back(call + "= " + std::to_string(written));
    return written;
}

std::size_t wrap_read(serial::Serial* port, Bytes& buffer, std::size_t size) {
    const std::size_t before = buffer.size();
    const std::string call = "read " + std::to_string(size);
    const std::size_t count = recorded(call, [&] { return real_read(port, buffer, size); });
    const protocol::ByteView all(buffer);
    calls().push_back(call + " = " + std::to_string(count) + ": " + hex(all.range(before, buffer.size())));
    return count;
}

namespace {

// --- the exchanges -----------------------------------------------------------------------------------------

std::string text(bool value) {
    return value ? "true" : "false";
}
std::string text(const std::string& value) {
    return value;
}
std::string text(const Bytes& value) {
    return hex(value);
}
std::string text(const std::vector<protocol::RecordBytes>& records, std::size_t recordSize) {
    std::string all;
    for (const protocol::RecordBytes& record : records)
        all += "[" + hex(Bytes(record.get(), record.get() + recordSize)) + "]";
    return all;
}

using Run = std::function<std::string(CameraSp&)>;

struct Exchange {
    std::string name;
    CameraType type;
    std::string fault; ///< with its request; empty: none
    Run run;
};

constexpr std::uint8_t pictureId = 5;
constexpr std::uint32_t pictureSize = 1525; // with the rest of a transfer three blocks
constexpr const char* updateFile = "update.bin";

Bytes pattern(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] =
            static_cast<std::uint8_t>(0x20 + (i * 7 + i / 251) % 0x40); // no start of a frame, no brace
    return bytes;
}

struct Row {
    const char* method;
    CameraType type;
    const char* request;
    Run run;
    std::vector<const char*> faults;
};

const std::vector<const char*> framed{
    "",           "silent",     "delay=60",        "late",         "glue",         "raw=414243",
    "truncate=1", "truncate=6", "stray=1",         "before=33",    "before=AA33",  "split=1,60",
    "length=+1",  "bad-check",  "zero-check",      "address=0x55", "command=0x21", "hang-up=0",
    "hang-up=5",  "result=1",   "stop-reading=300"};
const std::vector<const char*> few{"", "silent", "before=AA33", "split=1,60", "hang-up=0"};

/// Without the door, whose request holds the time of day.
std::vector<Row> statusRows() {
    const auto ostra = CameraType::ostra;
    return {
        {"testHeartBeat", ostra, "heartbeat", [](CameraSp& c) { return text(c.testHeartBeat()); }, framed},
        {"getCommonProperty", ostra, "getProperty",
         [](CameraSp& c) { return text(c.getCommonProperty(15, 2)); }, framed},
        {"getCommonPropertyWithoutParse", ostra, "gyroTest",
         [](CameraSp& c) { return text(c.getCommonPropertyWithoutParse(3, 0x0F, 200, 100)); }, framed},
        {"setCommonProperty", ostra, "setProperty",
         [](CameraSp& c) { return text(c.setCommonProperty(15, {30}, 3)); }, framed},
        {"getAppVersion", ostra, "getAppVersion", [](CameraSp& c) { return text(c.getAppVersion()); },
         framed},
        {"getSystemVersion", ostra, "getSystemVersion",
         [](CameraSp& c) { return text(c.getSystemVersion()); }, few},
        {"getQvVersion", ostra, "getQvVersion", [](CameraSp& c) { return text(c.getQvVersion()); }, few},
        {"getModelInfo", ostra, "getModelInfo", [](CameraSp& c) { return text(c.getModelInfo()); }, framed},
        {"getSn", ostra, "getSn", [](CameraSp& c) { return text(c.getSn()); }, framed},
        {"setSn", ostra, "setSn", [](CameraSp& c) { return text(c.setSn("SHELF000009")); }, framed},
        {"rebootCamera", ostra, "reboot", [](CameraSp& c) { return text(c.rebootCamera()); }, few},
        {"resetToFactory", ostra, "reset", [](CameraSp& c) { return text(c.resetToFactory()); }, few},
    };
}

std::vector<Row> pictureRows() {
    const auto ostra = CameraType::ostra;
    const auto dynamic = CameraType::salesDynamic;
    const std::vector<const char*> transfers{"",          "delay=60",  "glue",       "stray=1",
                                             "length=+1", "before=33", "split=9,60", "hang-up=50"};
    return {
        {"originCapture", ostra, "capture", [](CameraSp& c) { return text(c.originCapture()); }, framed},
        {"getOriginPicInfos", ostra, "catalogue",
         [](CameraSp& c) { return text(c.getOriginPicInfos(), protocol::origin_record::size); }, framed},
        {"delOriginPic", ostra, "delete", [](CameraSp& c) { return text(c.delOriginPic(pictureId)); },
         framed},
        {"getOriginTargetPic", ostra, "read",
         [](CameraSp& c) { return c.getOriginTargetPic(pictureId, pictureSize), std::string(); }, transfers},
        {"takePic", ostra, "capture", [](CameraSp& c) { return text(c.takePic()); }, {"", "silent"}},
        {"captureV1", dynamic, "captureV1", [](CameraSp& c) { return text(c.captureV1()); }, few},
        {"getPicInfosV1",
         dynamic,
         "catalogueV1",
         [](CameraSp& c) { return text(c.getPicInfosV1(), protocol::v1_record::size); },
         {"", "before=AA33", "split=1,60", "hang-up=0"}},
        {"delPicV1", dynamic, "deleteV1", [](CameraSp& c) { return text(c.delPicV1(0xFFFF, 0, 0)); }, few},
        {"getTargetPicV1", dynamic, "readV1",
         [](CameraSp& c) { return c.getTargetPicV1(pictureId, pictureSize), std::string(); }, transfers},
        {"getQuentaModbusProperty",
         CameraType::quenta,
         "jsonProperty",
         [](CameraSp& c) { return text(c.getQuentaModbusProperty({})); },
         {"", "silent", "delay=60", "before=33", "split=9,60", "short-json=9", "truncate=1", "hang-up=0"}},
        {"getQuentaModbusPic",
         CameraType::quenta,
         "jsonPicture",
         [](CameraSp& c) { return text(c.getQuentaModbusPic(pictureId)); },
         {"", "silent", "before=33", "no-size", "hang-up=200"}},
    };
}

std::vector<Row> uploadRows() {
    const std::vector<const char*> faults{"",           "silent",    "before=33", "result=1",
                                          "offset=100", "verdict=1", "hang-up=0"};
    return {
        {"appUpdate", CameraType::ostra, "appUpdate",
         [](CameraSp& c) { return c.setAppFilePath(updateFile), text(c.appUpdate()); }, faults},
        {"firewareUpdate", CameraType::ostra, "systemUpdate",
         [](CameraSp& c) { return c.setFirewareFilePath(updateFile), text(c.firewareUpdate()); }, faults},
        {"modelUpdate", CameraType::ostra, "modelUpdate",
         [](CameraSp& c) { return c.setModelNameAndPath("model_v1", updateFile), text(c.modelUpdate()); },
         faults},
        {"appUpdateV1",
         CameraType::salesDynamic,
         "appUpdateV1",
         [](CameraSp& c) { return text(c.appUpdateV1("app.bin", updateFile)); },
         {"", "result=1"}},
    };
}

const std::vector<Exchange>& exchanges() {
    static const std::vector<Exchange> all = [] {
        std::vector<Exchange> list;
        for (const auto& rows : {statusRows(), pictureRows(), uploadRows()}) {
            for (const Row& row : rows) {
                for (const std::string fault : row.faults)
                    list.push_back({row.method + (" " + fault), row.type,
                                    fault.empty() ? fault : fault + "@" + row.request + "#1", row.run});
            }
        }
        return list;
    }();
    return all;
}

// --- playing one -------------------------------------------------------------------------------------------

/// What was seen. Times differ by the machine's speed.
struct Played {
    Lines lines;
    milliseconds took{0};
};

emulator::CameraSettings settingsFor(const Exchange& exchange) {
    emulator::CameraSettings settings = emulator::settingsForType(exchange.type);
    settings.rebootTime = 0ms;
    settings.factoryResetTime = 0ms;
    settings.updateRestartTime = 0ms;
    settings.pictureSeed = 1;
    settings.holdsAnnouncedImage = true;
    settings.drawPicture = [](std::uint16_t, std::uint32_t) { return pattern(pictureSize); };
    return settings;
}

/// The command, its calls, value, end and log lines.
void playCommand(const Run& run, CameraSp& client, Lines& lines) {
    calls().clear();
    std::string value;
    CommandEnd end{};
    Lines logged;
    {
        const StdoutCapture log;
        const ReportScope scope;
        value = run(client);
        end = scope.report().end;
        logged = log.lines();
    }
    lines.insert(lines.end(), calls().begin(), calls().end());
    lines.push_back("value " + value);
    lines.push_back("end " + std::to_string(static_cast<int>(end)));
    for (const std::string& line : logged)
        lines.push_back("log " + line.substr(0, line.find(", file ")));
}

void listFiles(Lines& lines) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        std::ifstream file(entry.path(), std::ios::binary);
        files[entry.path().filename().string()] = hex(Bytes{std::istreambuf_iterator<char>(file), {}});
    }
    for (const auto& [name, content] : files)
        lines.push_back("file " + name + ' ' + content);
}

/// In an empty directory.
Played play(const Exchange& exchange) {
    const Bytes update = pattern(1300);
    std::ofstream(updateFile, std::ios::binary)
        .write(reinterpret_cast<const char*>(update.data()), static_cast<std::streamsize>(update.size()));
    TestFront front(settingsFor(exchange));
    front.withCamera([&](VirtualCamera& camera) {
        camera.state().pictures = {emulator::makePicture(pictureId, pattern(pictureSize))};
        camera.state().jsonPicture = pattern(1200);
        if (!exchange.fault.empty())
            camera.addFault(exchange.fault);
    });
    CameraSp client(front.portName(), 460800);
    client.setSlaveAddress(front.withCamera([](VirtualCamera& camera) { return camera.settings().address; }));

    Played played;
    const auto start = std::chrono::steady_clock::now();
    playCommand(exchange.run, client, played.lines);
    played.took = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
    std::this_thread::sleep_for(100ms); // for what comes late
    playCommand([](CameraSp& c) { return text(c.testHeartBeat()); }, client, played.lines);
    Bytes arrived;
    front.withCamera([&arrived](VirtualCamera& camera) {
        for (const emulator::ReceivedChunk& chunk : camera.record().chunks)
            arrived.insert(arrived.end(), chunk.bytes.begin(), chunk.bytes.end());
    });
    played.lines.push_back("arrived " + hex(arrived));
    played.lines.push_back(std::string("device ") + (front.lineOpen() ? "there" : "gone"));
    listFiles(played.lines);
    return played;
}

Played playInDirectory(const Exchange& exchange, std::size_t number) {
    const auto before = std::filesystem::current_path();
    const std::filesystem::path folder = "exchange-" + std::to_string(number);
    std::filesystem::create_directory(folder);
    std::filesystem::current_path(folder);
    Played played = play(exchange);
    std::filesystem::current_path(before);
    return played;
}

} // namespace

#ifndef CAMERA_VIRTUAL_TIME

namespace {

/// All begin one after another, so that no answer comes too late for that.
constexpr auto startPause = 25ms;

void store(const Played& played, const std::filesystem::path& file) {
    std::ofstream out(file);
    out << played.took.count() << '\n';
    for (const std::string& line : played.lines)
        out << line << '\n';
}

} // namespace

/// Arguments: numbers of exchanges. Writes NUMBER.played for each into the working directory.
int main(int argc, char** argv) {
    std::vector<pid_t> players;
    for (int i = 1; i < argc; ++i) {
        const std::size_t number = std::stoul(argv[i]);
        const pid_t player = ::fork();
        if (player == 0) {
            const auto file = std::filesystem::absolute(std::to_string(number) + ".played");
            store(playInDirectory(exchanges().at(number), number), file);
            ::_exit(0);
        }
        players.push_back(player);
        std::this_thread::sleep_for(startPause);
    }
    int failed = 0;
    for (const pid_t player : players) {
        int status = 0;
        ::waitpid(player, &status, 0);
        failed |= status;
    }
    return failed == 0 ? 0 : 1;
}

#else

#include "tests/support/process.h"

#include <gtest/gtest.h>

namespace {

/// On a busy machine a byte may come after the read that should have got it: such an exchange is played
/// again.
constexpr int attempts = 4;
constexpr milliseconds quicker = 40ms;
constexpr milliseconds slower = 1500ms;

Played load(const std::filesystem::path& file) {
    std::ifstream in(file);
    Played played;
    std::string line;
    if (std::getline(in, line))
        played.took = milliseconds(std::stol(line));
    while (std::getline(in, line))
        played.lines.push_back(line);
    return played;
}

void playInRealTime(const std::vector<std::size_t>& numbers) {
    std::vector<std::string> arguments;
    for (const std::size_t number : numbers) {
        std::filesystem::remove_all("exchange-" + std::to_string(number));
        arguments.push_back(std::to_string(number));
    }
    ASSERT_EQ(Process(CAMERA_STANDIN_RECORDER, arguments, {}).wait(), 0) << Process::text("err");
}

std::string firstDifference(const Played& real, const Played& simulated) {
    const auto [one, other] =
        std::mismatch(real.lines.begin(), real.lines.end(), simulated.lines.begin(), simulated.lines.end());
    return "\n  terminal: " + (one == real.lines.end() ? "nothing more" : *one) +
           "\n  stand-in: " + (other == simulated.lines.end() ? "nothing more" : *other);
}

TEST(StandIn, PlaysExchangesAsTheTerminal) {
    ASSERT_GE(exchanges().size(), 200U);
    std::vector<Played> simulated;
    std::vector<std::size_t> open;
    for (std::size_t number = 0; number < exchanges().size(); ++number) {
        simulated.push_back(playInDirectory(exchanges()[number], number));
        EXPECT_GE(simulated.back().lines.size(), 5U) << exchanges()[number].name;
        open.push_back(number);
    }
    // Those that take longest begin first.
    std::sort(open.begin(), open.end(), [&](std::size_t one, std::size_t other) {
        return simulated[one].took > simulated[other].took;
    });
    std::map<std::size_t, std::string> differences;
    for (int attempt = 0; attempt < attempts && !open.empty(); ++attempt) {
        playInRealTime(open);
        std::vector<std::size_t> differing;
        for (const std::size_t number : open) {
            const Played real = load(std::to_string(number) + ".played");
            if (real.lines == simulated[number].lines) {
                // The library ends a wait of 50 ms up to one early.
                const auto early = quicker + simulated[number].took / 50;
                EXPECT_GE(real.took, simulated[number].took - early) << exchanges()[number].name;
                EXPECT_LE(real.took, simulated[number].took + slower) << exchanges()[number].name;
                continue;
            }
            differing.push_back(number);
            differences[number] = firstDifference(real, simulated[number]);
        }
        open = differing;
    }
    for (const std::size_t number : open)
        ADD_FAILURE() << exchanges()[number].name << differences[number];
    RecordProperty("exchanges", static_cast<int>(exchanges().size()));
}

} // namespace

#endif
