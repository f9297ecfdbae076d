#include "tests/faults/cell.h"

#include "tests/support/stdoutcapture.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fnmatch.h>
#include <fstream>
#include <future>
#include <set>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using emulator::VirtualCamera;

#ifdef CAMERA_COVERAGE
extern "C" void __gcov_dump(); // NOLINT(bugprone-reserved-identifier)
#endif

namespace faultmatrix {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Texts = std::vector<std::string>;

/// Allowance for starting threads and a busy machine.
constexpr milliseconds allowance = 1s;
constexpr int allowancePercent = 5;
/// Longer than the pause between announcement and data plus a read that times out.
constexpr milliseconds uploadSilence = 4500ms;
/// Several rows run at once: their cells begin one after another, so that no camera answers too late for
/// that.
constexpr auto startPause = 20ms;
/// More than the buffers of the line.
constexpr std::size_t longUpload = 200'000;

protocol::Bytes pattern(std::size_t size) {
    protocol::Bytes bytes(size);
    std::uint32_t value = 12345;
    for (std::uint8_t& byte : bytes) {
        value = value * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(0x20 + (value >> 24U) % 0x40); // no start of a frame, no brace
    }
    return bytes;
}

bool fits(const std::string& line, const std::string& pattern) {
    return fnmatch(pattern.c_str(), line.c_str(), 0) == 0;
}

bool fitsAny(const std::string& line, const Texts& patterns) {
    return std::any_of(patterns.begin(), patterns.end(),
                       [&line](const std::string& pattern) { return fits(line, pattern); });
}

/// Every pattern of the row.
std::set<std::string> vocabulary(const Command& command) {
    std::set<std::string> all;
    for (const auto& [fault, expected] : command.cells)
        all.insert(expected.lines.begin(), expected.lines.end());
    return all;
}

/// Bytes that the client has to drop in front of the answer, a line each; it keeps a single one.
std::ptrdiff_t garbageOf(const std::string& fault) {
    const auto bytes = static_cast<std::ptrdiff_t>((fault.size() - fault.find('=') - 1) / 2);
    return fault.starts_with("before=") ? bytes : fault.starts_with("raw=") ? bytes - 1 : 0;
}

class CellRun {
public:
    CellRun(const Command& command, std::string fault, const Expected& expected, std::uint8_t id)
        : m_command(command), m_expected(expected), m_fault(std::move(fault)), m_id(id),
          m_front(settingsFor(command)) {}

    Cell run() {
        prepare();
        strike();
        recover();
        repeat();
        return {m_fault, m_ending, m_took, m_complaints};
    }

private:
    void require(bool holds, const std::string& what) {
        if (!holds)
            m_complaints.push_back(m_fault + ": " + what);
    }

    static void waitFor(const std::function<bool()>& holds, milliseconds longest, milliseconds step = 5ms) {
        const auto start = Clock::now();
        while (!holds() && Clock::now() - start < longest)
            std::this_thread::sleep_for(step);
    }

    void prepare() {
        const fs::path folder = "cell-" + std::to_string(m_id);
        fs::create_directory(folder);
        const bool inTheMiddle = m_fault.starts_with("stall") || m_fault.starts_with("upload-hang-up");
        if (m_command.uploads) {
            m_updateFile = fs::absolute(folder).string() + ".bin";
            writeUpdateFile(m_updateFile, inTheMiddle ? longUpload : shortUpload);
        }
        fs::current_path(folder);
        storePictures(m_front, m_id);
        m_client = connect(m_front);
        waitFor([this] { return heartbeat(); }, 5s, 300ms);
        require(heartbeat(), "the camera is there");
        const std::size_t mark = m_command.request.find('#');
        m_front.withCamera([&](VirtualCamera& c) {
            c.addFault(m_fault + "@" + m_command.request.substr(0, mark) +
                       (mark == std::string::npos ? "" : m_command.request.substr(mark)));
        });
    }

    bool heartbeat() {
        const StdoutCapture quiet;
        return m_client->testHeartBeat();
    }

    Timed command(std::optional<milliseconds> patience) {
        Bench bench{*m_client, m_front, m_id, m_updateFile};
        return runTimed(m_command, bench, patience);
    }

    void strike() {
        const bool endless = m_expected.ending == Ending::endless;
        Texts lines;
        {
            const StdoutCapture log;
            const Timed timed = command(endless ? std::optional(m_command.patience) : std::nullopt);
            m_ending = timed.ending;
            m_took = timed.took;
            lines = log.lines();
        }
        require(m_ending == m_expected.ending, std::string("ends as: ") + nameOf(m_ending));
        const milliseconds bound =
            endless ? m_command.patience + 300ms : m_expected.within.value_or(m_command.longest);
        require(m_took <= bound + bound * allowancePercent / 100 + allowance,
                "takes " + std::to_string(m_took.count()) + " ms");
        requireLines(lines);
        const bool leavesNothing = m_ending == Ending::fails || m_ending == Ending::endless;
        if (leavesNothing && !m_command.leavesFile)
            require(fs::is_empty("."), "leaves a file");
    }

