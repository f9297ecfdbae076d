// shelf-camera against virtual cameras: a process and pseudo-terminals, or in virtual time a call and lines
// in memory.
#pragma once

#include "tests/support/process.h"
#include "tests/support/testfront.h"

#ifdef CAMERA_VIRTUAL_TIME
#include "tests/cli/calledprogram.h"
#endif

#include <QJsonObject>

#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace clitest {

using Words = std::vector<std::string>;
using namespace std::chrono_literals;

/// Codes that the program documents for scripts.
enum Code { done = 0, refused = 1, usage = 2, noPort = 3, noAnswer = 4, file = 5, interrupted = 130 };

/// How a run ended.
struct Ending {
    int code = -1;
    std::string out;
    std::string err;
};

#ifdef CAMERA_VIRTUAL_TIME
using Program = CalledProgram;
#else
using Program = Process;
#endif

/// The running program; English unless the environment says otherwise, standard input empty.
class Tool : public Program {
public:
    explicit Tool(const Words& words) : Tool(words, emptyInput()) {}
    Tool(const Words& words, Process::Streams streams)
        : Tool(words, std::move(streams), {{"LANGUAGE", "en"}}) {}
    Tool(const Words& words, Process::Streams streams, const Process::Environment& environment)
        : Program(SHELF_CAMERA_PROGRAM, words, streams, environment), m_streams(std::move(streams)) {}

    Ending end() {
        const int code = wait();
        return {code, Process::text(m_streams.out), Process::text(m_streams.err)};
    }

    static Process::Streams emptyInput(const std::string& prefix = {}) {
        return {"/dev/null", prefix + "out", prefix + "err"};
    }

private:
    Process::Streams m_streams;
};

inline Ending run(const Words& words) {
    return Tool(words).end();
}

/// "heater 40" to words.
[[nodiscard]] Words wordsOf(const std::string& line);
/// `before`, then `after`.
[[nodiscard]] Words joined(Words before, const Words& after);

/// The objects of an output that has one a line; nothing for any other output.
[[nodiscard]] std::vector<QJsonObject> objectsOf(const std::string& output);
/// Lines of the jobs of which the output has an object, in its order.
[[nodiscard]] std::vector<int> jobLines(const Ending& ending);
/// What the schema complains of; empty for a valid output.
[[nodiscard]] std::string schemaComplaints(const std::string& output);

/// Settings of a type with short restarts.
[[nodiscard]] emulator::CameraSettings quickSettings(emulator::CameraType type = emulator::CameraType::ostra);

/// A virtual camera that holds one picture with the id 33, and the words that reach it.
class Camera {
public:
    static constexpr std::uint16_t pictureId = 33;

    explicit Camera(emulator::CameraType type = emulator::CameraType::ostra) : Camera(quickSettings(type)) {}
    explicit Camera(emulator::CameraSettings settings);

    [[nodiscard]] std::string port() const { return m_front.portName(); }
    /// "-p PORT -t TYPE --yes" and the words.
    [[nodiscard]] Words with(const Words& words) const;
    [[nodiscard]] Words with(const std::string& line) const { return with(wordsOf(line)); }
    [[nodiscard]] Ending run(const std::string& line) const { return clitest::run(with(line)); }
    /// The command as a line of a job file.
    [[nodiscard]] std::string job(const std::string& line) const { return port() + " 1 0 " + line + "\n"; }
    void addFault(const std::string& text) {
        m_front.withCamera([&](auto& camera) { camera.addFault(text); });
    }
    /// Requests received so far.
    [[nodiscard]] std::size_t requests();
    [[nodiscard]] TestFront& front() { return m_front; }

private:
    emulator::CameraType m_type;
    TestFront m_front;
};

/// False when the condition does not come true within a generous time.
template <typename Condition>
bool comesTrue(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(2ms);
    }
    return true;
}

} // namespace clitest