    void requireLines(const Texts& lines) {
        for (const std::string& pattern : m_expected.lines) {
            const bool found = std::any_of(lines.begin(), lines.end(),
                                           [&pattern](const auto& line) { return fits(line, pattern); });
            require(found, "does not log \"" + pattern + "\"");
        }
        for (const std::string& pattern : vocabulary(m_command)) {
            for (const std::string& line : lines)
                require(!fits(line, pattern) || fitsAny(line, m_expected.lines), "logs \"" + line + "\"");
        }
        if (!m_command.dropsGarbage)
            return;
        const auto dropped = std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
            return line.starts_with("check data");
        });
        const bool compared = m_command.method == "testHeartBeat" || m_command.request == "gyroTest#1";
        require(dropped == (compared ? 0 : garbageOf(m_fault)),
                "drops " + std::to_string(dropped) + " bytes of garbage");
    }

    /// Plugs the device in and opens the link again.
    void recover() {
        if (m_fault.starts_with("hang-up") || m_fault.starts_with("upload-hang-up")) {
            waitFor([this] { return !m_front.lineOpen(); },
                    5s); // the client may see the end of the line first
            require(!m_front.lineOpen(), "the device is still there");
            require(!heartbeat(), "a command without a device works");
            m_front.comeBack();
            m_client.reset();
            m_client = connect(m_front);
        } else if (m_expected.ending == Ending::endless) {
            m_client.reset();
            m_client = connect(m_front);
        } else if (m_fault == "stay-down") {
            require(!heartbeat(), "a camera that is down answers");
            m_front.withCamera([](VirtualCamera& c) { c.state().bootingUntil = {}; });
        }
        // Whatever is still on its way arrives; data that is missing makes the camera deaf for its silence.
        std::this_thread::sleep_for(m_fault.starts_with("verdict-delay") ? 2500ms : 400ms);
        const auto uploading = [this] {
            return m_front.withCamera([](VirtualCamera& c) { return c.uploading(); });
        };
        waitFor([&uploading] { return !uploading(); }, uploadSilence + allowance);
        require(!uploading(), "the camera still waits for data");
    }

    /// The next good command.
    void repeat() {
        m_front.withCamera([](VirtualCamera& c) { c.faults().clear(); });
        const bool heldBack = m_fault == "late" && !m_command.takesLate;
        if (heldBack || m_fault == "back-at=2") {
            require(!heartbeat(), "the heartbeat behind it is not disturbed");
            std::this_thread::sleep_for(100ms); // a long answer ends its read before its own answer is there
        }
        require(heartbeat(), "the heartbeat behind it fails");
        Texts lines;
        {
            const StdoutCapture log;
            const Ending ending = command(std::nullopt).ending;
            require(ending == Ending::works, std::string("the next good command ends as: ") + nameOf(ending));
            lines = log.lines();
        }
        for (const std::string& pattern : m_command.goodLines) {
            const bool found = std::any_of(lines.begin(), lines.end(),
                                           [&pattern](const auto& line) { return fits(line, pattern); });
            require(found, "the next good command does not log \"" + pattern + "\"");
        }
        require(m_front.withCamera([](VirtualCamera& c) { return c.record().badFrames; }) == 0,
                "the camera received a bad frame");
    }

    const Command& m_command;
    const Expected& m_expected;
    std::string m_fault;
    std::uint8_t m_id;
    TestFront m_front;
    std::unique_ptr<CameraSp> m_client;
    std::string m_updateFile;
    Ending m_ending = Ending::fails;
    milliseconds m_took{0};
    Texts m_complaints;
};

// --- a process each ----------------------------------------------------------------------------------------

Cell guardedRun(const Command& command, const std::string& fault, const Expected& expected, std::uint8_t id) {
    try {
        return CellRun(command, fault, expected, id).run();
    } catch (const std::exception& error) {
        return {fault, Ending::fails, 0ms, {fault + ": " + error.what()}};
    }
}

void write(const Cell& cell, int descriptor) {
    std::FILE* const out = ::fdopen(descriptor, "w");
    std::fprintf(out, "%d %lld\n", static_cast<int>(cell.ending), static_cast<long long>(cell.took.count()));
    for (const std::string& complaint : cell.complaints)
        std::fprintf(out, "%s\n", complaint.c_str());
    std::fclose(out);
}

struct Child {
    std::string fault;
    pid_t process = -1;
    int output = -1;
};

Child start(const Command& command, const std::string& fault, const Expected& expected, std::uint8_t id) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        throw std::runtime_error("no pipe for a cell");
    const pid_t process = ::fork();
    if (process < 0)
        throw std::runtime_error("no process for a cell");
    if (process == 0) {
        ::close(ends[0]);
        ::alarm(600); // ends a cell that hangs
        const StdoutCapture quiet;
        write(guardedRun(command, fault, expected, id), ends[1]);
#ifdef CAMERA_COVERAGE
        __gcov_dump(); // a process that does not clear up would lose its counts
#endif
        ::_exit(0); // the rest belongs to the parent
    }
    ::close(ends[1]);
    return {fault, process, ends[0]};
}

Cell finish(const Child& child) {
    Cell cell{child.fault, Ending::fails, 0ms, {}};
    std::FILE* const in = ::fdopen(child.output, "r");
    std::array<char, 4096> text{};
    int ending = -1;
    long long took = 0;
    if (std::fgets(text.data(), text.size(), in) != nullptr &&
        std::sscanf(text.data(), "%d %lld", &ending, &took) == 2) { // NOLINT(cert-err34-c)
        cell.ending = static_cast<Ending>(ending);
        cell.took = milliseconds(took);
    } else {
        cell.complaints.push_back(child.fault + ": the process ended without a result");
    }
    while (std::fgets(text.data(), text.size(), in) != nullptr)
        cell.complaints.emplace_back(text.data());
    std::fclose(in);
    int status = 0;
    if (::waitpid(child.process, &status, 0) != child.process || status != 0)
        cell.complaints.push_back(child.fault + ": the process ended with status " + std::to_string(status));
    return cell;
}

} // namespace

emulator::CameraSettings settingsFor(const Command& command) {
    emulator::CameraSettings settings = emulator::settingsForType(command.type);
    settings.rebootTime = 0ms;
    settings.factoryResetTime = 0ms;
    settings.updateRestartTime = 0ms;
    settings.uploadSilence = uploadSilence;
    settings.keepsInterruptedUploads = false; // the next good upload is a whole one
    settings.holdsAnnouncedImage = true;
    settings.answersDoor = true;
    settings.drawPicture = [](std::uint16_t, std::uint32_t) { return storedPicture(); };
    return settings;
}

std::unique_ptr<CameraSp> connect(TestFront& front) {
    auto client = std::make_unique<CameraSp>(front.portName(), 460800);
    client->setSlaveAddress(front.withCamera([](VirtualCamera& c) { return c.settings().address; }));
    return client;
}

void storePictures(TestFront& front, std::uint8_t id) {
    front.withCamera([id](VirtualCamera& c) {
        c.state().pictures = {emulator::makePicture(id, storedPicture())};
        c.state().jsonPicture = storedJsonPicture();
    });
}

void writeUpdateFile(const std::string& path, std::size_t size) {
    const protocol::Bytes update = pattern(size);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(update.data()), static_cast<std::streamsize>(update.size()));
}

Timed runTimed(const Command& command, Bench& bench, std::optional<milliseconds> patience) {
    std::promise<void> ended;
    std::atomic<bool> stopped{false};
    std::thread stopper;
    if (patience)
        stopper = std::thread([&, over = ended.get_future()] {
            if (over.wait_for(*patience) == std::future_status::timeout) {
                stopped = true;
                bench.client.requestStop();
            }
        });
    const auto start = Clock::now();
    Timed timed;
    timed.ending = command.run(bench);
    timed.took = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    ended.set_value();
    if (stopper.joinable())
        stopper.join();
    if (stopped && timed.ending == Ending::fails)
        timed.ending = Ending::endless;
    return timed;
}

protocol::Bytes storedPicture() {
    return pattern(pictureBytes);
}

protocol::Bytes storedJsonPicture() {
    return pattern(1200);
}

Ending endingOfFile(const std::string& name, const protocol::Bytes& good) {
    std::ifstream file(name, std::ios::binary);
    if (!file)
        return Ending::fails;
    const protocol::Bytes found{std::istreambuf_iterator<char>(file), {}};
    return found == good ? Ending::works : Ending::otherValue;
}

std::vector<Cell> runRow(const Command& command) {
    std::cout.flush();
    std::vector<Child> children;
    std::uint8_t id = 0;
    for (const auto& [fault, expected] : command.cells) {
        children.push_back(start(command, fault, expected, ++id));
        std::this_thread::sleep_for(startPause);
    }
    std::vector<Cell> cells;
    cells.reserve(children.size());
    for (const Child& child : children)
        cells.push_back(finish(child));
    return cells;
}

} // namespace faultmatrix
